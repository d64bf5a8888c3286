#include "dialects/informix/InformixSyntaxProvider.h"

#include "INFORMIXPars.h"
#include "INFORMIXScan.h"
#include "dialects/informix/InformixCatalog.h"
#include "dialects/informix/InformixCatalogQueries.h"
#include "dialects/informix/InformixNodes.h"
#include "frontend/KeywordResources.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvidersList.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "support/Exceptions.h"
#include "tree/NodeRegistry.h"
#include "tree/QualifiedNamesList.h"

namespace mv {

MV_DEFINE_SYNTAX_PROVIDER(TmvInformixSyntaxProvider, TmvBaseSyntaxProvider)

const char* const kInformixKeywords =
    "avg min max sum count range stdev variance like between in for read only update of order by asc desc "
    "union all where having select skip first limit middle distinct unique group as from cross join inner "
    "left right full outer on or and not true false is null escape exists some any rowid row set multiset "
    "list case when then else end year month day hour minute second fraction int integer smallint int8 "
    "smallfloat real text byte date boolean blob clob collection char character nchar lvarchar serial serial8 "
    "float double precision nvarchar varchar varying decimal dec numeric money interval datetime to cast "
    "extend current current_role default_role dbservername sitename today user units curval nextval";
namespace {

// The first value of the first row of a catalog statement; empty when the
// server refuses it or answers no row.
WideString FirstValue(TmvBaseMetadataProvider& provider, const char16_t* sql) {
  try {
    auto dataset = provider.ExecSQLDatasetUR(provider.Connection(), sql, nullptr);
    if (!dataset || dataset->Eof() || dataset->FieldCount() == 0) return {};
    const WideString value = dataset->Fields()[0].AsWideString();
    return value.empty() ? WideString(u" ") : value;
  } catch (const Exception&) {
    return {};
  }
}

TSQLSubQuerySelectExpression* OnlySelect(const TSQLSubSelectStatement* statement) {
  if (!statement || statement->GetCount() != 1) return nullptr;
  return TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0));
}

}  // namespace

TmvInformixSyntaxProvider::TmvInformixSyntaxProvider() : TmvMatrixSyntaxProvider("TmvInformixSyntaxProvider") {
  RegisterExtender(TSQLSubQuerySelectExpression::StaticClass(),
                   TinfSQLSubQuerySelectExpressionExtender::StaticClass());
  RegisterExtender(TSQLSelectStatement::StaticClass(), TinfSQLSelectStatementExtender::StaticClass());
  SetDetectServerVersion(true);
}

void TmvInformixSyntaxProvider::RegisterDialect() {
  static bool nodesAdded = (RegisterNodeClasses_InformixNodes(TastNodeClasses()), true);
  (void)nodesAdded;
  SyntaxProvidersList().RegisterSyntaxProvider(ProviderClass());
  RegisterKeywordResource(KeywordResourceName(ProviderClass().ClassName()), kInformixKeywords);
}

void TmvInformixSyntaxProvider::Assign(const TmvPersistent* source) {
  TmvBaseSyntaxProvider::Assign(source);
  if (auto* other = TmvCast<TmvInformixSyntaxProvider>(source)) serverVersion_ = other->serverVersion_;
}

const TmvScannerClass& TmvInformixSyntaxProvider::GetScannerClass() const {
  return INFORMIXScanner::ScannerClass();
}

const TmvParserClass& TmvInformixSyntaxProvider::GetParserClass() const { return INFORMIXParser::ParserClass(); }

std::vector<int32_t> TmvInformixSyntaxProvider::GetStringTokenIds() const {
  return {INFORMIXScanner::tkStringToken};
}

int TmvInformixSyntaxProvider::CapabilitySetting(TmvCapabilitySetting setting) const {
  return setting == TmvCapabilitySetting::ServerVersion ? serverVersion_ : 0;
}

void TmvInformixSyntaxProvider::SetServerVersion(TmvInformixVersion value) {
  if (value == serverVersion_) return;
  serverVersion_ = value;
  SendNotifications();
}

void TmvInformixSyntaxProvider::DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) {
  TmvMatrixSyntaxProvider::DoDetectServerVersion(metadataProvider, owner);
  if (!metadataProvider || !metadataProvider->GetCanExecSQL()) return;
  const WideString major = FirstValue(*metadataProvider, kInformixVersionQuery);
  int number = 0;
  for (char16_t c : major) {
    if (c < u'0' || c > u'9') break;
    number = number * 10 + (c - u'0');
  }
  SetServerVersion(VersionOfMajor(number));
}

TmvSyntaxSupportConectedServer TmvInformixSyntaxProvider::IsSupportConnectedServer(
    TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) const {
  if (!metadataProvider || !metadataProvider->GetCanExecSQL())
    return TmvMatrixSyntaxProvider::IsSupportConnectedServer(metadataProvider, owner);
  return FirstValue(*metadataProvider, kInformixProbeQuery).empty() ? scsNotSupport : scsSupport;
}

void TmvInformixSyntaxProvider::GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection,
                                               std::vector<WideString>& list, const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadCatalogSchemasList(context, connection, kInformixSchemasQuery, u"NAME", list, true))
    TmvMatrixSyntaxProvider::GetSchemasList(context, connection, list, database);
}

void TmvInformixSyntaxProvider::DetectServerVersionIfNeeded(TmvBaseSQLContext* context) {
  if (GetDetectServerVersion() && context && context->MetadataProvider())
    DoDetectServerVersion(context->MetadataProvider(), nullptr);
}

void TmvInformixSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                                    TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                    const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataObjectsInformix(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvInformixSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                      TmvMetadataContainer* container,
                                                      const TmvMetadataFilter* filter,
                                                      const TSQLQualifiedName* database) {
  DetectServerVersionIfNeeded(context);
  if (!LoadMetadataRelationsInformix(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvInformixSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                              TmvMetadataObject* object) {
  DetectServerVersionIfNeeded(context);
  LoadFieldsForObjectInformix(context, connection, object);
}

TmvInformixVersion TmvInformixSyntaxProvider::VersionOfMajor(int major) {
  switch (major) {
    case 8: return svInformixDS8;
    case 9: return svInformixDS9;
    case 10: return svInformixDS10;
    default: return svInformixDS11;
  }
}

void TmvInformixSyntaxProvider::GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const {
  list.Clear();
  for (const char16_t* name :
       {u"Abs", u"Ceil", u"Floor", u"Mod", u"Pow", u"Power", u"Root", u"Round", u"Trunc", u"SqRt", u"Exp", u"LogN",
        u"Log10", u"Cos", u"Sin", u"Tan", u"ASin", u"ACos", u"ATan", u"ATan2", u"Cardinality", u"DBInfo",
        u"Encrypt_AES", u"Encrypt_TDES", u"Decrypt_Char", u"Decrypt_Binary", u"GetHint", u"Hex", u"Length",
        u"Char_Length", u"Character_Length", u"Octet_Length", u"SecLabel_To_Char", u"SecLabel_By_Comp",
        u"SecLabel_By_Name", u"FileToBlob", u"FileToClob", u"LoToFile", u"LoCopy", u"Date", u"Day", u"Month",
        u"WeekDay", u"Year", u"Last_Day", u"Extend", u"MDY", u"Add_Months", u"Months_Between", u"Next_Day",
        u"To_Char", u"To_Date", u"To_Number", u"ASCII", u"Trim", u"LTrim", u"RTrim", u"SubString", u"SubStr",
        u"Replace", u"LPad", u"RPad", u"Upper", u"Lower", u"InitCap", u"Format_Units", u"Ifx_Allow_NewLine"})
    list.AddBuiltin(name);
}

bool TmvInformixSyntaxProvider::IsFixedSizeType(WideStringView typeName) const {
  // "national chararacter" is spelled as the type list of the dialect has it.
  for (const char16_t* sized : {u"char", u"character", u"nchar", u"national char", u"national chararacter",
                                u"nvarchar", u"varchar", u"char varying", u"character varying"})
    if (WideSameText(typeName, sized)) return false;
  return true;
}

// --- Limits ---

bool TmvInformixSyntaxProvider::LimitsOfSelect(const TSQLSubQuerySelectExpression* select, WideString& offset,
                                               WideString& count) const {
  offset.clear();
  count.clear();
  auto* extender = InformixExtenderOf<TinfSQLSubQuerySelectExpressionExtender>(select);
  if (!extender || (extender->SkipText.empty() && extender->CountText.empty())) return false;
  count = extender->CountText;
  const TastTokenKeyword* word = extender->LimitWord.get();
  if (word && (WideSameText(word->Token, u"First") || WideSameText(word->Token, u"Limit")))
    offset = extender->SkipText;
  return true;
}

bool TmvInformixSyntaxProvider::GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset,
                                               WideString& count) const {
  return LimitsOfSelect(OnlySelect(statement), offset, count);
}

TmvOwned<TSQLSubSelectStatement> TmvInformixSyntaxProvider::TransformQueryLimits(
    const TSQLSubSelectStatement* statement, WideStringView offset, WideStringView count) const {
  if (!statement) return nullptr;
  TmvBaseSQLContext* context = statement->SQLContext();
  auto result = statement->CloneAs<TSQLSubSelectStatement>(context);
  result->PrepareAndFixupRecursive();
  if (!OnlySelect(result.get())) {
    result = WrapQuery(std::move(result));
    result->PrepareAndFixupRecursive();
  }
  if (auto* extender = InformixExtenderOf<TinfSQLSubQuerySelectExpressionExtender>(OnlySelect(result.get()))) {
    extender->SkipText.clear();
    extender->LimitWord.Reset();
    extender->CountText.clear();
    extender->SkipText = WideString(offset);
    if (!count.empty()) {
      extender->LimitWord.Set(TastCreate<TastTokenKeyword>(context, u"First"));
      extender->CountText = WideString(count);
    }
  }
  result->PrepareAndFixupRecursive();
  return result;
}

}  // namespace mv
