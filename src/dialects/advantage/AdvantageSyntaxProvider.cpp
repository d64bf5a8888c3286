#include "dialects/advantage/AdvantageSyntaxProvider.h"

#include "AdvantagePars.h"
#include "AdvantageScan.h"
#include "dialects/advantage/AdvantageCatalog.h"
#include "dialects/advantage/AdvantageNodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "sqlgen/SQLBuilder.h"
#include "support/FormatSettings.h"
#include "support/TextHelpers.h"
#include "tree/Expressions.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"
#include "tree/Tokens.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvAdvantageSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kAdvantageKeywords =
    "add all alter and any as asc avg begin between by case cast close column commit constraint count create "
    "cursor declare default delete desc distinct drop else end escape execute exists false fetch for from full "
    "function grant group having in index inner insert into is join key left like max min not null of on open "
    "or order outer output primary procedure return returns revoke right rollback savepoint select set sql sum "
    "table then to transaction true union unique update user values view when where work";

namespace {

WideString ServerText(const TastNode* node) {
  if (!node || !node->SQLContext()) return {};
  return const_cast<TastNode*>(node)->SimpleSQL(node->SQLContext()->SQLBuilderExpressionForServer());
}

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

// The text of a lone string constant, brackets around it left out.
WideString StringValue(const TSQLExpressionItem* expression) {
  while (const auto* brackets = TmvCast<TSQLExpressionBrackets>(expression)) expression = brackets->Expression.get();
  const auto* constant = TmvCast<TSQLExpressionConstant>(expression);
  if (!constant || constant->GetCount() != 1) return {};
  if (const auto* string = TmvCast<TastTokenString>(constant->Items.Item(0))) return SQLUnquoteString(string->Token);
  return {};
}

}  // namespace

TmvAdvantageSyntaxProvider::TmvAdvantageSyntaxProvider() : TmvMatrixSyntaxProvider("TmvAdvantageSyntaxProvider") {
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(),
                   TAdvantageSubQuerySelectExpressionExtender::StaticClass());
}

void TmvAdvantageSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_AdvantageNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kAdvantageKeywords);
}

const TmvScannerClass& TmvAdvantageSyntaxProvider::GetScannerClass() const {
  return AdvantageScanner::ScannerClass();
}

const TmvParserClass& TmvAdvantageSyntaxProvider::GetParserClass() const { return AdvantageParser::ParserClass(); }

std::vector<int32_t> TmvAdvantageSyntaxProvider::GetStringTokenIds() const {
  return {AdvantageScanner::tkStringToken};
}

void TmvAdvantageSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name :
       {u"CurDate", u"Current_Date", u"Current_Time", u"Current_Timestamp", u"CurTime", u"DayName", u"DayOfMonth",
        u"DayOfWeek", u"DayOfYear", u"Extract", u"Hour", u"Minute", u"Month", u"MonthName", u"Now", u"Quarter",
        u"Second", u"TimestampAdd", u"TimestampDiff", u"Week", u"Year", u"Abs", u"ACos", u"ASin", u"ATan", u"ATan2",
        u"Ceiling", u"Cos", u"Cot", u"Degrees", u"Exp", u"Floor", u"Log", u"Log10", u"Mod", u"Pi", u"Power",
        u"Radians", u"Rand", u"Round", u"Sign", u"Sin", u"Sqrt", u"Tan", u"Truncate", u"Ascii", u"Bit_Length",
        u"Char", u"Character_Length", u"Char_Length", u"Collate", u"Concat", u"Insert", u"LCase", u"Left", u"Length",
        u"Locate", u"Lower", u"LTrim", u"Octet_Length", u"Position", u"Repeat", u"Replace", u"Right", u"RTrim",
        u"Space", u"SubString", u"Trim", u"UCase", u"Upper", u"ApplicationId", u"Cast", u"Coalesce", u"Contains",
        u"Convert", u"Database", u"Difference", u"IfNull", u"IIf", u"IsNull", u"LastAutoInc", u"NewIdString",
        u"Score", u"ScoreDistinct", u"SoundEx", u"User"})
    list.AddBuiltin(name);
}

bool TmvAdvantageSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"varchar", u"binary", u"varbinary"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

bool TmvAdvantageSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                                WideString& count) const {
  offset.clear();
  count.clear();
  auto* extender = AdvantageExtenderOf(OnlySelect(statement));
  if (!extender || !extender->Top) return false;
  auto* rows = TmvCast<TSQLSubQueryTopRows>(extender->Top.get());
  if (rows && !TmvCast<TSQLSubQueryTopPercent>(rows)) {
    count = ServerText(rows->Count.get());
    offset = ServerText(rows->StartAt.get());
  }
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvAdvantageSyntaxProvider::TransformQueryLimits(
    const TSQLSubSelectStatement* statement, WideStringView offset, WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  if (!OnlySelect(result.get())) {
    ExpandQueryColumns(result.get());
    result = WrapQuery(std::move(result));
    result->PrepareAndFixupRecursive();
  }
  if (auto* extender = AdvantageExtenderOf(OnlySelect(result.get()))) {
    extender->Top.Reset();
    if (!count.empty() || !offset.empty()) {
      auto top = TastCreate<TSQLSubQueryTopRows>(context);
      if (!count.empty()) top->Count.Set(context->ParseExpression(WideString(count)));
      if (!offset.empty()) top->StartAt.Set(context->ParseExpression(WideString(offset)));
      extender->Top.Set(std::move(top));
    }
  }
  result->PrepareAndFixupRecursive();
  return result;
}

WideString TmvAdvantageSyntaxProvider::GetDateString(TmvDateTime value) const {
  return u"'" + FormatDateTime(u"yyyy-mm-dd", value) + u"'";
}

WideString TmvAdvantageSyntaxProvider::GetDateTimeString(TmvDateTime value) const {
  return u"'" + FormatDateTime(u"yyyy-mm-dd hh:nn:ss", value) + u"'";
}

WideString TmvAdvantageSyntaxProvider::GetTimeString(TmvDateTime value) const {
  return u"'" + FormatDateTime(u"hh:nn:ss", value) + u"'";
}

WideString TmvAdvantageSyntaxProvider::GetDate(const TSQLExpressionItem* expression) const {
  return StringValue(expression);
}

WideString TmvAdvantageSyntaxProvider::GetTime(const TSQLExpressionItem* expression) const {
  return StringValue(expression);
}

WideString TmvAdvantageSyntaxProvider::GetDateTime(const TSQLExpressionItem* expression) const {
  return StringValue(expression);
}

bool TmvAdvantageSyntaxProvider::IsValidIdent(WideStringView text) const {
  return text.empty() || text.front() != u'[';
}

TmvSyntaxSupportConectedServer TmvAdvantageSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* /*owner*/) const {
  return IsConnectedServerIsAdvantage(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
}

TmvOwned<TSQLQualifiedName> TmvAdvantageSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                               TmvConnection* connection) {
  if (auto name = GetDefaultDatabaseNameAdvantage(context, connection)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvAdvantageSyntaxProvider::GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                                  std::vector<WideString>& list) {
  if (!GetDatabasesListAdvantage(context, connection, list))
    TmvMatrixSyntaxProvider::GetDatabasesList(context, connection, list);
}

void TmvAdvantageSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                     const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsAdvantage(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvAdvantageSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                       TmvMetadataContainer* container,
                                                       const TmvMetadataFilter* filter,
                                                       const TSQLQualifiedName* database) {
  if (!LoadMetadataRelationsAdvantage(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvAdvantageSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                               TmvMetadataObject* object) {
  LoadFieldsForObjectAdvantage(context, connection, object);
}

}  // namespace mv
