#include "EditScript.h"

#include <algorithm>
#include <vector>

#include "component/QueryBuilder.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"

namespace mvsql {

namespace {

using mv::WideString;

// A reason why a line cannot be run.
struct Refusal {
  WideString why;
};

// One word or quoted text of a line.
struct Token {
  WideString text;  // a text without its quotes, a word as written
  bool quoted = false;
};

WideString Number(int value) { return mv::UTF8Decode(std::to_string(value)); }

std::vector<WideString> Split(const WideString& text, char16_t separator) {
  std::vector<WideString> parts;
  size_t start = 0;
  for (size_t end; (end = text.find(separator, start)) != WideString::npos; start = end + 1)
    parts.push_back(text.substr(start, end - start));
  parts.push_back(text.substr(start));
  return parts;
}

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r'; }

// Splits a line into words, texts and "=". A word runs to a blank or "=";
// quoted parts inside it stay as written.
std::vector<Token> Tokenize(const WideString& line) {
  std::vector<Token> tokens;
  size_t i = 0;
  auto closingQuote = [&](size_t open) {
    for (size_t j = open + 1; j < line.size(); ++j) {
      if (line[j] != u'"') continue;
      if (j + 1 < line.size() && line[j + 1] == u'"') {
        ++j;
        continue;
      }
      return j;
    }
    throw Refusal{u"a text in double quotes is not closed"};
  };
  while (i < line.size()) {
    if (IsBlank(line[i])) {
      ++i;
    } else if (line[i] == u'=') {
      tokens.push_back({u"=", false});
      ++i;
    } else if (line[i] == u'"') {
      const size_t close = closingQuote(i);
      Token token{u"", true};
      for (size_t j = i + 1; j < close; ++j) {
        token.text += line[j];
        if (line[j] == u'"') ++j;  // a doubled quote
      }
      tokens.push_back(std::move(token));
      i = close + 1;
    } else {
      const size_t start = i;
      while (i < line.size() && !IsBlank(line[i]) && line[i] != u'=') i = line[i] == u'"' ? closingQuote(i) + 1 : i + 1;
      tokens.push_back({line.substr(start, i - start), false});
    }
  }
  return tokens;
}

// --- Argument patterns ---
//
// A pattern is a list of elements separated by blanks, written as the usage
// shows them. An element in upper case is a value: ROW and N are numbers from
// 1, "TEXT" is a text in quotes, a name with a dot (ALIAS.FIELD) is a word
// split at its first dot outside quotes into two values, any other is a word.
// An element in lower case is a keyword, "a|b" one of several (its value is
// the one given); "=" stands for itself. Every element but "=" has a value
// (a keyword's is itself). "[...]" is an optional group, given whole or not
// at all; an absent group's values are empty.

enum class ElementKind { Word, Number, Text, Dotted, Keyword, Choice };

struct Element {
  ElementKind kind;
  WideString name;  // as written in the pattern, brackets removed
  int group = -1;   // index of the optional group, -1 when required
};

std::vector<Element> ParsePattern(const char* pattern) {
  std::vector<Element> elements;
  int groups = 0;
  bool inGroup = false;
  for (const WideString& raw : Split(mv::UTF8Decode(pattern), u' ')) {
    WideString name = raw;
    if (name.empty()) continue;
    const bool opens = name.front() == u'[';
    if (opens) name.erase(0, 1), inGroup = true;
    const bool closes = !name.empty() && name.back() == u']';
    if (closes) name.pop_back();
    Element element{ElementKind::Word, name, inGroup ? groups : -1};
    if (name == u"ROW" || name == u"N")
      element.kind = ElementKind::Number;
    else if (name.front() == u'"')
      element.kind = ElementKind::Text;
    else if (name.find(u'|') != WideString::npos)
      element.kind = ElementKind::Choice;
    else if (mv::WideUpperCase(name) != name || name == u"=")
      element.kind = ElementKind::Keyword;
    else if (name.find(u'.') != WideString::npos)
      element.kind = ElementKind::Dotted;
    elements.push_back(element);
    if (closes) inGroup = false, ++groups;
  }
  return elements;
}

// The first dot outside quotes, or npos.
size_t DotOutsideQuotes(const WideString& word) {
  bool quoted = false;
  for (size_t i = 0; i < word.size(); ++i) {
    if (word[i] == u'"') quoted = !quoted;
    if (word[i] == u'.' && !quoted) return i;
  }
  return WideString::npos;
}

class Operation;

// What a line has when its handler runs: the values in the order of the
// pattern (two for a dotted element, empty ones for an absent group).
using Values = std::vector<WideString>;

// The builder and what the script has made active.
class EditState {
 public:
  EditState(mv::TmvQueryBuilder& builder, const std::function<void()>& print) : builder_(builder), print_(print) {}

  mv::TmvQueryBuilder& Builder() { return builder_; }
  void Print() { print_(); }

  mv::TmvSubQuery* SubQuery() const {
    return builder_.ActiveSubQuery() ? builder_.ActiveSubQuery() : builder_.Query();
  }
  mv::TmvUnionSubQuery* Select() const {
    mv::TmvSubQuery* subQuery = SubQuery();
    mv::TmvUnionSubQuery* select = subQuery->ActiveUnionSubQuery();
    if (!select) select = subQuery->FirstSelect();
    if (!select) throw Refusal{u"the active sub-query has no SELECT"};
    return select;
  }

  // The datasource of the active SELECT named so (alias, else name).
  mv::TmvDatasource* Datasource(const WideString& alias) const {
    mv::TmvDatasourceList list;
    Select()->Datasources()->GetDatasources(list);
    for (mv::TmvDatasource* datasource : list)
      if (mv::WideSameText(datasource->GetNameInQuery(), alias)) return datasource;
    throw Refusal{u"no datasource '" + alias + u"' in the active SELECT"};
  }

  // The row numbered so; the empty last row of the list does not count.
  mv::TmvSelectItem* Row(const WideString& number) const {
    mv::TmvSelectList* rows = Select()->SelectList();
    const int count = rows->Count() - 1;
    const int row = std::stoi(mv::UTF8Encode(number));
    if (row > count)
      throw Refusal{u"row " + number + u": the select list has " + Number(count) + (count == 1 ? u" row" : u" rows")};
    return rows->Items(row - 1);
  }

  // The field of the datasource's metadata ("*" gives null, the row of t.*).
  mv::TmvMetadataField* Field(mv::TmvDatasource* datasource, const WideString& name) const {
    if (name == u"*") return nullptr;
    mv::TmvMetadataFieldsList* fields = datasource->GetFields();
    const int index = fields ? fields->FindFieldByName(name) : -1;
    if (index < 0) {
      const bool none = !fields || fields->Count() == 0;
      throw Refusal{u"no field '" + name + u"' in '" + datasource->GetNameInQuery() + u"'" +
                    (none ? u" (it has no fields: no metadata for it)" : u"")};
    }
    return fields->Items(index);
  }

 private:
  mv::TmvQueryBuilder& builder_;
  const std::function<void()>& print_;
};

// --- The operations ---

void AddObject(EditState& state, const Values& v) {
  if (!state.Select()->AddObject(v[0], v[1])) throw Refusal{u"the object was not added"};
}

void RemoveObject(EditState& state, const Values& v) {
  mv::TmvDatasource* datasource = state.Datasource(v[0]);
  if (!datasource->Group()->Remove(datasource)) throw Refusal{u"the datasource was not removed"};
}

void Link(EditState& state, const Values& v) {
  mv::TmvDatasource* left = state.Datasource(v[0]);
  mv::TmvDatasource* right = state.Datasource(v[2]);
  mv::TmvLink* link = state.Select()->AddLink(left, v[1], v[3], right);
  if (!link) throw Refusal{u"no link was made"};
  // The side whose rows all stay is the outer one.
  const WideString& kind = v[4];
  if (kind == u"left" || kind == u"full") link->SetLeftType(mv::ltOuter);
  if (kind == u"right" || kind == u"full") link->SetRightType(mv::ltOuter);
}

void SetChecked(EditState& state, const Values& v, bool checked) {
  mv::TmvDatasource* datasource = state.Datasource(v[0]);
  datasource->SetFieldChecked(state.Field(datasource, v[1]), checked);
}

void Check(EditState& state, const Values& v) { SetChecked(state, v, true); }
void Uncheck(EditState& state, const Values& v) { SetChecked(state, v, false); }

// Typed into the empty last row of the grid, as a user adds an expression.
void Expression(EditState& state, const Values& v) {
  mv::TmvSelectList* rows = state.Select()->SelectList();
  mv::TmvSelectItem* row = rows->Items(rows->Count() - 1);
  mv::TmvUpdateScope update(rows);
  row->SetExpressionStringUI(v[0]);
  if (!v[2].empty()) row->SetAliasStringUI(v[2]);
}

void Show(EditState& state, const Values& v) { state.Row(v[0])->SetSelectUI(true); }
void Hide(EditState& state, const Values& v) { state.Row(v[0])->SetSelectUI(false); }
void Criteria(EditState& state, const Values& v) { state.Row(v[0])->SetConditionString(0, v[1]); }
void OrCriteria(EditState& state, const Values& v) {
  state.Row(v[0])->SetConditionString(std::stoi(mv::UTF8Encode(v[1])), v[2]);
}
void Sort(EditState& state, const Values& v) { state.Row(v[0])->SetSortType(v[1] == u"asc" ? mv::stAsc : mv::stDesc); }
void Group(EditState& state, const Values& v) { state.Row(v[0])->SetGroupingUI(true); }
void Aggregate(EditState& state, const Values& v) { state.Row(v[0])->SetAggregateStringUI(v[1]); }

void AddUnion(EditState& state, const Values& v) {
  WideString op = v[0];
  if (!op.empty()) {
    std::vector<WideString> known;
    state.Builder().SyntaxProvider()->GetUnionOperatorsList(known);
    WideString list;
    for (const WideString& name : known) {
      if (mv::WideSameText(name, op)) op = name;
      list += (list.empty() ? u"" : u", ") + name;
    }
    if (std::find(known.begin(), known.end(), op) == known.end())
      throw Refusal{u"unknown union operator '" + op + u"' (" + list + u")"};
  }
  mv::TmvUnionSubQuery* member = state.Select()->NewEvent();
  if (!member) throw Refusal{u"no SELECT was added"};
  if (!op.empty()) member->SetUnionOperatorFull(op + (v[1].empty() ? u"" : u" ALL"));
  else if (!v[1].empty()) member->SetUnionAllFlag(true);
}

void MoveUnion(EditState& state, const Values& v) {
  const std::vector<mv::TmvUnionSubQuery*> members = state.SubQuery()->GetUnionSubQueriesList();
  const int n = std::stoi(mv::UTF8Encode(v[0]));
  if (n > int(members.size()))
    throw Refusal{u"SELECT " + v[0] + u": the sub-query has " + Number(int(members.size()))};
  if (v[1] == u"left")
    members[n - 1]->MoveLeftEvent();
  else
    members[n - 1]->MoveRightEvent();
}

void DerivedTable(EditState& state, const Values& v) {
  if (!state.Select()->ConvertDatasourceToDerivedTable(state.Datasource(v[0])))
    throw Refusal{u"'" + v[0] + u"' was not made a derived table"};
}

void Enter(EditState& state, const Values& v) {
  WideString captions;
  for (mv::TmvSubQuery* subQuery : state.Builder().SubQueries()) {
    const WideString caption = subQuery->GetCaption();
    if (mv::WideSameText(caption, v[0])) {
      state.Builder().SetActiveSubQuery(subQuery);
      if (state.Builder().ActiveSubQuery() != subQuery) throw Refusal{u"the sub-query was not made active"};
      return;
    }
    captions += (captions.empty() ? u"" : u", ") + caption;
  }
  throw Refusal{u"no sub-query '" + v[0] + u"' (there are: " + captions + u")"};
}

void Leave(EditState& state, const Values&) {
  mv::TmvSubQuery* parent = state.SubQuery()->ParentSubQuery();
  if (!parent) throw Refusal{u"the main query is active: there is nothing to leave"};
  state.Builder().SetActiveSubQuery(parent);
}

void Print(EditState& state, const Values&) { state.Print(); }

struct OperationRow {
  const char* name;
  const char* pattern;
  void (*run)(EditState&, const Values&);
};

const OperationRow kOperations[] = {
    {"add-object", "NAME [ALIAS]", AddObject},
    {"remove-object", "ALIAS", RemoveObject},
    {"link", "LEFT.FIELD = RIGHT.FIELD [inner|left|right|full]", Link},
    {"check", "ALIAS.FIELD", Check},
    {"uncheck", "ALIAS.FIELD", Uncheck},
    {"expression", "\"TEXT\" [as ALIAS]", Expression},
    {"show", "ROW", Show},
    {"hide", "ROW", Hide},
    {"criteria", "ROW \"TEXT\"", Criteria},
    {"or-criteria", "ROW N \"TEXT\"", OrCriteria},
    {"sort", "ROW asc|desc", Sort},
    {"group", "ROW", Group},
    {"aggregate", "ROW FUNC", Aggregate},
    {"add-union", "[OPERATOR] [all]", AddUnion},
    {"move-union", "N left|right", MoveUnion},
    {"derived-table", "ALIAS", DerivedTable},
    {"enter", "SUBQUERY-CAPTION", Enter},
    {"leave", "", Leave},
    {"print", "", Print},
};

// The values of a line's arguments under the pattern, or a refusal that
// shows the usage.
Values MatchArguments(const OperationRow& operation, const std::vector<Token>& arguments) {
  const WideString usage = u"expected: " + mv::UTF8Decode(operation.name) +
                           (*operation.pattern ? u" " + mv::UTF8Decode(operation.pattern) : u"");
  const std::vector<Element> elements = ParsePattern(operation.pattern);
  Values values;
  size_t next = 0;
  int absentGroup = -2;
  for (const Element& element : elements) {
    const bool absent = element.group >= 0 && (element.group == absentGroup || next >= arguments.size());
    if (absent) {
      absentGroup = element.group;
      if (element.kind == ElementKind::Dotted) values.emplace_back();
      if (element.name != u"=") values.emplace_back();
      continue;
    }
    if (next >= arguments.size()) throw Refusal{usage};
    const Token& token = arguments[next++];
    switch (element.kind) {
      case ElementKind::Word:
        values.push_back(token.text);
        break;
      case ElementKind::Text:
        if (!token.quoted) throw Refusal{element.name + u" must be in double quotes; " + usage};
        values.push_back(token.text);
        break;
      case ElementKind::Number: {
        const bool digits = !token.quoted && !token.text.empty() && token.text.size() < 7 &&
                            token.text.find_first_not_of(u"0123456789") == WideString::npos;
        if (!digits || std::stoi(mv::UTF8Encode(token.text)) < 1)
          throw Refusal{element.name + u" must be a number from 1, not '" + token.text + u"'; " + usage};
        values.push_back(token.text);
        break;
      }
      case ElementKind::Dotted: {
        const size_t dot = token.quoted ? WideString::npos : DotOutsideQuotes(token.text);
        if (dot == WideString::npos || dot == 0 || dot + 1 == token.text.size())
          throw Refusal{element.name + u" expected, not '" + token.text + u"'; " + usage};
        values.push_back(token.text.substr(0, dot));
        values.push_back(token.text.substr(dot + 1));
        break;
      }
      case ElementKind::Keyword:
        if (token.quoted || !mv::WideSameText(token.text, element.name)) throw Refusal{usage};
        if (element.name != u"=") values.push_back(element.name);
        break;
      case ElementKind::Choice: {
        bool found = false;
        for (const WideString& choice : Split(element.name, u'|'))
          if (!token.quoted && mv::WideSameText(choice, token.text)) values.push_back(choice), found = true;
        if (!found) throw Refusal{element.name + u" expected, not '" + token.text + u"'; " + usage};
        break;
      }
    }
  }
  if (next < arguments.size()) throw Refusal{u"too many arguments; " + usage};
  return values;
}

void RunLine(EditState& state, const WideString& line) {
  const std::vector<Token> tokens = Tokenize(line);
  if (tokens.empty()) return;
  for (const OperationRow& operation : kOperations) {
    if (tokens[0].quoted || tokens[0].text != mv::UTF8Decode(operation.name)) continue;
    const Values values = MatchArguments(operation, std::vector<Token>(tokens.begin() + 1, tokens.end()));
    operation.run(state, values);
    return;
  }
  throw Refusal{u"unknown operation '" + tokens[0].text + u"'"};
}

}  // namespace

void RunEditScript(mv::TmvQueryBuilder& builder, const WideString& script, const std::function<void()>& print) {
  EditState state(builder, print);
  int number = 0;
  size_t start = 0;
  while (start <= script.size()) {
    size_t end = script.find(u'\n', start);
    if (end == WideString::npos) end = script.size();
    const WideString line = script.substr(start, end - start);
    start = end + 1;
    ++number;
    const size_t first = line.find_first_not_of(u" \t\r");
    if (first == WideString::npos || line[first] == u'#') continue;
    try {
      RunLine(state, line);
    } catch (const Refusal& refusal) {
      throw EditScriptError{number, mv::UTF8Encode(refusal.why)};
    } catch (const mv::Exception& e) {
      throw EditScriptError{number, mv::UTF8Encode(e.Message())};
    } catch (const std::exception& e) {
      throw EditScriptError{number, e.what()};
    }
  }
}

std::string EditScriptSummary() {
  std::string text;
  for (const OperationRow& operation : kOperations)
    text += std::string("  ") + operation.name + (*operation.pattern ? " " : "") + operation.pattern + "\n";
  return text;
}

}  // namespace mvsql
