#include "dialects/firebird/FirebirdSyntaxProvider.h"

#include "FBPars.h"
#include "FBScan.h"
#include "dialects/firebird/FirebirdCatalog.h"
#include "dialects/firebird/FirebirdNodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvFirebirdSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kFirebirdKeywordResource = "FIREBIRDSYNTAXPROVIDER_KEYWORDS";

const char* const kFirebirdKeywords =
    "action active add admin after all alter and any as asc ascending at auto autoddl avg based basename "
    "base_name before begin between blob blobedit buffer by cache cascade cast char character "
    "character_length char_length check check_point_len check_point_length collate collation column "
    "commit committed compiletime computed close conditional connect constraint containing continue "
    "count create cstring current current_date current_time current_timestamp cursor database date day "
    "db_key debug dec decimal declare default delete desc descending describe descriptor disconnect "
    "display distinct do domain double drop echo edit else end entry_point escape event exception "
    "execute exists exit extern external extract fetch file filter float for foreign found free_it from "
    "full function gdscode generator gen_id global goto grant group group_commit_wait "
    "group_commit_wait_time having help hour if immediate in inactive index indicator init inner input "
    "input_type insert int integer into is isolation isql join key lc_messages lc_type left length lev "
    "level like logfile log_buffer_size log_buf_size long manual max maximum maximum_segment max_segment "
    "merge message min minimum minute module_name month names national natural nchar no noauto not null "
    "numeric num_log_bufs num_log_buffers octet_length of on only open option or order outer output "
    "output_type overflow page pagelength pages page_size parameter password plan position post_event "
    "precision prepare procedure protected primary privileges public quit raw_partitions rdb$db_key read "
    "real record_version references release reserv reserving restrict retain return returning_values "
    "returns revoke right role rollback runtime schema second segment select set shadow shared shell "
    "show singular size smallint snapshot some sort sqlcode sqlerror sqlwarning stability starting "
    "starts statement static statistics sub_type sum suspend table terminator then time timestamp to "
    "transaction translate translation trigger trim type uncommitted union unique update upper user "
    "using value values varchar variable varying version view wait weekday when whenever where while "
    "with work write year yearday bigint bit_length both case cross current_connection current_role "
    "current_transaction current_user insensitive leading lower recreate recursive row_count rows "
    "savepoint sensitive start trailing nulls first last skip true false similar timezone_hour "
    "timezone_minute iif substring";

namespace {

const char16_t* const kFirebirdBuiltins[] = {
    u"Abs",       u"ACos",      u"ASCII_Char", u"ASCII_Val",    u"ASin",     u"ATan",     u"ATan2",     u"Avg",
    u"As",        u"Bin_And",   u"Bin_Or",     u"Bin_Shl",      u"Bin_Shr",  u"Bin_Xor",  u"Bit_Length", u"Case",
    u"Cast",      u"Coalesce",  u"Count",      u"Ceil",         u"Ceiling",  u"Char_Length", u"Cos",    u"CosH",
    u"Cot",       u"Distinct",  u"Date",       u"Day",          u"Decimal",  u"DateAdd",  u"DateDiff",  u"Decode",
    u"Exp",       u"Extract",   u"Floor",      u"Gen_UUID",     u"Hash",     u"Hour",     u"IF",        u"IIF",
    u"IN",        u"Like",      u"Integer",    u"Left",         u"Ln",       u"Log",      u"Log10",     u"Lower",
    u"LPad",      u"Minute",    u"Month",      u"NullIF",       u"MaxValue", u"MinValue", u"Min",       u"Max",
    u"Mod",       u"Octet_Length", u"Overlay", u"Pi",           u"Position", u"Power",    u"Rand",      u"Replace",
    u"Reverse",   u"Right",     u"Round",      u"RPad",         u"Sign",     u"Sin",      u"SinH",      u"SqRt",
    u"SubString", u"Sum",       u"Second",     u"MillSecond",   u"Tan",      u"TanH",     u"Trim",      u"Trunc",
    u"Time",      u"Then",      u"Timestamp",  u"Upper",        u"VarChar",  u"Week",     u"WeekDay",   u"When",
    u"Where",     u"While",     u"Year",       u"Yearday"};

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

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

}  // namespace

TmvFirebirdSyntaxProvider::TmvFirebirdSyntaxProvider() : TmvMatrixSyntaxProvider("TmvFirebirdSyntaxProvider") {
  RegisterExtender(TSQLSubSelectStatement::StaticClass(), TFirebirdSQLSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(),
                   TFirebirdSQLSubQuerySelectExpressionExtender::StaticClass());
}

void TmvFirebirdSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_FirebirdNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(kFirebirdKeywordResource, kFirebirdKeywords);
}

void TmvFirebirdSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvFirebirdSyntaxProvider>(source)) serverVersion_ = other->serverVersion_;
}

const TmvScannerClass& TmvFirebirdSyntaxProvider::GetScannerClass() const { return FBScanner::ScannerClass(); }

const TmvParserClass& TmvFirebirdSyntaxProvider::GetParserClass() const { return FBParser::ParserClass(); }

int32_t TmvFirebirdSyntaxProvider::LanguageLevel(TmvFirebirdVersion version) {
  static constexpr int32_t kLevels[] = {10, 15, 20, 25};
  return version <= svFirebird2_5 ? kLevels[version] : kLevels[svFirebird2];
}

void TmvFirebirdSyntaxProvider::SetParserParams(TmvBaseParser& parser) const {
  TmvBaseSyntaxProvider::SetParserParams(parser);
  parser.ServerVersion = LanguageLevel(serverVersion_);
  parser.DenyIntoClause = GetDenyIntoClause();
}

std::vector<int32_t> TmvFirebirdSyntaxProvider::GetStringTokenIds() const { return {FBScanner::tkStringToken}; }

int TmvFirebirdSyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  return setting == TmvCapabilitySetting::ServerVersion ? serverVersion_ : 0;
}

void TmvFirebirdSyntaxProvider::SetServerVersion(TmvFirebirdVersion value) {
  if (serverVersion_ == value) return;
  serverVersion_ = value;
  SendNotifications();
}

void TmvFirebirdSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name : kFirebirdBuiltins) list.AddBuiltin(name);
}

bool TmvFirebirdSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  // "chararacter" is spelled so: the list of the family has it that way.
  for (const char16_t* sized : {u"char", u"character", u"nchar", u"national char", u"national chararacter",
                                u"varchar", u"char varying", u"character varying"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

// --- Limits ---

bool TmvFirebirdSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                               WideString& count) const {
  offset.clear();
  count.clear();
  auto* extender = FirebirdExtenderOf<TFirebirdSQLSubQuerySelectExpressionExtender>(OnlySelect(statement));
  if (!extender || !extender->FirstSkip) return false;
  count = ServerText(extender->FirstSkip->First.get());
  offset = ServerText(extender->FirstSkip->Skip.get());
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvFirebirdSyntaxProvider::TransformQueryLimits(
    const TSQLSubSelectStatement* statement, WideStringView offset, WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  if (!OnlySelect(result.get())) {
    ExpandQueryColumns(result.get());
    result = WrapQuery(std::move(result));
  }
  auto* extender = FirebirdExtenderOf<TFirebirdSQLSubQuerySelectExpressionExtender>(OnlySelect(result.get()));
  if (extender) {
    extender->FirstSkip.Reset();
    if (!offset.empty() || !count.empty()) {
      auto clause = TastCreate<TSQLSubQueryFirstSkipClause>(context);
      if (!count.empty()) clause->First.Set(LimitExpression(context, WideString(count), u"row count"));
      if (!offset.empty()) clause->Skip.Set(LimitExpression(context, WideString(offset), u"row offset"));
      extender->FirstSkip.Set(std::move(clause));
    }
  }
  result->PrepareAndFixupRecursive();
  return result;
}

// --- The server's catalog ---

TmvSyntaxSupportConectedServer TmvFirebirdSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  const TmvSyntaxSupportConectedServer answer =
      IsConnectedServerIsFirebird(metadataProvider, metadataProvider ? metadataProvider->Connection() : nullptr);
  return answer == scsDontKnow ? TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner) : answer;
}

void TmvFirebirdSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                    const TSQLQualifiedName* database) {
  if (!LoadMetadataObjectsFirebird(context, connection, container, filter))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvFirebirdSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                              TmvMetadataObject* object) {
  if (!LoadFieldsForObjectFirebird(context, connection, object))
    TmvMatrixSyntaxProvider::LoadFieldsForObjectFromServer(context, connection, object);
}

// --- end of the server's catalog ---

}  // namespace mv
