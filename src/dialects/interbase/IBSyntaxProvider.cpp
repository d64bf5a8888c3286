#include "dialects/interbase/IBSyntaxProvider.h"

#include "IBPars.h"
#include "IBScan.h"
#include "dialects/interbase/IBCatalog.h"
#include "dialects/interbase/IBNodes.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvIBSyntaxProvider, TmvBaseSyntaxProvider)

namespace {

// The text of a node through the context's builder for server expressions.
WideString ServerText(const TastNode* node) {
  if (!node || !node->SQLContext()) return {};
  return const_cast<TastNode*>(node)->SimpleSQL(node->SQLContext()->SQLBuilderExpressionForServer());
}

// A limit text as an expression; text that does not read as one raises,
// naming it and the parser's reason.
TmvOwned<TSQLExpressionItem> LimitExpression(TmvBaseSQLContext* context, const WideString& text, const char16_t* what) {
  TmvErrorList errors;
  if (auto expression = context->ParseExpression(text, &errors)) return expression;
  WideString message = WideString(u"The ") + what + u" \"" + text + u"\" is not an expression";
  if (!errors.empty()) message += u": " + errors.front();
  throw EmvQueryBuilderError(message);
}

// The value of a whole number of up to 18 digits; false for anything else.
bool WholeNumber(const WideString& text, int64_t& value) {
  value = 0;
  if (text.empty() || text.size() > 18) return false;
  for (char16_t c : text) {
    if (c < u'0' || c > u'9') return false;
    value = value * 10 + (c - u'0');
  }
  return true;
}

// left + right, as the parts' server texts; false for another shape.
bool SumParts(const TSQLExpressionItem* node, WideString& left, WideString& right) {
  auto* sum = TmvCast<TSQLExpressionOperatorBinary>(node);
  if (!sum || !sum->Operator || sum->Operator->Text != u"+") return false;
  left = ServerText(sum->Expression.get());
  right = ServerText(sum->Right.get());
  return true;
}

}  // namespace

TmvIBSyntaxProvider::TmvIBSyntaxProvider() : TmvMatrixSyntaxProvider("TmvIBSyntaxProvider") {
  RegisterExtender(TSQLSelectStatement::StaticClass(), TIBSQLSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(), TIBSQLSubQuerySelectExpressionExtender::StaticClass());
}

void TmvIBSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_IBNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
}

const TmvScannerClass& TmvIBSyntaxProvider::GetScannerClass() const { return IBScanner::ScannerClass(); }

const TmvParserClass& TmvIBSyntaxProvider::GetParserClass() const { return IBParser::ParserClass(); }

void TmvIBSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  parser.DenyIntoClause = GetDenyIntoClause();
}

std::vector<int32_t> TmvIBSyntaxProvider::GetStringTokenIds() const { return {IBScanner::tkStringToken}; }

void TmvIBSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const { list.Clear(); }

bool TmvIBSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  // "chararacter" is spelled so: the list of the family has it that way.
  for (const char16_t* sized : {u"char", u"character", u"nchar", u"national char", u"national chararacter",
                                u"varchar", u"char varying", u"character varying"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

// --- Limits ---

bool TmvIBSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                         WideString& count) const {
  offset.clear();
  count.clear();
  auto* extender = IBExtenderOf<TIBSQLSelectStatementExtender>(statement);
  TSQLSubQueryRowsClause* rows = extender ? extender->Rows.get() : nullptr;
  if (!rows || rows->Percent || !rows->Low) return false;
  if (!rows->High) {
    count = ServerText(rows->Low.get());
    return true;
  }
  WideString lowLeft, lowRight, highLeft, highRight;
  if (SumParts(rows->Low.get(), lowLeft, lowRight) && lowRight == u"1" &&
      SumParts(rows->High.get(), highLeft, highRight) && highLeft == lowLeft) {
    offset = lowLeft;
    count = highRight;
    return true;
  }
  int64_t low = 0, high = 0;
  if (WholeNumber(ServerText(rows->Low.get()), low) && WholeNumber(ServerText(rows->High.get()), high) &&
      low >= 1 && high >= low) {
    offset = low > 1 ? IntToWide(low - 1) : WideString();
    count = IntToWide(high - low + 1);
    return true;
  }
  return false;
}

TmvOwned<TSQLSubSelectStatement> TmvIBSyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                          WideStringView offset,
                                                                          WideStringView count) const {
  if (!statement) return nullptr;
  if (!offset.empty() && count.empty())
    throw EmvQueryBuilderError(u"InterBase cannot skip rows without a row count: ROWS needs the count");
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  // ROWS stands on the whole statement, a union's too; the dialect has no
  // derived tables that a wrapper could stand in.
  auto* extender = IBExtenderOf<TIBSQLSelectStatementExtender>(result.get());
  if (!extender) throw EmvQueryBuilderError(u"ROWS stands only on a whole statement of the InterBase syntax provider");
  extender->Rows.Reset();
  if (!count.empty()) {
    auto rows = TastCreate<TSQLSubQueryRowsClause>(context);
    if (offset.empty()) {
      rows->Low.Set(LimitExpression(context, WideString(count), u"row count"));
    } else {
      const WideString offsetText(offset);
      rows->Low.Set(LimitExpression(context, offsetText + u" + 1", u"row offset"));
      rows->High.Set(LimitExpression(context, offsetText + u" + " + WideString(count), u"row count"));
    }
    extender->Rows.Set(std::move(rows));
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- The server's catalog ---

TmvSyntaxSupportConectedServer TmvIBSyntaxProvider::IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                                             TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsInterbase(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  if (answer == scsDontKnow) return TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner);
  return answer == scsSupport ? scsMaybeSupport : answer;
}

void TmvIBSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                              TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                              const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsInterbase(context, connection, container, filter))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvIBSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                        TmvMetadataObject* object) {
  if (!LoadFieldsForObjectInterbase(context, connection, object))
    TmvMatrixSyntaxProvider::LoadFieldsForObjectFromServer(context, connection, object);
}

// --- end of the server's catalog ---

}  // namespace mv
