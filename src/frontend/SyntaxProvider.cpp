#include "frontend/SyntaxProvider.h"

#include "frontend/KeywordResources.h"
#include "frontend/SQLContext.h"
#include "support/Exceptions.h"
#include "support/FormatSettings.h"
#include "support/TextHelpers.h"
#include "support/WideFormat.h"
#include "tree/Expressions.h"
#include "tree/LogicalExpressions.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_CLASS(TmvBaseSyntaxProvider, TmvPersistent)

TmvBaseSyntaxProvider::TmvBaseSyntaxProvider() = default;

TmvBaseSyntaxProvider::~TmvBaseSyntaxProvider() {
  // A destructor must not throw: a listener's exception ends here.
  try {
    onDestroying_.Fire(this);
  } catch (...) {
  }
}

void TmvBaseSyntaxProvider::AfterConstruction() {
  TmvPersistent::AfterConstruction();
  logHelper_.SetPrefix(TmvLogHelper::ObjectPrefix(this));
  // The default follows what the dialect can do, which only the full object knows.
  detectServerVersion_ = CanDetectServerVersion();
}

void TmvBaseSyntaxProvider::Assign(const TmvPersistent* persistent) {
  const auto* source = TmvCast<TmvBaseSyntaxProvider>(persistent);
  if (!source) {
    TmvPersistent::Assign(persistent);
    return;
  }
  SetIdentCaseSens(source->GetIdentCaseSens());
  SetDenyIntoClause(source->denyIntoClause_);
  SetDetectServerVersion(source->detectServerVersion_);
  appendLimitsForFieldsQuery_ = source->appendLimitsForFieldsQuery_;
}

// --- Scanner and parser ---

void TmvBaseSyntaxProvider::SetParserParams(TmvBaseParser&) const {}

TmvOwned<TmvBaseScanner> TmvBaseSyntaxProvider::CreateScanner() const {
  TmvOwned<TmvBaseScanner> scanner(GetScannerClass().CreateRaw());
  SetScannerParams(*scanner);
  return scanner;
}

TmvOwned<TmvBaseParser> TmvBaseSyntaxProvider::CreateParser(TmvBaseScanner* scanner, TmvBaseSQLContext* context) const {
  TmvOwned<TmvBaseParser> parser(GetParserClass().CreateRaw(scanner, context));
  parser->DenyIntoClause = denyIntoClause_;
  parser->ReferenceMode = context && context->ReferenceParsing;
  SetParserParams(*parser);
  return parser;
}

// --- Case and settings ---

void TmvBaseSyntaxProvider::SetIdentCaseSens(TmvIdentCaseSensitivity value) {
  if (value == GetIdentCaseSens()) return;
  identCaseSens_ = value;
  SendNotifications();
}

void TmvBaseSyntaxProvider::SetDenyIntoClause(bool value) {
  if (value == denyIntoClause_) return;
  denyIntoClause_ = value;
  SendNotifications();
}

void TmvBaseSyntaxProvider::SetDetectServerVersion(bool value) { detectServerVersion_ = value && CanDetectServerVersion(); }

void TmvBaseSyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider*, TmvObject*) { SetDetectServerVersion(false); }

WideString TmvBaseSyntaxProvider::ServerName() const { return WideFromAscii(ClassName()); }

// --- Extenders ---

void TmvBaseSyntaxProvider::RegisterExtender(const TastNodeClass& nodeClass, const TastNodeClass& extenderClass) {
  for (const ExtenderEntry& entry : extenders_)
    if (entry.nodeClass == &nodeClass)
      throw Exception(u"Extender for \"" + WideFromAscii(nodeClass.ClassName()) + u"\" already registered!");
  extenders_.push_back({&nodeClass, &extenderClass});
}

void TmvBaseSyntaxProvider::RegisterExtender(std::initializer_list<const TastNodeClass*> nodeClasses,
                                             const TastNodeClass& extenderClass) {
  for (const TastNodeClass* nodeClass : nodeClasses) RegisterExtender(*nodeClass, extenderClass);
}

void TmvBaseSyntaxProvider::UnregisterExtender(const TastNodeClass& nodeClass) {
  for (size_t i = 0; i < extenders_.size(); ++i)
    if (extenders_[i].nodeClass == &nodeClass) {
      extenders_.erase(extenders_.begin() + i);
      return;
    }
}

const TastNodeClass* TmvBaseSyntaxProvider::FindExtenderClass(const TmvClass& nodeClass, bool inherited) const {
  const TastNodeClass* best = nullptr;
  int bestDistance = 0;
  for (const ExtenderEntry& entry : extenders_) {
    if (entry.nodeClass == &nodeClass) return entry.extenderClass;
    if (!inherited) continue;
    int distance = 0;
    for (const TmvClass* c = &nodeClass; c; c = c->ClassParent(), ++distance) {
      if (c != entry.nodeClass) continue;
      if (!best || distance < bestDistance) {
        best = entry.extenderClass;
        bestDistance = distance;
      }
      break;
    }
  }
  return best;
}

// --- Names ---

void TmvBaseSyntaxProvider::GetStarAggregateNames(TSQLQualifiedNamesList& list) const { list.AddBuiltin(u"Count"); }

void TmvBaseSyntaxProvider::Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const { list.Clear(); }

void TmvBaseSyntaxProvider::GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const {
  for (const char16_t* name : {u"Avg", u"Count", u"Max", u"Min", u"Sum"}) list.AddBuiltin(name);
}

void TmvBaseSyntaxProvider::GetMultiParamAggregateNames(TSQLQualifiedNamesList&) const {}

void TmvBaseSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const { list.Clear(); }

void TmvBaseSyntaxProvider::GetComparisonOperators(std::vector<std::string>& list) const {
  list.insert(list.end(), {"=", ">", ">=", "<", "<=", "<>"});
}

void TmvBaseSyntaxProvider::GetUnionOperatorsList(std::vector<WideString>& list) const {
  list.insert(list.end(), {u"Union", u"Union All"});
}

WideString TmvBaseSyntaxProvider::NormalizeUnionOperator(WideStringView text) const {
  std::vector<WideString> list;
  GetUnionOperatorsList(list);
  for (const WideString& entry : list)
    if (WideSameText(entry, text)) return entry;
  return WideString(text);
}

TmvUnionOperatorIcon TmvBaseSyntaxProvider::GetUnionOperatorIcon(WideStringView text) {
  struct IconEntry {
    const char16_t* text;
    TmvUnionOperatorIcon icon;
  };
  static constexpr IconEntry kIcons[] = {
      {u"UNION", TmvUnionOperatorIcon::Union},         {u"UNION ALL", TmvUnionOperatorIcon::UnionAll},
      {u"EXCEPT", TmvUnionOperatorIcon::Except},       {u"EXCEPT ALL", TmvUnionOperatorIcon::ExceptAll},
      {u"INTERSECT", TmvUnionOperatorIcon::Intersect}, {u"INTERSECT ALL", TmvUnionOperatorIcon::IntersectAll},
      {u"MINUS", TmvUnionOperatorIcon::Except},
  };
  for (const IconEntry& entry : kIcons)
    if (WideSameText(entry.text, text)) return entry.icon;
  return TmvUnionOperatorIcon::None;
}

// --- Fields query ---

void TmvBaseSyntaxProvider::SetQueryToLoadFieldsTemplate(WideStringView value) {
  queryToLoadFieldsTemplate_ = value == queryToLoadFieldsTemplateDefault_ ? WideString() : WideString(value);
}

WideString TmvBaseSyntaxProvider::GetQueryToLoadFieldsTemplate() const {
  return queryToLoadFieldsTemplate_.empty() ? queryToLoadFieldsTemplateDefault_ : queryToLoadFieldsTemplate_;
}

WideString TmvBaseSyntaxProvider::GetQueryToLoadFieldsForObject(WideStringView fields, WideStringView objectName) const {
  const WideString list = fields.empty() ? WideString(u"*") : WideString(fields);
  if (!appendLimitsForFieldsQuery_) return u"select " + list + u" from " + WideString(objectName) + u" a";
  // A user's template may use either placeholder form.
  WideString format = GetQueryToLoadFieldsTemplate();
  format = WideStringReplace(format, u"{0}", u"%0:s", rfReplaceAll);
  format = WideStringReplace(format, u"{1}", u"%1:s", rfReplaceAll);
  return WideFormat(format, {list, WideString(objectName)});
}

WideString TmvBaseSyntaxProvider::GetQueryToLoadFieldsForTable(WideStringView fields, WideStringView name) const {
  return GetQueryToLoadFieldsForObject(fields, name);
}

WideString TmvBaseSyntaxProvider::GetQueryToLoadFieldsForView(WideStringView fields, WideStringView name) const {
  return GetQueryToLoadFieldsForObject(fields, name);
}

WideString TmvBaseSyntaxProvider::GetQueryToLoadFieldsForSynonym(WideStringView fields, WideStringView name) const {
  return GetQueryToLoadFieldsForObject(fields, name);
}

WideString TmvBaseSyntaxProvider::GetQueryToLoadFieldsForProcedure(WideStringView fields, WideStringView name,
                                                                   WideStringView params) const {
  const WideString call = params.empty() && !IsSupportEmptyBracketsInStoredProcs()
                              ? WideString(name)
                              : WideString(name) + u"(" + WideString(params) + u")";
  return GetQueryToLoadFieldsForObject(fields, CreateWrapperForStoredProc(call));
}

// --- Types ---

bool TmvBaseSyntaxProvider::IsVariablePrecisionType(WideStringView typeName) const {
  return WideSameText(typeName, u"decimal") || WideSameText(typeName, u"numeric");
}

// --- Limits ---

bool TmvBaseSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement*, WideString&, WideString&) const {
  return false;
}

TmvOwned<TSQLSubSelectStatement> TmvBaseSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement*,
                                                                             WideStringView, WideStringView) const {
  throw Exception(u"This syntax does not support TransformQueryLimits");
}

// --- Dates ---

namespace {

// Reads `count` digits at `pos`; false when they are not all digits.
bool ReadDigits(WideStringView text, size_t pos, size_t count, int& value) {
  if (pos + count > text.size()) return false;
  value = 0;
  for (size_t i = pos; i < pos + count; ++i) {
    if (text[i] < u'0' || text[i] > u'9') return false;
    value = value * 10 + (text[i] - u'0');
  }
  return true;
}

// yyyy-mm-dd exactly.
bool ParseFixedDate(WideStringView text, TmvDateTime& value) {
  int year, month, day;
  return text.size() == 10 && text[4] == u'-' && text[7] == u'-' && ReadDigits(text, 0, 4, year) &&
         ReadDigits(text, 5, 2, month) && ReadDigits(text, 8, 2, day) && TryEncodeDate(year, month, day, value);
}

// hh:nn:ss exactly.
bool ParseFixedTime(WideStringView text, TmvDateTime& value) {
  int hour, minute, second;
  return text.size() == 8 && text[2] == u':' && text[5] == u':' && ReadDigits(text, 0, 2, hour) &&
         ReadDigits(text, 3, 2, minute) && ReadDigits(text, 6, 2, second) &&
         TryEncodeTime(hour, minute, second, 0, value);
}

WideString CastLiteral(WideStringView text, const char16_t* typeName) {
  return WideFormat(u"cast('%s' as %s)", {WideString(text), WideString(typeName)});
}

}  // namespace

WideString TmvBaseSyntaxProvider::GetDateString(TmvDateTime value) const {
  return CastLiteral(FormatDateTime(u"yyyy-mm-dd", value), u"date");
}

WideString TmvBaseSyntaxProvider::GetTimeString(TmvDateTime value) const {
  return CastLiteral(FormatDateTime(u"hh:nn:ss", value), u"time");
}

WideString TmvBaseSyntaxProvider::GetDateTimeString(TmvDateTime value) const {
  if (TimeOf(value).value == 0) return GetDateString(value);
  return CastLiteral(FormatDateTime(u"yyyy-mm-dd hh:nn:ss", value), u"timestamp");
}

WideString TmvBaseSyntaxProvider::GetDate(const TSQLExpressionItem* expression) const {
  return GetCastedConstantValue(expression, u"Date");
}

WideString TmvBaseSyntaxProvider::GetTime(const TSQLExpressionItem* expression) const {
  return GetCastedConstantValue(expression, u"Time");
}

WideString TmvBaseSyntaxProvider::GetDateTime(const TSQLExpressionItem* expression) const {
  WideString date = GetCastedConstantValue(expression, u"Date");
  return date.empty() ? GetCastedConstantValue(expression, u"TimeStamp") : date;
}

bool TmvBaseSyntaxProvider::TryParseDate(WideStringView text, TmvDateTime& value) const {
  return ParseFixedDate(text, value) || TryStrToDate(text, value, TmvFormatSettings());
}

bool TmvBaseSyntaxProvider::TryParseTime(WideStringView text, TmvDateTime& value) const {
  return ParseFixedTime(text, value) || TryStrToTime(text, value, TmvFormatSettings());
}

bool TmvBaseSyntaxProvider::TryParseDateTime(WideStringView text, TmvDateTime& value) const {
  TmvDateTime date, time;
  if (text.size() == 19 && text[10] == u' ' && ParseFixedDate(text.substr(0, 10), date) &&
      ParseFixedTime(text.substr(11), time)) {
    value = ComposeDateTime(date, time);
    return true;
  }
  return TryStrToDateTime(text, value, TmvFormatSettings());
}

WideString TmvBaseSyntaxProvider::QuoteDateLiteral(WideStringView text) const { return SQLQuoteString(text); }

WideString TmvBaseSyntaxProvider::GetCastedConstantValue(const TSQLExpressionItem* expression,
                                                         WideStringView typeName) {
  while (const auto* brackets = TmvCast<TSQLExpressionBrackets>(expression)) expression = brackets->Expression.get();
  const auto* cast = TmvCast<TSQLExpressionCast>(expression);
  if (!cast) return {};
  const auto* type = TmvCast<TSQLTypeStandard>(cast->TargetType.get());
  if (!type || !type->Tokens || type->Tokens->GetCount() != 1) return {};
  const auto* name = TmvCast<TastToken>(type->Tokens->GetItems(0));
  if (!name || !WideSameText(name->Token, typeName)) return {};
  const auto* constant = TmvCast<TSQLExpressionConstant>(cast->Expression.get());
  if (!constant || constant->GetCount() != 1) return {};
  const auto* string = TmvCast<TastTokenString>(constant->Items.Item(0));
  return string ? SQLUnquoteString(string->Token) : WideString();
}

// --- Keywords ---

std::vector<WideString> TmvBaseSyntaxProvider::GetKeywords() const {
  for (const TmvClass* c = &ClassType(); c && c->InheritsFrom(TmvBaseSyntaxProvider::StaticClass());
       c = c->ClassParent()) {
    if (const std::vector<std::string>* words = FindKeywordResource(KeywordResourceName(c->ClassName()))) {
      std::vector<WideString> list;
      list.reserve(words->size());
      for (const std::string& word : *words) list.push_back(WideFromAscii(word));
      return list;
    }
  }
  return {};
}

}  // namespace mv
