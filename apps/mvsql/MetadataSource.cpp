#include "MetadataSource.h"

#include "dialects/firebird/FirebirdCatalog.h"
#include "dialects/mysql/MySQLCatalog.h"
#include "dialects/pgsql/PGSQLCatalog.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/dataset/FirebirdConnection.h"
#include "metadata/dataset/MariaDbConnection.h"
#include "metadata/dataset/PostgresConnection.h"
#include "metadata/dataset/SQLiteCatalog.h"
#include "metadata/dataset/SQLiteConnection.h"
#include "support/Exceptions.h"
#include "tree/QualifiedNames.h"

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

void MetadataSource::LoadMySQL(const std::string& uri) {
  auto connection = std::make_unique<mv::TmvMariaDbConnection>(mv::UTF8Decode(uri));
  connection->Open();  // a server that is down or refuses the login stops here, named
  const mv::WideString server = connection->ServerText();
  const bool oneDatabase = !connection->Database().empty();
  connection_ = std::move(connection);
  provider_.SetConnection(connection_.get());
  context_.SetMetadataProvider(&provider_);
  if (auto* automatic = dynamic_cast<mv::TmvAutoSyntaxProvider*>(context_.SyntaxProvider()))
    automatic->DetectSyntaxProvider(&context_, nullptr);

  mv::TmvConnection* reader = connection_.get();
  const mv::WideString refused = u"The " + server + u" refused the catalog queries (information_schema)";
  if (oneDatabase) {
    if (!mv::LoadMetadataObjectsMySQL(&context_, reader, container_, nullptr, nullptr))
      throw mv::EmvQueryBuilderError(refused);
  } else {
    std::vector<mv::WideString> databases;
    if (!mv::GetDatabasesListMySQL(&context_, reader, databases)) throw mv::EmvQueryBuilderError(refused);
    for (const mv::WideString& name : databases) {
      if (mv::WideSameText(name, u"information_schema") || mv::WideSameText(name, u"mysql") ||
          mv::WideSameText(name, u"performance_schema") || mv::WideSameText(name, u"sys"))
        continue;
      auto database = mv::TastCreate<mv::TSQLQualifiedName>(&context_);
      database->AddName(name, false);
      if (!mv::LoadMetadataObjectsMySQL(&context_, reader, container_, nullptr, database.get()))
        throw mv::EmvQueryBuilderError(refused);
    }
  }
  if (!mv::LoadMetadataRelationsMySQL(&context_, reader, container_, nullptr, nullptr))
    throw mv::EmvQueryBuilderError(refused);
  const int version = mv::CalcServerVersionMySQL(&provider_, reader);
  for (int i = 0; i < container_->Count(); ++i) {
    mv::TmvMetadataObject* object = container_->Items(i);
    if (mv::LoadFieldsForObjectMySQL(&context_, reader, object, version)) object->GetFields()->SetLoaded(true);
  }
  container_->SetLoaded(true);
  container_->SetWorkOffline(true);
}

void MetadataSource::LoadFirebird(const std::string& dsn, const std::string& user, const std::string& password) {
  auto connection = std::make_unique<mv::TmvFirebirdConnection>(mv::UTF8Decode(dsn), mv::UTF8Decode(user),
                                                                mv::UTF8Decode(password));
  connection->Open();  // a server that is down or refuses the login stops here, named
  const mv::WideString server = connection->ServerText();
  connection_ = std::move(connection);
  provider_.SetConnection(connection_.get());
  context_.SetMetadataProvider(&provider_);
  if (auto* automatic = dynamic_cast<mv::TmvAutoSyntaxProvider*>(context_.SyntaxProvider()))
    automatic->DetectSyntaxProvider(&context_, nullptr);

  mv::TmvMetadataFilter userObjects;
  for (const char16_t* mask : {u"RDB$%", u"MON$%", u"SEC$%"}) {
    mv::TmvMetadataFilterItem* item = userObjects.Add();
    item->SetObjectMask(mask);
    item->SetExclude(true);
  }
  mv::TmvConnection* reader = connection_.get();
  if (!mv::LoadMetadataObjectsFirebird(&context_, reader, container_, &userObjects) ||
      !mv::LoadMetadataRelationsFirebird(&context_, reader, container_, &userObjects))
    throw mv::EmvQueryBuilderError(u"The " + server + u" refused the catalog queries (rdb$relations)");
  for (int i = 0; i < container_->Count(); ++i) {
    mv::TmvMetadataObject* object = container_->Items(i);
    if (mv::LoadFieldsForObjectFirebird(&context_, reader, object)) object->GetFields()->SetLoaded(true);
  }
  container_->SetLoaded(true);
  container_->SetWorkOffline(true);
}

}  // namespace mvsql
