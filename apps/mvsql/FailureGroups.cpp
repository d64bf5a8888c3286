#include "FailureGroups.h"

#include <algorithm>
#include <vector>

#include "frontend/Scanner.h"

namespace mvsql {

namespace {

// The first visible token of a scan of `sample`, or tkNone.
int32_t KindOf(const mv::TmvBaseSyntaxProvider& provider, const mv::WideString& sample) {
  mv::TmvOwned<mv::TmvBaseScanner> scanner = provider.CreateScanner();
  scanner->Init(sample);
  for (const mv::TmvToken& token : scanner->GetTokens())
    if (!token.IsHidden()) return token.Kind == mv::tkEndOfText ? mv::tkNone : token.Kind;
  return mv::tkNone;
}

// `text` on one line: line ends and runs of blanks become one blank.
std::string Flat(const mv::WideString& text) {
  std::string out;
  for (char c : mv::UTF8Encode(text)) {
    if (c == '\r' || c == '\n' || c == '\t') c = ' ';
    if (c == ' ' && (out.empty() || out.back() == ' ')) continue;
    out += c;
  }
  return out;
}

// Characters of context shown before and after the blamed token.
constexpr int32_t kBefore = 50;
constexpr int32_t kAfter = 30;

}  // namespace

FailureGroups::FailureGroups(const mv::TmvBaseSyntaxProvider& provider)
    : provider_(provider),
      nameKind_(KindOf(provider, u"zqxname")),
      stringKind_(KindOf(provider, u"'zqx'")),
      numberKind_(KindOf(provider, u"42")),
      quotedKind_(KindOf(provider, u"\"zqx\"")) {
  // Where double quotes make strings, the quoted name is whatever else quotes.
  if (quotedKind_ == stringKind_) quotedKind_ = KindOf(provider, u"`zqx`");
  if (quotedKind_ == stringKind_ || quotedKind_ == nameKind_) quotedKind_ = mv::tkNone;
}

std::string FailureGroups::TokenClass(const mv::TmvToken& token) const {
  if (token.Kind == mv::tkEndOfText) return "end of text";
  if (token.Kind == nameKind_) return "<name>";
  if (token.Kind == stringKind_) return "<string>";
  if (token.Kind == quotedKind_) return "<quoted name>";
  const char16_t first = token.Text.empty() ? u' ' : token.Text.front();
  if (token.Kind == numberKind_ || (first >= u'0' && first <= u'9')) return "<number>";
  return mv::UTF8Encode(mv::WideUpperCase(token.Text));
}

std::string FailureGroups::Reason(const mv::WideString& text, const mv::EmvSQLError& error) const {
  mv::TmvOwned<mv::TmvBaseScanner> scanner = provider_.CreateScanner();
  scanner->Init(text);
  const mv::TmvToken* previous = nullptr;
  const mv::TmvToken* blamed = nullptr;
  for (const mv::TmvToken& token : scanner->GetTokens()) {
    if (token.IsHidden()) continue;
    // The first word says what the statement is instead.
    if (error.Kind == mv::ekNotSelectStatement)
      return "not a select: starts with " + mv::UTF8Encode(mv::WideUpperCase(token.Text.substr(0, 20)));
    if (token.Pos >= error.Pos) {
      blamed = &token;
      break;
    }
    previous = &token;
  }
  if (error.Pos < 0 || !blamed) return Flat(error.Message().substr(0, error.Message().find(u'\r')));
  const std::string what = TokenClass(*blamed) + (previous ? " after " + TokenClass(*previous) : " at the start");
  // The parser gave up on a budget rather than on the token itself.
  if (error.Message().find(u"too complex") != mv::WideString::npos) return "too complex before " + what;
  return "unexpected " + what;
}

void FailureGroups::Count(const std::string& reason, const std::string& example) {
  Group& group = groups_[reason];
  if (group.count++ == 0) group.example = example;
}

void FailureGroups::Add(const mv::TmvStatementEntry& entry, const mv::EmvSQLError& error) {
  std::string example = "#" + std::to_string(entry.Index) + " line " + std::to_string(entry.Line) + ": ";
  const mv::WideString& text = entry.Text;
  if (error.Pos >= 0 && error.Pos <= int32_t(text.size())) {
    const int32_t from = std::max(0, error.Pos - kBefore);
    std::string before = (from > 0 ? "..." : "") + Flat(text.substr(from, error.Pos - from));
    if (!before.empty() && before.back() != ' ') before += ' ';
    example += before + ">>" + Flat(text.substr(error.Pos, kAfter)) +
               (error.Pos + kAfter < int32_t(text.size()) ? "..." : "");
  } else {
    example += Flat(text.substr(0, kBefore + kAfter));
  }
  Count(Reason(text, error), example);
}

void FailureGroups::AddOther(const mv::TmvStatementEntry& entry, const std::string& message) {
  Count("(error) " + message, "#" + std::to_string(entry.Index) + " line " + std::to_string(entry.Line));
}

void FailureGroups::Print(std::ostream& out, int count) const {
  std::vector<std::pair<int, const std::string*>> order;
  for (const auto& [reason, group] : groups_) order.emplace_back(group.count, &reason);
  std::stable_sort(order.begin(), order.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  for (int i = 0; i < count && i < int(order.size()); ++i)
    out << "  " << order[i].first << "\t" << *order[i].second << "\t" << groups_.at(*order[i].second).example << "\n";
}

}  // namespace mvsql
