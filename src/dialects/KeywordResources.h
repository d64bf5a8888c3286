// The keyword resources of the providers: for each resource name (the
// provider's class name without its first three letters, "_Keywords", in
// capitals) the reserved words a host may colour, in small letters. A dialect
// adds its list to the table in KeywordResources.cpp.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mv {

// The words of a resource, sorted; null when there is no resource of that name.
const std::vector<std::string>* FindKeywordResource(std::string_view name);

// The resource name of a provider class name: TmvSQL92SyntaxProvider gives
// SQL92SYNTAXPROVIDER_KEYWORDS.
std::string KeywordResourceName(std::string_view className);

}  // namespace mv
