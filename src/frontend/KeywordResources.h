// The keyword resources of the providers: for each resource name (the
// provider's class name without its first three letters, "_Keywords", in
// capitals) the reserved words a host may colour, in small letters.
// GetKeywords walks a provider's classes up to the base and takes the first
// resource it finds. The base list is the core's; each dialect registers its
// own list when the engine starts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mv {

// The base provider's reserved words (the SQL-92 ones), separated by blanks.
extern const char* const kBaseSyntaxProviderKeywords;

// Adds the resource `name`: `words` separated by blanks, in any order. A name
// registered before keeps its first list. Meant for the start-up registration
// of the dialects.
void RegisterKeywordResource(std::string_view name, std::string_view words);

// The words of a resource, sorted; null when there is no resource of that name.
// The list stays valid for the life of the program.
const std::vector<std::string>* FindKeywordResource(std::string_view name);

// The resource name of a provider class name: TmvSQL92SyntaxProvider gives
// SQL92SYNTAXPROVIDER_KEYWORDS.
std::string KeywordResourceName(std::string_view className);

}  // namespace mv
