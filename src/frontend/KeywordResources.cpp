#include "frontend/KeywordResources.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <sstream>

#include "support/WideString.h"

namespace mv {

const char* const kBaseSyntaxProviderKeywords =
    "avg min max sum count absolute action add all allocate alter and any are as asc assertion at "
    "authorization begin between bit bit_length both by cascade cascaded case cast catalog char "
    "character char_length character_length check close coalesce collate collation column commit "
    "connect connection constraint constraints continue convert corresponding create cross current "
    "current_date current_time current_timestamp current_user cursor date day deallocate dec decimal "
    "declare default deferrable deferred delete desc describe descriptor diagnostics disconnect "
    "distinct domain double drop else end escape except exception exec execute exists external "
    "extract false fetch first float for foreign found from full get global go goto grant group "
    "having hour identity immediate in indicator initially inner input insensitive insert int "
    "integer intersect interval into is isolation join key language last leading left level like "
    "local lower match minute module month names national natural nchar next no not null nullif "
    "numeric octet_length of on only open option or order outer output overlaps pad partial "
    "position precision prepare preserve primary prior privileges procedure public read real "
    "references relative restrict revoke right rollback rows schema scroll second section select "
    "session session_user set size smallint some space sql sqlcode sqlerror sqlstate substring "
    "system_user table temporary then time timestamp timezone_hour timezone_minute to trailing "
    "transaction translate translation trim true union unique unknown update upper usage user "
    "using value values varchar varying view when whenever where with work write year zone";

namespace {

std::vector<std::string> SplitSorted(std::string_view text) {
  std::vector<std::string> words;
  std::istringstream in{std::string(text)};
  std::string word;
  while (in >> word) words.push_back(word);
  std::sort(words.begin(), words.end());
  return words;
}

// Registration happens at start-up, lookups at any time from any thread.
struct ResourceTable {
  ResourceTable() { lists.emplace("BASESYNTAXPROVIDER_KEYWORDS", SplitSorted(kBaseSyntaxProviderKeywords)); }
  std::mutex lock;
  std::map<std::string, std::vector<std::string>, std::less<>> lists;
};

ResourceTable& Resources() {
  static ResourceTable table;
  return table;
}

}  // namespace

void RegisterKeywordResource(std::string_view name, std::string_view words) {
  ResourceTable& table = Resources();
  std::lock_guard<std::mutex> guard(table.lock);
  // The first registration stands: InitializeEngine may run again while other
  // threads read a list, and map entries never move, so a list found stays valid.
  if (table.lists.find(name) == table.lists.end()) table.lists.emplace(std::string(name), SplitSorted(words));
}

const std::vector<std::string>* FindKeywordResource(std::string_view name) {
  ResourceTable& table = Resources();
  std::lock_guard<std::mutex> guard(table.lock);
  auto it = table.lists.find(name);
  return it == table.lists.end() ? nullptr : &it->second;
}

std::string KeywordResourceName(std::string_view className) {
  std::string name(className.size() > 3 ? className.substr(3) : std::string_view());
  name += "_Keywords";
  for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return name;
}

}  // namespace mv
