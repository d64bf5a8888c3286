#include "MetadataSource.h"

#include "dialects/pgsql/PGSQLCatalog.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/dataset/PostgresConnection.h"
#include "metadata/dataset/SQLiteCatalog.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/Exceptions.h"

namespace mvsql {

MetadataSource::MetadataSource(mv::TmvBaseSQLContext& context)
    : context_(context),
      ownContainer_(mv::TmvCreate<mv::TmvMetadataContainer>(nullptr, &context)),
      container_(ownContainer_.get()) {
  context_.SetMetadataContainer(container_);
}

MetadataSource::MetadataSource(mv::TmvBaseSQLContext& context, mv::TmvMetadataContainer& container)
    : context_(context), container_(&container) {}

MetadataSource::~MetadataSource() {
  if (ownContainer_) {
    context_.SetMetadataContainer(nullptr);
    ownContainer_.reset();
  }
  context_.SetMetadataProvider(nullptr);
  if (connection_) connection_->Close();
}

void MetadataSource::LoadXml(const std::string& path) {
  container_->LoadFromXMLFile(mv::UTF8Decode(path));
  container_->SetWorkOffline(true);
}

void MetadataSource::LoadSQLite(const std::string& path) {
  connection_ = std::make_unique<mv::TmvSQLiteConnection>(mv::UTF8Decode(path), mv::somReadOnly);
  provider_.SetConnection(connection_.get());
  context_.SetMetadataProvider(&provider_);
  mv::LoadSQLiteCatalog(&context_, container_);
  container_->SetWorkOffline(true);
}

void MetadataSource::LoadPostgreSQL(const std::string& connectionString) {
  auto connection = std::make_unique<mv::TmvPostgresConnection>(mv::UTF8Decode(connectionString));
  connection->Open();  // a server that is down or refuses the login stops here, named
  const mv::WideString server = connection->ServerText();
  connection_ = std::move(connection);
  provider_.SetConnection(connection_.get());
  context_.SetMetadataProvider(&provider_);
  if (auto* automatic = dynamic_cast<mv::TmvAutoSyntaxProvider*>(context_.SyntaxProvider()))
    automatic->DetectSyntaxProvider(&context_, nullptr);

  mv::TmvMetadataFilter userObjects;
  for (const char16_t* schema : {u"pg_catalog", u"information_schema", u"pg_toast"}) {
    mv::TmvMetadataFilterItem* item = userObjects.Add();
    item->SetSchemaMask(schema);
    item->SetExclude(true);
  }
  mv::TmvConnection* reader = connection_.get();
  if (!mv::LoadMetadataObjectsPostgreSQL(&context_, reader, container_, &userObjects, nullptr) ||
      !mv::LoadMetadataRelationsPostgreSQL(&context_, reader, container_, &userObjects, nullptr))
    throw mv::EmvQueryBuilderError(u"The " + server + u" refused the catalog queries (pg_catalog)");
  for (int i = 0; i < container_->Count(); ++i) {
    mv::TmvMetadataObject* object = container_->Items(i);
    if (mv::LoadFieldsForObjectPostgreSQL(&context_, reader, object)) object->GetFields()->SetLoaded(true);
  }
  mv::LoadMetadataCustomAggregateNamesPostgreSQL(&context_, reader, container_);
  container_->SetLoaded(true);
  container_->SetWorkOffline(true);
}

}  // namespace mvsql
