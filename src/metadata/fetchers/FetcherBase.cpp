#include "metadata/fetchers/FetcherBase.h"

#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataProvider.h"
#include "metadata/dataset/DataSet.h"
#include "metadata/fetchers/CatalogSteps.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"

namespace mv {

TmvBaseMetadataFetcher::TmvBaseMetadataFetcher(TmvBaseSQLContext* context, TmvConnection* connection)
    : context_(context), connection_(connection) {}

TmvBaseMetadataFetcher::~TmvBaseMetadataFetcher() = default;

WideString TmvBaseMetadataFetcher::TrimName(WideStringView text) const {
  WideString result(text);
  if (trimSpaces_) result = WideTrim(result);
  if (trimQuotes_ && !result.empty() && result[0] == u'"') result = ExtractQuotedIdentifier(result, u"\"", u"\"");
  return result;
}

TmvBaseSyntaxProvider& TmvBaseMetadataFetcher::SyntaxProvider() const {
  TmvBaseSyntaxProvider* provider = context_ ? context_->SyntaxProvider() : nullptr;
  if (!provider) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
  return *provider;
}

TmvBaseMetadataProvider& TmvBaseMetadataFetcher::MetadataProvider() const {
  TmvBaseMetadataProvider* provider = context_ ? context_->MetadataProvider() : nullptr;
  if (!provider) throw EmvQueryBuilderError(MetadataMessage(mvQBNoMetadataProvider));
  return *provider;
}

bool TmvBaseMetadataFetcher::IsIdentifiersCaseSensitive() const {
  return SyntaxProvider().IsIdentifiersCaseSensitive();
}

void TmvBaseMetadataFetcher::SetCatalogIdentifier(TastTokenIdentifier& token, WideStringView text) const {
  token.SetToken(text);
  token.Quoted = IsIdentifiersCaseSensitive();
}

void TmvBaseMetadataFetcher::SetCatalogName(TSQLQualifiedName& name, WideStringView text) const {
  name.Clear();
  if (!text.empty()) name.AddName(text, IsIdentifiersCaseSensitive());
}

const TmvLogHelper& TmvBaseMetadataFetcher::Log() const {
  static const TmvLogHelper silent;
  TmvBaseMetadataProvider* provider = context_ ? context_->MetadataProvider() : nullptr;
  return provider ? provider->Log() : silent;
}

void TmvBaseMetadataFetcher::CheckCanExecSQL() const {
  if (!MetadataProvider().GetCanExecSQL())
    throw EmvQueryBuilderError(MetadataMessage(mvQBMetadataProviderCantExecSQL));
}

std::unique_ptr<TmvDataSet> TmvBaseMetadataFetcher::OpenCatalogQuery(WideStringView sql,
                                                                     const TmvParams* params) const {
  CheckCanExecSQL();
  return MetadataProvider().ExecSQLDatasetUR(connection_, sql, params);
}

TmvField* FindCatalogColumn(const TmvDataSet* dataset, WideStringView name) {
  if (name.empty() || !dataset) return nullptr;
  return dataset->FindField(name);
}

TmvField& RequireCatalogColumn(const TmvDataSet* dataset, WideStringView name) {
  if (!dataset) throw EmvQueryBuilderError(WideString(name), WideFormat(u"Field '%s' not found", {name}));
  return dataset->FieldByName(name);
}

void OpenCatalogDataset(TmvDataSet* dataset) {
  if (dataset && !dataset->Active()) dataset->Open();
}

void FirstCatalogRow(TmvDataSet* dataset) {
  if (dataset && dataset->Active()) dataset->First();
}

bool IsCatalogWalkOver(const TmvDataSet* dataset) { return !dataset || dataset->IsEmpty() || dataset->Eof(); }

TmvVariant CatalogValue(const TmvField* column) { return column ? column->AsVariant() : TmvVariant(); }

WideString CatalogText(const TmvField* column) { return column ? column->AsWideString() : WideString(); }

TmvBaseMetadataProvider* CatalogSqlProvider(TmvBaseSQLContext* context) {
  TmvBaseMetadataProvider* provider = context ? context->MetadataProvider() : nullptr;
  return provider && provider->GetCanExecSQL() ? provider : nullptr;
}

WideString FirstCatalogValue(TmvBaseMetadataProvider& provider, TmvConnection* connection, WideStringView sql,
                             WideStringView column) {
  auto dataset = provider.ExecSQLDatasetUR(connection, sql, nullptr);
  if (!dataset || dataset->Eof()) return {};
  TmvField* field = column.empty() ? nullptr : dataset->FindField(column);
  return field ? field->AsWideString() : WideString();
}

TmvOwned<TSQLQualifiedName> CatalogNameFromQuery(TmvBaseSQLContext* context, TmvConnection* connection,
                                                 WideStringView sql, WideStringView column) {
  TmvBaseMetadataProvider* provider = CatalogSqlProvider(context);
  if (!provider) return nullptr;
  WideString name;
  try {
    name = provider->TrimName(FirstCatalogValue(*provider, connection, sql, column));
  } catch (const Exception&) {
    return nullptr;
  }
  return OnePartCatalogName(context, name);
}

}  // namespace mv
