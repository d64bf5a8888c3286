// The criteria text of a cell of the select list: what the user typed is read
// as a condition on the row's expression. It accepts much more than SQL: a
// bare number or word, a pattern with "%", a date, an IN list, an operator
// followed by a value, "Null" and "Not Null".
#include <algorithm>
#include <cctype>
#include <charconv>
#include <string>

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/FieldType.h"
#include "support/TextHelpers.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

bool IsAsciiDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// A decimal number with "." as separator, whatever the locale: optional
// sign, digits with at most one point, an optional exponent.
bool IsNumberText(WideStringView text) {
  std::string ascii;
  for (char16_t c : text) {
    if (c > 0x7F) return false;
    ascii.push_back(static_cast<char>(c));
  }
  size_t start = 0;
  if (!ascii.empty() && (ascii[0] == '+' || ascii[0] == '-')) start = 1;
  if (start >= ascii.size() || !(std::isdigit(static_cast<unsigned char>(ascii[start])) || ascii[start] == '.'))
    return false;
  double value = 0;
  const char* begin = ascii.data() + start;
  const char* end = ascii.data() + ascii.size();
  auto [ptr, ec] = std::from_chars(begin, end, value, std::chars_format::general);
  return ec == std::errc() && ptr == end;
}

// Reads up to `maxDigits` digits at `pos`; false when fewer than `minDigits` stood there.
bool ReadDatePart(WideStringView text, size_t& pos, int minDigits, int maxDigits, int& value) {
  int count = 0;
  value = 0;
  while (pos < text.size() && IsAsciiDigit(text[pos]) && count < maxDigits) {
    value = value * 10 + (text[pos] - u'0');
    ++pos;
    ++count;
  }
  return count >= minDigits;
}

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

bool IsValidDate(int year, int month, int day) {
  static const int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12 || day < 1) return false;
  const int days = kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
  return day <= days;
}

// One of the date formats: the order of the parts ("dmy", "mdy", "ymd") and
// the separator. Days and months take one or two digits; "yy" takes two or
// four digits, "yyyy" four.
bool MatchDateFormat(WideStringView text, const char* order, char16_t separator) {
  size_t pos = 0;
  int day = 0, month = 0, year = 0;
  for (int part = 0; part < 3; ++part) {
    if (part > 0) {
      if (pos >= text.size() || text[pos] != separator) return false;
      ++pos;
    }
    const size_t before = pos;
    switch (order[part]) {
      case 'd':
        if (!ReadDatePart(text, pos, 1, 2, day)) return false;
        break;
      case 'm':
        if (!ReadDatePart(text, pos, 1, 2, month)) return false;
        break;
      default: {
        const bool fourOnly = order[0] == 'y';
        if (!ReadDatePart(text, pos, fourOnly ? 4 : 2, 4, year)) return false;
        const size_t digits = pos - before;
        if (digits == 3) return false;
        if (digits == 2) year += 2000;
        break;
      }
    }
  }
  return pos == text.size() && IsValidDate(year, month, day);
}

// The date formats in the order they are tried: "dd-mm-yy", "dd/mm/yy",
// "dd.mm.yy", "mm-dd-yy", "mm/dd/yy", "mm.dd.yy", "yyyy-mm-dd".
bool IsDateText(WideStringView text) {
  static const struct {
    const char* Order;
    char16_t Separator;
  } kFormats[] = {{"dmy", u'-'}, {"dmy", u'/'}, {"dmy", u'.'}, {"mdy", u'-'},
                  {"mdy", u'/'}, {"mdy", u'.'}, {"ymd", u'-'}};
  for (const auto& format : kFormats)
    if (MatchDateFormat(text, format.Order, format.Separator)) return true;
  return false;
}

bool IsInQuotes(WideStringView text) { return text.size() >= 2 && text.front() == u'\'' && text.back() == u'\''; }

// The text without surrounding single quotes (doubled quotes made single).
WideString Unquoted(WideStringView text) { return IsInQuotes(text) ? SQLUnquoteString(text) : WideString(text); }

bool IsStringLikeFieldType(TFieldType type) {
  switch (type) {
    case ftString: case ftBlob: case ftMemo: case ftGraphic: case ftFmtMemo:
    case ftFixedChar: case ftWideString: case ftOraClob:
      return true;
    default:
      return false;
  }
}

bool IsDateFieldType(TFieldType type) { return type == ftDate || type == ftTime || type == ftDateTime; }

}  // namespace
namespace {

// Reads what a user typed into a criteria cell of a row.
class TCriteriaText {
 public:
  TCriteriaText(TmvBaseSQLContext* context, TmvMetadataField* field, TmvDatasourceList datasources, bool leftIsLogical)
      : context_(context), provider_(context->SyntaxProvider()), datasources_(std::move(datasources)),
        leftIsLogical_(leftIsLogical) {
    if (field) {
      stringLike_ = IsStringLikeFieldType(field->FieldType());
      dateLike_ = IsDateFieldType(field->FieldType());
    }
    noField_ = field == nullptr;
  }

  // The condition of the text (not empty); `fixup` tells that the closing
  // steps of a parsed condition apply (cases from the IN list on).
  TmvOwned<TSQLExpressionItem> Interpret(const WideString& text, bool& fixup) {
    fixup = false;
    if (IsNumberText(text)) {
      if (!stringLike_) return Comparison(u"=", Number(text));
      return StringRule(text);
    }
    if ((noField_ || dateLike_) && IsDateText(text)) return Comparison(u"=", DateLiteral(text));
    fixup = true;
    if (TmvOwned<TSQLExpressionItem> in = InList(text)) return in;
    if (context_->IsValidIdent(text)) {
      if (TmvOwned<TSQLExpressionItem> column = FieldColumn(text)) return Comparison(u"=", std::move(column));
      return StringRule(text);
    }
    if (TmvOwned<TSQLExpressionItem> parsed = Parsed(text)) return parsed;
    if (WideStartsText(u"Like", text) && text.size() > 4 && IsBlank(text[4]))
      return Like(Unquoted(WideTrim(text.substr(4))));
    const std::vector<std::string>& operators = context_->GetComparisonOperators();
    for (auto op = operators.rbegin(); op != operators.rend(); ++op) {
      const WideString symbol = WideFromAscii(*op);
      if (!WideStartsStr(symbol, text)) continue;
      const WideString rest = Unquoted(WideTrim(text.substr(symbol.size())));
      if (noField_ || dateLike_) return Comparison(symbol, DateLiteral(rest));
      return Comparison(symbol, StringConstant(rest));
    }
    if (!provider_->IsUniversalExpressions())
      if (TmvOwned<TSQLExpressionItem> call = FunctionCall(text)) return Comparison(u"=", std::move(call));
    return StringRule(text);
  }

 private:
  static bool IsBlank(char16_t c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

  // "= value" with the left side left out.
  TmvOwned<TSQLExpressionItem> Comparison(WideStringView op, TmvOwned<TSQLExpressionItem> right) {
    auto binary = TastCreate<TSQLExpressionOperatorBinary>(context_);
    binary->Operator.Set(TastCreate<TSQLOperator>(context_, op));
    binary->Right.Set(std::move(right));
    return binary;
  }

  TmvOwned<TSQLExpressionItem> StringConstant(WideStringView value) {
    auto constant = TastCreate<TSQLExpressionConstant>(context_);
    constant->AddString(SQLQuoteString(value));
    return constant;
  }

  TmvOwned<TSQLExpressionItem> Number(WideStringView text) {
    if (TmvOwned<TSQLExpressionItem> parsed = context_->ParseExpression(WideString(text))) return parsed;
    auto constant = TastCreate<TSQLExpressionConstant>(context_);
    constant->AddNumber(text);
    return constant;
  }

  // The provider's literal of the date as typed; a string when it does not parse.
  TmvOwned<TSQLExpressionItem> DateLiteral(WideStringView text) {
    if (TmvOwned<TSQLExpressionItem> parsed = context_->ParseExpression(provider_->QuoteDateLiteral(text)))
      return parsed;
    return StringConstant(text);
  }

  TmvOwned<TSQLExpressionItem> Like(WideStringView value) {
    auto like = TastCreate<TSQLExpressionLikeTemplate>(context_);
    like->Template.Set(StringConstant(value));
    return like;
  }

  // Text with "%" is a pattern; any other text is compared as a string.
  TmvOwned<TSQLExpressionItem> StringRule(WideStringView text) {
    if (text.find(u'%') != WideStringView::npos) return Like(Unquoted(text));
    return Comparison(u"=", StringConstant(Unquoted(text)));
  }

  // The last datasource of the SELECT with a field of that name, and the field.
  bool FindField(WideStringView name, TmvDatasource*& datasource, TmvMetadataField*& field) const {
    for (auto it = datasources_.rbegin(); it != datasources_.rend(); ++it) {
      TmvMetadataFieldsList* fields = (*it)->GetFields();
      const int index = fields ? fields->FindFieldByName(name) : -1;
      if (index < 0) continue;
      datasource = *it;
      field = fields->Items(index);
      return true;
    }
    return false;
  }

  bool IsFieldName(WideStringView name) const {
    TmvDatasource* datasource = nullptr;
    TmvMetadataField* field = nullptr;
    return FindField(name, datasource, field);
  }

  // A column bound to the field of that name, or null.
  TmvOwned<TSQLExpressionItem> FieldColumn(WideStringView name) {
    TmvDatasource* datasource = nullptr;
    TmvMetadataField* field = nullptr;
    if (!FindField(name, datasource, field) || !field->Name()) return nullptr;
    auto column = TastCreate<TSQLObjectColumn>(context_);
    column->AddName(field->Name());
    column->FromSource = datasource->FromSource();
    column->SetMetadataField(field);
    auto expression = TastCreate<TSQLExpressionColumn>(context_);
    expression->Column.Set(std::move(column));
    return expression;
  }

  // A column of one unquoted part that names no field of the SELECT: the
  // user meant a string.
  bool IsStrayWord(const TSQLExpressionItem* expression) const {
    const auto* column = TmvCast<TSQLExpressionColumn>(expression);
    if (!column || !column->Column || column->Column->Items.Count() != 1) return false;
    const auto* token = TmvCast<TastTokenIdentifier>(column->Column->Items.Item(0));
    return token && !token->Quoted && !IsFieldName(token->Token);
  }

  static const TastToken* SoleToken(const TSQLExpressionItem* expression) {
    const auto* constant = TmvCast<TSQLExpressionConstant>(expression);
    if (!constant || constant->Items.Count() != 1) return nullptr;
    return TmvCast<TastToken>(constant->Items.Item(0));
  }

  // "[not] in (...)".
  TmvOwned<TSQLExpressionItem> InList(const WideString& text) {
    WideStringView rest = text;
    bool negated = false;
    if (WideStartsText(u"not", rest) && rest.size() > 3 && IsBlank(rest[3])) {
      negated = true;
      rest = rest.substr(3);
      while (!rest.empty() && IsBlank(rest.front())) rest.remove_prefix(1);
    }
    if (!WideStartsText(u"IN", rest)) return nullptr;
    const WideString list = WideTrim(rest.substr(2));
    if (list.size() < 2 || list.front() != u'(' || list.back() != u')') return nullptr;
    TmvOwned<TSQLExpressionItem> parsed = context_->ParseLogicalExpression(text, false, false);
    if (auto* set = TmvCast<TSQLExpressionInSet>(parsed.get())) {
      if (set->Values)
        for (int i = 0; i < set->Values->Items.Count(); ++i) {
          auto* value = TmvCast<TSQLExpressionItem>(set->Values->Items.Item(i));
          WideString replacement;
          bool replace = false;
          if (IsStrayWord(value)) {
            replacement = static_cast<const TastToken*>(TmvCast<TSQLExpressionColumn>(value)->Column->Items.Item(0))->Token;
            replace = true;
          } else if (const TastToken* token = SoleToken(value); stringLike_ && TmvCast<TastTokenNumber>(token)) {
            replacement = token->Token;
            replace = true;
          }
          if (replace) set->Values->Items.Exchange(i, StringConstant(replacement));
        }
      return parsed;
    }
    if (TmvCast<TSQLExpressionInSubQuery>(parsed.get())) return parsed;
    // Built by hand: the elements between the brackets, split at commas.
    auto set = TastCreate<TSQLExpressionInSet>(context_);
    set->Negated = negated;
    auto values = TastCreate<TSQLExpressionsList>(context_);
    const WideStringView inner = WideStringView(list).substr(1, list.size() - 2);
    size_t start = 0;
    while (start <= inner.size()) {
      size_t comma = inner.find(u',', start);
      if (comma == WideStringView::npos) comma = inner.size();
      const WideString element = WideTrim(inner.substr(start, comma - start));
      start = comma + 1;
      if (element.empty()) continue;
      if ((noField_ || !stringLike_) && IsNumberText(element))
        values->Items.Add(Number(element));
      else if ((noField_ || dateLike_) && IsDateText(element))
        values->Items.Add(DateLiteral(element));
      else
        values->Items.Add(StringConstant(Unquoted(element)));
    }
    set->Values.Set(std::move(values));
    return set;
  }

  // Case 7: "Null" words, then the text as a condition without its left side.
  TmvOwned<TSQLExpressionItem> Parsed(WideString text) {
    static const char16_t* const kNull[] = {u"Null", u"=Null", u"= Null"};
    static const char16_t* const kNotNull[] = {u"Not Null", u"<>Null", u"<> Null", u"!=Null", u"!= Null"};
    for (const char16_t* word : kNull)
      if (WideSameText(text, word)) text = u"Is Null";
    for (const char16_t* word : kNotNull)
      if (WideSameText(text, word)) text = u"Is Not Null";
    TmvOwned<TSQLExpressionItem> parsed = context_->ParseLogicalExpression(text, false, leftIsLogical_);
    if (!parsed) parsed = ScalarExpression(text);
    if (!parsed) return nullptr;
    parsed = SimplifyLogicalExpression(std::move(parsed));
    if (!parsed) return nullptr;
    if (TmvOwned<TSQLExpressionItem> inner = ExpressionExtractFromBrackets(parsed)) parsed = std::move(inner);
    auto* binary = TmvCast<TSQLExpressionOperatorBinary>(parsed.get());
    const bool complete = binary && binary->Expression;
    if (parsed->IsLogical() && !complete) {
      if (binary && IsStrayWord(binary->Right.get())) {
        const WideString word =
            static_cast<const TastToken*>(TmvCast<TSQLExpressionColumn>(binary->Right.get())->Column->Items.Item(0))->Token;
        binary->Right.Set(StringConstant(word));
      }
      return parsed;
    }
    return Comparison(u"=", std::move(parsed));
  }

  // A value that is no condition ("5 + 3"): compared for equality. Text
  // with "%", a lone string (a quoted pattern) and words that name no field
  // ("AB-12") stay with the string rule.
  TmvOwned<TSQLExpressionItem> ScalarExpression(const WideString& text) {
    if (text.find(u'%') != WideString::npos) return nullptr;
    TmvOwned<TSQLExpressionItem> expression = context_->ParseExpression(text);
    if (!expression || TmvCast<TastTokenString>(SoleToken(expression.get()))) return nullptr;
    TSQLObjectColumnList columns;
    expression->GetReferencedColumnsRecursive(columns);
    for (TSQLObjectColumn* column : columns) {
      const auto* token = column->Items.Count() == 1 ? TmvCast<TastTokenIdentifier>(column->Items.Item(0)) : nullptr;
      if (token && !token->Quoted && !IsFieldName(token->Token)) return nullptr;
    }
    return expression;
  }

  // "name(" of a built-in function: the call.
  TmvOwned<TSQLExpressionItem> FunctionCall(const WideString& text) {
    const size_t bracket = text.find(u'(');
    if (bracket == WideString::npos || bracket == 0) return nullptr;
    TmvOwned<TSQLQualifiedName> name = context_->ParseQualifiedName(WideTrimRight(text.substr(0, bracket)));
    if (!name || !context_->IsNameOfBuiltinFunction(name.get())) return nullptr;
    return context_->ParseExpression(text);
  }

  TmvBaseSQLContext* context_;
  TmvBaseSyntaxProvider* provider_;
  TmvDatasourceList datasources_;
  bool leftIsLogical_;
  bool noField_ = true, stringLike_ = false, dateLike_ = false;
};

}  // namespace

void TmvSelectItem::FixupExpression(TastNode* node) {
  if (!node) return;
  node->SimplifyTreeRecursive();
  std::vector<TSQLWithClauseItem*> cteList;
  std::vector<TSQLFromSource*> fromSources;
  GatherPrepareAndFixupContext(cteList, fromSources, true);
  // A derived table does not see its own shell.
  TmvUnionSubQuery* member = UnionSubQuery();
  TmvSubQuery* root = member ? member->RootQuery() : nullptr;
  if (TmvDatasourceQuery* shell = root ? root->DerivedTable() : nullptr)
    fromSources.erase(std::remove(fromSources.begin(), fromSources.end(), shell->FromSource()), fromSources.end());
  node->PrepareAndFixupRecursive(cteList, fromSources);
}

void TmvSelectItem::SetConditionString(int index, const WideString& text) {
  if (SelectList()->Filling() || index < 0) return;
  if (Host())
    Host()->LogHelper().Debug(u"TmvSelectItem(%d, %p).SetConditionString: AIndex = %d, AValue = \"%s\"", Index(),
                              static_cast<const void*>(this), index, text);
  const WideString value = WideTrim(text);
  TmvUpdateScope update(this);
  if (value.empty()) {
    SetASTCondition(index, nullptr);
  } else {
    TmvDatasourceList datasources;
    if (TmvUnionSubQuery* member = UnionSubQuery()) member->Datasources()->GetDatasources(datasources);
    auto* expression = TmvCast<TSQLExpressionItem>(Expression());
    TCriteriaText criteria(SQLContext(), GetExpressionField(), std::move(datasources),
                           expression && expression->IsLogical());
    bool fixup = false;
    TmvOwned<TSQLExpressionItem> condition = criteria.Interpret(value, fixup);
    if (fixup) {
      FixupExpression(condition.get());
      if (expression) RemoveLExpression(condition.get());
    }
    TSQLExpressionItem* stored = condition.get();
    SetASTCondition(index, std::move(condition));
    if (fixup) LoadSubQueries(stored);
  }
  if (ConditionsType() == ctNone) SetConditionsType(Aggregate() || Grouping() ? ctHaving : ctWhere);
  ShrinkConditionsList();
  NotifySQLUpdated();
}

}  // namespace mv
