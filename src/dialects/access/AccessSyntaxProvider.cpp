#include "dialects/access/AccessSyntaxProvider.h"

#include "ACCESSPars.h"
#include "ACCESSScan.h"
#include "dialects/access/AccessNodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/FormatSettings.h"
#include "support/TextHelpers.h"
#include "tree/Expressions.h"
#include "tree/Tokens.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvMSAccessSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kMSAccessKeywords =
    "stdev stdevp var varp absolute action add admindb all allocate alphanumeric alter and any are as asc "
    "assertion at authorization autoincrement band begin between binary bit bit_length bnot bor both bxor by "
    "byte cascade cascaded case cast catalog char character char_length character_length check close coalesce "
    "collate collation column commit comp compression connect connection constraint constraints container "
    "continue convert corresponding counter create createdb cross currency current current_date current_time "
    "current_timestamp current_user cursor database date datetime day deallocate dec decimal declare default "
    "deferrable deferred delete desc describe descriptor diagnostics disallow disconnect distinct domain double "
    "drop else end escape except exception exclusiveconnect exec execute exists external extract false fetch "
    "first float float4 float8 for foreign found from full general get global go goto grant group guid having "
    "hour identity ieeedouble ieeesingle ignore image immediate in inindex indicator inheritable initially inner "
    "input insensitive insert int integer integer1 integer2 integer4 intersect interval into is isolation join "
    "key language last leading left level like local logical logical1 long longbinary longchar longtext lower "
    "match memo minute module money month names national natural nchar next no not note null nullif number "
    "numeric object octet_length ofoleobject ononly open option ororder outer output overlaps owneraccess pad "
    "parameters partial password percent pivot position precision prepare preserve primary prior privileges proc "
    "procedure public read real references relative restrict revoke right rollback rows schema scroll second "
    "section select selectschema selectsecurity session session_user set short single size smallint some space "
    "sql sqlcode sqlerror sqlstate string substring system_user table tableid temporary text then time timestamp "
    "timezone_hour timezone_minute to top trailing transaction transform translate translation trim true union "
    "unique uniqueidentifier unknown update updateidentity updateowner updatesecurity upper usage user using "
    "value values varbinary varchar varying view when whenever where with work write year yes yesno zone order "
    "distinctrow on or mod";

namespace {

const char16_t* const kMSAccessBuiltins[] = {
    u"Rank", u"All", u"BNot", u"Distinct", u"First", u"Last", u"Not", u"Abs", u"Asc", u"Atn", u"CBool",
    u"CByte", u"CCur", u"CDate", u"CDbl", u"Chr", u"ChrB", u"ChrW", u"Chr$", u"ChrB$", u"CInt", u"CLng",
    u"Cos", u"CSng", u"CStr", u"Cvar", u"CVDate", u"CVErr", u"Date", u"Date$", u"DateAdd", u"DateDiff",
    u"DatePart", u"DateSerial", u"DateValue", u"Day", u"DDB", u"Error", u"Error$", u"Exp", u"Fix", u"Format",
    u"Format$", u"FV", u"Hex", u"Hex$", u"Hour", u"IIF", u"InStr", u"Int", u"IPmt", u"IRR", u"IsDate",
    u"IsEmpty", u"IsError", u"IsNull", u"IsNumeric", u"IsObject", u"LCase", u"LCase$", u"Left", u"LeftB",
    u"Left$", u"LeftB$", u"Len", u"Log", u"LTrim", u"LTrim$", u"Mid", u"Mid$", u"Minute", u"MIRR", u"Month",
    u"Now", u"NPer", u"NPV", u"Oct", u"Oct$", u"Pmt", u"PPmt", u"PV", u"QBColor", u"Rate", u"RGB", u"Right",
    u"RightB", u"Right$", u"RightB$", u"Rnd", u"RTrim", u"RTrim$", u"Second", u"Sgn", u"Sin", u"SLN", u"Space",
    u"Space$", u"Sqr", u"Str", u"Str$", u"StrComp", u"StrConv", u"String", u"String$", u"SYD", u"Tan", u"Time",
    u"Time$", u"Timer", u"TimeSerial", u"TimeValue", u"Trim", u"Trim$", u"TypeName", u"UCase", u"UCase$",
    u"Val", u"VarType", u"Weekday", u"Year"};

constexpr const char16_t* kProbeQuery = u"select #01/01/01# as AccessDate";

// The text of a node through the context's builder for server expressions.
WideString ServerText(const TastNode* node) {
  if (!node || !node->SQLContext()) return {};
  return const_cast<TastNode*>(node)->SimpleSQL(node->SQLContext()->SQLBuilderExpressionForServer());
}

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

// The offset and fetch clauses of a statement or of its select: true when
// there is either.
bool ReadOffsetFetch(const TSQLResultOffsetClause* resultOffset, const TSQLFetchFirstClause* fetchFirst,
                     WideString& offset, WideString& count) {
  if (!resultOffset && !fetchFirst) return false;
  offset = resultOffset ? ServerText(resultOffset->Offset.get()) : WideString();
  count = fetchFirst ? ServerText(fetchFirst->Count.get()) : WideString();
  return true;
}

}  // namespace

TmvMSAccessSyntaxProvider::TmvMSAccessSyntaxProvider() : TmvMatrixSyntaxProvider("TmvMSAccessSyntaxProvider") {
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(),
                   TAccessSubQuerySelectExpressionExtender::StaticClass());
}

void TmvMSAccessSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_AccessNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kMSAccessKeywords);
}

void TmvMSAccessSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvMSAccessSyntaxProvider>(source)) {
    serverVersion_ = other->serverVersion_;
    loadQueriesWithParameters_ = other->loadQueriesWithParameters_;
    loadLinkedTables_ = other->loadLinkedTables_;
    bracketsInComplexJoinMandatory_ = other->bracketsInComplexJoinMandatory_;
  }
}

const TmvScannerClass& TmvMSAccessSyntaxProvider::GetScannerClass() const { return ACCESSScanner::ScannerClass(); }

const TmvParserClass& TmvMSAccessSyntaxProvider::GetParserClass() const { return ACCESSParser::ParserClass(); }

int32_t TmvMSAccessSyntaxProvider::LanguageLevel(TmvQBServerVersionMSAccess version) {
  return version == svMSJET3 ? 3 : 4;
}

void TmvMSAccessSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  parser.ServerVersion = LanguageLevel(serverVersion_);
  parser.DenyIntoClause = GetDenyIntoClause();
}

std::vector<int32_t> TmvMSAccessSyntaxProvider::GetStringTokenIds() const { return {ACCESSScanner::tkStringToken}; }

int TmvMSAccessSyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  switch (setting) {
    case TmvCapabilitySetting::ServerVersion: return serverVersion_;
    case TmvCapabilitySetting::BracketsInComplexJoinMandatory: return bracketsInComplexJoinMandatory_ ? 1 : 0;
    default: return 0;
  }
}

void TmvMSAccessSyntaxProvider::SetServerVersion(TmvQBServerVersionMSAccess value) {
  if (serverVersion_ == value) return;
  serverVersion_ = value;
  SendNotifications();
}

void TmvMSAccessSyntaxProvider::SetBracketsInComplexJoinMandatory(bool value) {
  if (bracketsInComplexJoinMandatory_ == value) return;
  bracketsInComplexJoinMandatory_ = value;
  SendNotifications();
}

void TmvMSAccessSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name : kMSAccessBuiltins) list.AddBuiltin(name);
}

bool TmvMSAccessSyntaxProvider::IsValidIdent(WideStringView text) const {
  if (!text.empty() && text.front() == u'[') return true;
  return text.find(u'_') == WideStringView::npos;
}

bool TmvMSAccessSyntaxProvider::IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const {
  if (!statement) return false;
  if (TmvBaseSyntaxProvider::IsQueryWithIntoClause(statement)) return true;
  auto* first = statement->GetCount() > 0 ? TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0)) : nullptr;
  auto* extender = AccessExtenderOf<TAccessSubQuerySelectExpressionExtender>(first);
  return extender && extender->IntoTable;
}

// --- Limits ---

bool TmvMSAccessSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                               WideString& count) const {
  offset.clear();
  count.clear();
  if (!statement) return false;
  if (ReadOffsetFetch(statement->ResultOffset.get(), statement->FetchFirst.get(), offset, count)) return true;
  TSQLSubQuerySelectExpression* select = OnlySelect(statement);
  if (!select) return false;
  if (ReadOffsetFetch(select->ResultOffset.get(), select->FetchFirst.get(), offset, count)) return true;
  auto* extender = AccessExtenderOf<TAccessSubQuerySelectExpressionExtender>(select);
  if (!extender || !extender->Top) return false;
  auto* rows = TmvCast<TSQLSubQueryTopRows>(extender->Top.get());
  if (rows && !TmvCast<TSQLSubQueryTopPercent>(rows)) count = ServerText(rows->Count.get());
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvMSAccessSyntaxProvider::TransformQueryLimits(
    const TSQLSubSelectStatement* statement, WideStringView, WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  if (!OnlySelect(result.get())) {
    ExpandQueryColumns(result.get());
    result = WrapQuery(std::move(result));
    result->PrepareAndFixupRecursive();
  }
  if (auto* extender = AccessExtenderOf<TAccessSubQuerySelectExpressionExtender>(OnlySelect(result.get()))) {
    extender->Top.Reset();
    if (!count.empty()) {
      if (auto value = context->ParseExpression(WideString(count))) {
        auto top = TastCreate<TSQLSubQueryTopRows>(context);
        top->Count.Set(std::move(value));
        extender->Top.Set(std::move(top));
      }
    }
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- Dates ---

WideString TmvMSAccessSyntaxProvider::GetDateString(TmvDateTime value) const {
  return u"#" + FormatDateTime(u"yyyy-mm-dd", value) + u"#";
}

WideString TmvMSAccessSyntaxProvider::GetDateTimeString(TmvDateTime value) const {
  return u"#" + FormatDateTime(TimeOf(value).value == 0 ? u"yyyy-mm-dd" : u"yyyy-mm-dd hh:nn:ss", value) + u"#";
}

WideString TmvMSAccessSyntaxProvider::GetTimeString(TmvDateTime value) const {
  return u"#" + FormatDateTime(u"hh:nn:ss", value) + u"#";
}

WideString TmvMSAccessSyntaxProvider::QuoteDateLiteral(WideStringView text) const {
  return u"#" + WideString(text) + u"#";
}

WideString TmvMSAccessSyntaxProvider::GetDateStringValue(const TSQLExpressionItem* expression) {
  while (const auto* brackets = TmvCast<TSQLExpressionBrackets>(expression)) expression = brackets->Expression.get();
  const auto* constant = TmvCast<TSQLExpressionConstant>(expression);
  if (!constant || constant->GetCount() != 1) return {};
  if (const auto* string = TmvCast<TastTokenString>(constant->Items.Item(0))) return SQLUnquoteString(string->Token);
  // A date token keeps its # characters.
  const auto* token = TmvCast<TastTokenNumber>(constant->Items.Item(0));
  if (token && token->Token.size() >= 2 && token->Token.front() == u'#' && token->Token.back() == u'#')
    return token->Token.substr(1, token->Token.size() - 2);
  return {};
}

WideString TmvMSAccessSyntaxProvider::GetDate(const TSQLExpressionItem* expression) const {
  WideString text = GetDateStringValue(expression);
  return text.empty() ? TmvBaseSyntaxProvider::GetDate(expression) : text;
}

WideString TmvMSAccessSyntaxProvider::GetTime(const TSQLExpressionItem* expression) const {
  WideString text = GetDateStringValue(expression);
  return text.empty() ? TmvBaseSyntaxProvider::GetTime(expression) : text;
}

WideString TmvMSAccessSyntaxProvider::GetDateTime(const TSQLExpressionItem* expression) const {
  WideString text = GetDateStringValue(expression);
  return text.empty() ? TmvBaseSyntaxProvider::GetDateTime(expression) : text;
}

// --- The catalog ---

TmvSyntaxSupportConectedServer IsConnectedServerIsMSAccess(TmvBaseMetadataProvider* provider,
                                                           TmvConnection* connection) {
  if (!provider || !provider->GetCanExecSQL()) return scsDontKnow;
  try {
    std::unique_ptr<TmvDataSet> probe = provider->ExecSQLDatasetUR(connection, kProbeQuery, nullptr);
    return probe && probe->FindField(u"AccessDate") ? scsSupport : scsNotSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

TmvSyntaxSupportConectedServer TmvMSAccessSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsMSAccess(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

}  // namespace mv
