#include "dialects/db2/DB2SyntaxProvider.h"

#include "DB2Pars.h"
#include "DB2Scan.h"
#include "dialects/db2/DB2Catalog.h"
#include "dialects/db2/DB2CatalogQueries.h"
#include "dialects/db2/DB2Nodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "tree/NodeRegistry.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvDB2SyntaxProvider, TmvBaseSyntaxProvider)

const char* const kDB2Keywords =
    "avg corr correlation count count_big covar covariance grouping max min xmlagg regr_avgx regr_avgy "
    "regr_count regr_intercept regr_icpt regr_r2 regr_slope regr_sxx regr_sxy regr_syy stddev sum var "
    "variance activate add after alias all allocate allow alter and any as asensitive associate asutime at "
    "attributes audit authorization aux auxiliary before begin between binary bufferpool by cache call called "
    "capture cardinality cascaded case cast ccsid char character check close cluster collection collid column "
    "comment commit concat condition connect connection constraint contains continue create cross current "
    "current_date current_lc_ctype current_path current_schema current_server current_time current_timestamp "
    "current_timezone current_user cursor cycle data database datapartitionname datapartitionnum date day "
    "days db2general db2genrl db2sql dbinfo dbpartitionname dbpartitionnum deallocate declare default "
    "defaults definition delete dense_rank denserank describe descriptor deterministic diagnostics disable "
    "disallow disconnect distinct do double drop dssize dynamic each editproc else elseif enable encoding "
    "encryption end ending erase escape every except exception excluding exclusive execute exists exit "
    "explain external extract fenced fetch fieldproc file final for foreign free from full function general "
    "generated get global go goto grant graphic group handler hash hashed_value having hint hold hour hours "
    "identity if immediate in including inclusive increment index indicator inherit inner inout insensitive "
    "insert integrity intersect into is isobid isolation iterate jar java join key label language lateral "
    "lc_ctype leave left like linktype local localdate locale localtime localtimestamp locator locators lock "
    "lockmax locksize long loop maintained materialized maxvalue microsecond microseconds minute minutes "
    "minvalue mode modifies month months new new_table nextval no nocache nocycle nodename nodenumber "
    "nomaxvalue nominvalue none noorder normalized not null nulls numparts obid of old old_table on open "
    "optimization optimize option or order out outer over overriding package padded pagesize parameter part "
    "partition partitioned partitioning partitions password path piecesize plan position precision prepare "
    "prevval primary priqty privileges procedure program psid query queryno range rank read reads recovery "
    "references referencing refresh release rename repeat reset resignal restart restrict result "
    "result_set_locator return returns revoke right rollback routine row row_number rownumber rows rowset rrn "
    "run savepoint schema scratchpad scroll search second seconds secqty security select sensitive sequence "
    "session session_user set signal simple some source specific sql sqlid stacked standard start starting "
    "statement static stay stogroup stores style substring summary synonym system system_user table "
    "tablespace then time timestamp to transaction trigger trim type undo union unique until update usage "
    "user using validproc value values variable variant vcat version view volatile volumes when whenever "
    "where while with without wlm write xmlelement year years abs are array asymmetric atomic bigint blob "
    "boolean both ceil ceiling char_length character_length clob coalesce collate collect convert "
    "corresponding covar_pop covar_samp cube cume_dist current_default_transform_group current_role "
    "current_transform_group_for_type dec decimal deref element exec exp false filter float floor fusion int "
    "integer intersection interval large leading ln lower match member merge method mod module multiset "
    "national natural nchar nclob normalize nullif numeric octet_length only overlaps overlay percent_rank "
    "percentile_cont percentile_disc power real recursive ref rollup scope similar smallint specifictype "
    "sqlexception sqlstate sqlwarning sqrt stddev_pop stddev_samp submultiset symmetric tablesample "
    "timezone_hour timezone_minute trailing translate translation treat true uescape unknown unnest upper "
    "var_pop var_samp varchar varying width_bucket window within rr rs cs ur use keep share locks asc desc "
    "first last federated sqlcode bernoulli repeatable bit zone client_acctng client_applname client_userid "
    "client_wrkstnname transform degree snapshot asynchrony implicit xmlparse timeout types age server "
    "timezone client acctng applname userid wrkstnname";
namespace {

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

// The text of a node through the context's builder for server expressions.
WideString ServerText(const TastNode* node) {
  if (!node || !node->SQLContext()) return {};
  return const_cast<TastNode*>(node)->SimpleSQL(node->SQLContext()->SQLBuilderExpressionForServer());
}

// The expression (or with `condition` the condition) of a limit text; one
// that does not read raises.
TmvOwned<TSQLExpressionItem> LimitExpression(TmvBaseSQLContext* context, const WideString& text,
                                             bool condition = false) {
  TmvErrorList errors;
  auto expression = condition ? context->ParseLogicalExpression(text, true, false, &errors)
                              : context->ParseExpression(text, &errors);
  if (!expression)
    throw EmvSQLError(u"Invalid row limit \"" + text + u"\"" + (errors.empty() ? WideString() : u"\r\n" + errors[0]),
                      nullptr);
  return expression;
}

}  // namespace

TmvDB2SyntaxProvider::TmvDB2SyntaxProvider() : TmvMatrixSyntaxProvider("TmvDB2SyntaxProvider") {
  RegisterExtender(TSQLSelectStatement::StaticClass(), TDB2SQLSelectStatementExtender::StaticClass());
  RegisterExtender(TSQLFromObject::StaticClass(), TDB2SQLFromObjectExtender::StaticClass());
  RegisterExtender(TSQLFromQuery::StaticClass(), TDB2SQLFromQueryExtender::StaticClass());
}

void TmvDB2SyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_DB2Nodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kDB2Keywords);
}

void TmvDB2SyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvDB2SyntaxProvider>(source)) {
    namingConvention_ = other->namingConvention_;
    useQSYS2_ = other->useQSYS2_;
  }
}

const TmvScannerClass& TmvDB2SyntaxProvider::GetScannerClass() const { return DB2Scanner::ScannerClass(); }

const TmvParserClass& TmvDB2SyntaxProvider::GetParserClass() const { return DB2Parser::ParserClass(); }

std::vector<int32_t> TmvDB2SyntaxProvider::GetStringTokenIds() const {
  return {DB2Scanner::tkStringToken, DB2Scanner::tkNationalStringToken, DB2Scanner::tkHexStringToken,
          DB2Scanner::tkGraphicStringToken};
}

int TmvDB2SyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  return setting == TmvCapabilitySetting::NamingConvention ? namingConvention_ : 0;
}

void TmvDB2SyntaxProvider::SetNamingConvention(TmvDb2NamingConventions value) {
  if (value == namingConvention_) return;
  namingConvention_ = value;
  SendNotifications();
}

bool TmvDB2SyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  for (const char16_t* sized : {u"char", u"character", u"varchar", u"graphic", u"vargraphic"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

WideString TmvDB2SyntaxProvider::CreateWrapperForStoredProc(WideStringView call) const {
  return u"TABLE(" + WideString(call) + u")";
}

void TmvDB2SyntaxProvider::BeginBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) const {
  builder.WriteKeyword(u"Table");
  builder.WriteSymbol(u"(");
}

void TmvDB2SyntaxProvider::EndBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) const {
  builder.WriteSymbol(u")");
}

TmvSyntaxSupportConectedServer TmvDB2SyntaxProvider::IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                                             TmvObject* owner) const {
  if (!metadataProvider || !metadataProvider->GetCanExecSQL())
    return TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner);
  try {
    auto dataset = metadataProvider->ExecSQLDatasetUR(metadataProvider->Connection(), kDB2ProbeQuery, nullptr);
    return dataset && !dataset->Eof() ? scsSupport : scsNotSupport;
  } catch (const Exception&) {
    return scsNotSupport;
  }
}

TmvOwned<TSQLQualifiedName> TmvDB2SyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                         TmvConnection* connection) {
  if (auto name = CatalogNameFromQuery(context, connection, kDB2DefaultDatabaseQuery, u"CATALOG_NAME")) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvDB2SyntaxProvider::GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 TSQLIdentifiersCollection& names) {
  auto schema = CatalogNameFromQuery(context, connection, kDB2DefaultSchemaQuery, u"DEF_SCHEMA");
  if (!schema) {
    TmvMatrixSyntaxProvider::GetDefaultSchemaNames(context, connection, names);
    return;
  }
  const WideString text = schema->GetQualifiedNameWithoutQuotes();
  if (!names.ContainsSameIdStr(text)) names.AddIdentifier(text);
}

void TmvDB2SyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                          std::vector<WideString>& list, const TSQLQualifiedName* database) {
  if (!LoadCatalogSchemasList(context, connection, kDB2SchemasQuery, u"NAME", list))
    TmvMatrixSyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvDB2SyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                               TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                               const TSQLQualifiedName* database) {
  bool loaded = false;
  if (DB2TableExists(context, connection, u"SYSIBM.SYSTABLES")) {
    useQSYS2_ = false;
    loaded = LoadMetadataObjectsDB2(context, connection, container, filter, database, false);
  } else if (DB2TableExists(context, connection, u"QSYS2.SYSTABLES")) {
    useQSYS2_ = true;
    loaded = LoadMetadataObjectsDB2(context, connection, container, filter, database, true);
  }
  if (!loaded) TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvDB2SyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                 const TSQLQualifiedName* database) {
  if (!LoadMetadataRelationsDB2(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvDB2SyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                         TmvMetadataObject* object) {
  LoadFieldsForObjectDB2(context, connection, object, useQSYS2_);
}

// --- Limits ---

bool TmvDB2SyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                          WideString& count) const {
  offset.clear();
  count.clear();
  TSQLSubQuerySelectExpression* select = OnlySelect(statement);
  if (!select || !select->FetchFirst || !select->FetchFirst->Count) return false;
  count = ServerText(select->FetchFirst->Count.get());
  return true;
}

TmvOwned<TSQLSubSelectStatement> TmvDB2SyntaxProvider::TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                            WideStringView offset,
                                                                            WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  if (!OnlySelect(result.get())) {
    ExpandQueryColumns(result.get());
    result = WrapQuery(std::move(result));
    result->PrepareAndFixupRecursive();
  }
  TSQLSubQuerySelectExpression* select = OnlySelect(result.get());
  select->FetchFirst.Reset();
  const WideString offsetText(offset), countText(count);
  if (!offsetText.empty()) {
    // Row numbers counted on the outer level; the column leaves the outer list.
    select->SelectItems->Add(context->ParseSelectItem(u"ROW_NUMBER() OVER () as RNColumn"));
    result = WrapQuery(std::move(result));
    TSQLSubQuerySelectExpression* outer = OnlySelect(result.get());
    auto where = TastCreate<TSQLExpressionAnd>(context);
    where->Add(LimitExpression(context, u"(RNColumn > " + offsetText + u")", true));
    if (!countText.empty())
      where->Add(LimitExpression(context, u"(RNColumn <= " + countText + u"+" + offsetText + u")", true));
    outer->Where.Set(std::move(where));
    result->PrepareAndFixupRecursive();
    ExpandQueryColumns(outer);
    if (outer->SelectItems->GetCount() > 1) outer->SelectItems->Delete(outer->SelectItems->GetCount() - 1);
  } else if (!countText.empty()) {
    auto fetch = TastCreate<TSQLFetchFirstClause>(context);
    fetch->Count.Set(LimitExpression(context, countText));
    select->FetchFirst.Set(std::move(fetch));
  }
  result->PrepareAndFixupRecursive();
  return result;
}

}  // namespace mv
