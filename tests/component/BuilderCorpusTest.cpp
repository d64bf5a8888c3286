// The query builder over the whole corpus: every statement that the
// reference dialect reads goes into the model and back. The text that comes
// out must read again, print the same a second time, and, set back into the
// builder, change nothing. Where it differs from the statement's plain print
// (parsed and printed without the model), the difference is sorted into the
// normalizations the model is known to make; anything else is listed.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "BuilderRoundTrip.h"
#include "Corpus.h"
#include "dialects/EngineInit.h"

namespace mvtest {
namespace {

enum TDifference {
  dfCaseOrComments,  // only letter case, spacing or comments
  dfBrackets,        // brackets the operators' priority makes needless
  dfOrderBy,         // ORDER BY keys named by alias or position, or by the row they match
  dfGroupBy,         // GROUP BY keys in the order of the rows, by the expression
  dfJoins,           // datasources and their joins in another order
  dfOnLinks,         // in ON, the conditions that are links come first
  dfWhereLinks,      // in WHERE and HAVING, where-links come first, conditions follow their rows
  dfNotInward,       // NOT of an AND or an OR taken inside (De Morgan), as the rows hold it
  dfEmpty,           // a SELECT * without sources is the empty query, printed as nothing
  dfNoColumns,       // a SELECT without columns prints SELECT *
  dfOther,
  dfCount
};

const char* const kDifferenceNames[dfCount] = {
    "case/comments",  "brackets dissolved",     "ORDER BY rewritten", "GROUP BY rewritten", "joins reordered",
    "ON links first", "WHERE links/rows first", "NOT taken inside",   "empty query",        "no columns as *",
    "other"};

using Tokens = std::vector<std::string>;

// Tokens of a printed statement: words in lower case, quoted text as it is,
// no blanks, no comments.
Tokens Tokenize(const std::string& text) {
  Tokens tokens;
  const size_t n = text.size();
  auto isWord = [](unsigned char c) {
    return std::isalnum(c) || c == '_' || c == '$' || c == '#' || c == '@' || c >= 0x80;
  };
  for (size_t i = 0; i < n;) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (std::isspace(c)) {
      ++i;
    } else if (text.compare(i, 2, "--") == 0) {
      i = std::min(n, text.find('\n', i));
    } else if (text.compare(i, 2, "/*") == 0) {
      const size_t end = text.find("*/", i + 2);
      i = end == std::string::npos ? n : end + 2;
    } else if (c == '\'' || c == '"' || c == '`' || c == '[') {
      // A doubled quote stands for itself.
      const char close = c == '[' ? ']' : static_cast<char>(c);
      size_t j = i + 1;
      while (j < n && (text[j] != close || (close != ']' && j + 1 < n && text[j + 1] == close)))
        j += text[j] == close ? 2 : 1;
      j = std::min(n, j + 1);
      tokens.push_back(text.substr(i, j - i));
      i = j;
    } else if (isWord(c)) {
      size_t j = i;
      while (j < n && isWord(static_cast<unsigned char>(text[j]))) ++j;
      std::string word = text.substr(i, j - i);
      for (char& ch : word) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
      tokens.push_back(word);
      i = j;
    } else {
      tokens.push_back(std::string(1, static_cast<char>(c)));
      ++i;
    }
  }
  return tokens;
}

bool IsBracket(const std::string& token) { return token == "(" || token == ")"; }
bool IsLogical(const std::string& token) { return token == "not" || token == "and" || token == "or"; }

bool IsStar(const std::string& token) { return token == "*"; }

Tokens Without(Tokens tokens, bool (*drop)(const std::string&)) {
  tokens.erase(std::remove_if(tokens.begin(), tokens.end(), drop), tokens.end());
  return tokens;
}

template <class T>
T Sorted(T items) {
  std::sort(items.begin(), items.end());
  return items;
}

// One ORDER BY or GROUP BY list: its keys, split at the commas of its level.
using KeyList = std::vector<Tokens>;

// Takes the ORDER BY and GROUP BY lists out of `tokens` (at any depth): each
// runs to the bracket that closes its level or to the next clause.
void SplitKeyLists(Tokens& tokens, std::vector<KeyList>& orderBy, std::vector<KeyList>& groupBy) {
  static const std::array<const char*, 10> kEnds = {"having",    "order", "group",  "union", "except",
                                                    "intersect", "limit", "offset", "fetch", "window"};
  Tokens rest;
  for (size_t i = 0; i < tokens.size();) {
    const bool order = tokens[i] == "order", group = tokens[i] == "group";
    if (!(order || group) || i + 1 >= tokens.size() || tokens[i + 1] != "by") {
      rest.push_back(tokens[i++]);
      continue;
    }
    KeyList keys(1);
    int depth = 0;
    for (i += 2; i < tokens.size(); ++i) {
      const std::string& t = tokens[i];
      if (depth == 0 && (t == ")" || std::find(kEnds.begin(), kEnds.end(), t) != kEnds.end())) break;
      depth += t == "(" ? 1 : t == ")" ? -1 : 0;
      if (depth == 0 && t == ",")
        keys.emplace_back();
      else
        keys.back().push_back(t);
    }
    (order ? orderBy : groupBy).push_back(std::move(keys));
  }
  tokens = std::move(rest);
}

// Whether the model may have written `p` as `r`: the same keys, maybe in
// another order, or keys that the model names otherwise: an expression by
// its alias or position, or a name by the expression it stands for (one
// side a single word), with the same direction. A list that vanished, or a
// key that comes out twice where it did not, changes the result.
bool SameKeys(const std::vector<KeyList>& p, const std::vector<KeyList>& r) {
  if (p.size() != r.size()) return false;
  const auto split = [](Tokens key, Tokens& direction) {
    while (!key.empty() && (key.back() == "asc" || key.back() == "desc" || key.back() == "first" ||
                            key.back() == "last" || key.back() == "nulls")) {
      direction.insert(direction.begin(), key.back());
      key.pop_back();
    }
    return key;
  };
  for (size_t list = 0; list < p.size(); ++list) {
    const KeyList& pk = p[list];
    const KeyList& rk = r[list];
    if (pk.size() != rk.size()) return false;
    if (Sorted(pk) == Sorted(rk)) continue;
    const auto twice = [](const KeyList& keys) {
      const KeyList sorted = Sorted(keys);
      return std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
    };
    if (twice(rk) && !twice(pk)) return false;
    // The keys found on both sides aside, the rest pair up in order.
    KeyList pRest, rRest = rk;
    for (const Tokens& key : pk) {
      auto found = std::find(rRest.begin(), rRest.end(), key);
      if (found == rRest.end())
        pRest.push_back(key);
      else
        rRest.erase(found);
    }
    for (size_t i = 0; i < pRest.size(); ++i) {
      Tokens pd, rd;
      const Tokens pe = split(pRest[i], pd), re = split(rRest[i], rd);
      if (pd != rd || (pe != re && pe.size() != 1 && re.size() != 1)) return false;
    }
  }
  return true;
}

// Same words in another order: the clause of the first difference names it.
TDifference ReorderingKind(const Tokens& p, const Tokens& r) {
  size_t at = std::mismatch(p.begin(), p.end(), r.begin(), r.end()).first - p.begin();
  while (at > 0) {
    const std::string& t = p[--at];
    if (t == "on") return dfOnLinks;
    if (t == "where" || t == "having") return dfWhereLinks;
    if (t == "from" || t == "join") return dfJoins;
    if (t == "select") break;
  }
  return dfOther;
}

// The kinds of difference between the plain print and the round trip; a
// statement may show several. Each is a cheap test on the tokens.
std::vector<TDifference> Classify(const std::string& plain, const std::string& roundTrip) {
  if (roundTrip.empty()) return {dfEmpty};
  std::vector<TDifference> kinds;
  Tokens p = Tokenize(plain), r = Tokenize(roundTrip);
  std::vector<KeyList> pOrder, pGroup, rOrder, rGroup;
  SplitKeyLists(p, pOrder, pGroup);
  SplitKeyLists(r, rOrder, rGroup);
  if (pOrder != rOrder) kinds.push_back(SameKeys(pOrder, rOrder) ? dfOrderBy : dfOther);
  if (pGroup != rGroup) kinds.push_back(SameKeys(pGroup, rGroup) ? dfGroupBy : dfOther);
  const Tokens pb = Without(p, IsBracket), rb = Without(r, IsBracket);
  const size_t pBrackets = p.size() - pb.size(), rBrackets = r.size() - rb.size();
  if (pBrackets > rBrackets) kinds.push_back(dfBrackets);
  if (pb != rb) {
    const Tokens ps = Sorted(pb), rs = Sorted(rb);
    if (ps == rs)
      kinds.push_back(ReorderingKind(pb, rb));
    else if (Without(ps, IsLogical) == Without(rs, IsLogical))
      kinds.push_back(dfNotInward);
    else if (Without(pb, IsStar) == Without(rb, IsStar) && rs.size() > ps.size())
      kinds.push_back(dfNoColumns);
    else
      kinds.push_back(dfOther);
  } else if (pBrackets < rBrackets) {
    kinds.push_back(dfOther);
  }
  if (kinds.empty()) kinds.push_back(dfCaseOrComments);
  kinds = Sorted(kinds);
  kinds.erase(std::unique(kinds.begin(), kinds.end()), kinds.end());
  return kinds;
}

struct TFolderCounts {
  int statements = 0, ok = 0, failures = 0, differ = 0;
  std::array<int, dfCount> kinds{};
};

class BuilderCorpusSlow : public ::testing::TestWithParam<const char*> {
 protected:
  static void SetUpTestSuite() { mv::InitializeEngine(); }
};

// The round trip of every statement of a folder; the folder's counts go to
// the output, "other" differences with the first examples.
TEST_P(BuilderCorpusSlow, RoundTripIsAFixedPoint) {
  MV_CORPUS_SELECTS(entries, GetParam());
  TReferenceBuilder first, second;
  TFolderCounts counts;
  std::ostringstream others;
  int othersShown = 0;
  for (const mv::TmvStatementEntry& entry : entries) {
    if (!first.Parses(entry.Text)) continue;
    ++counts.statements;
    const std::string where = std::string(GetParam()) + ":" + std::to_string(entry.Line);
    std::string failure, plain, once, twice;
    try {
      plain = ToUtf8(first.Plain(entry.Text));
      once = ToUtf8(first.RoundTrip(entry.Text));
      first.updates = 0;
      first->SetSql(mv::UTF8Decode(once));
      if (first.updates != 0) failure = "setting the text the builder gave out fired OnSQLUpdated";
    } catch (const mv::Exception& e) {
      failure = "round trip raised: " + ToUtf8(e.Message());
    }
    if (failure.empty()) {
      try {
        second->Clear();
        twice = ToUtf8(second.RoundTrip(mv::UTF8Decode(once)));
        if (twice != once) failure = "a second round trip gives another text:\n  " + twice;
      } catch (const mv::Exception& e) {
        failure = "the round trip does not read again: " + ToUtf8(e.Message());
      }
    }
    if (!failure.empty()) {
      if (++counts.failures <= 5)
        ADD_FAILURE() << where << ": " << failure << "\n  " << ToUtf8(entry.Text) << "\n  " << once;
      continue;
    }
    ++counts.ok;
    if (once == plain) continue;
    ++counts.differ;
    for (TDifference kind : Classify(plain, once)) {
      ++counts.kinds[kind];
      if (kind == dfOther && ++othersShown <= 3)
        others << "  other, " << where << ":\n    " << plain << "\n    " << once << "\n";
    }
  }
  std::cout << GetParam() << ": " << counts.statements << " statements, " << counts.ok << " round trips ok, "
            << counts.failures << " failures; " << counts.differ << " differ from the plain print:";
  for (int kind = 0; kind < dfCount; ++kind)
    if (counts.kinds[kind]) std::cout << " " << kDifferenceNames[kind] << " " << counts.kinds[kind] << ";";
  std::cout << "\n" << others.str() << std::flush;
}

INSTANTIATE_TEST_SUITE_P(Corpus, BuilderCorpusSlow, ::testing::ValuesIn(kCorpusSelectFolders),
                         [](const auto& info) { return CorpusTestName(info.param); });

}  // namespace
}  // namespace mvtest
