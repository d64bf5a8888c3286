#include "MetadataSource.h"

#include "frontend/SQLContext.h"
#include "metadata/dataset/SQLiteCatalog.h"

namespace mvsql {

MetadataSource::MetadataSource(mv::TmvBaseSQLContext& context)
    : context_(context), container_(mv::TmvCreate<mv::TmvMetadataContainer>(nullptr, &context)) {
  context_.SetMetadataContainer(container_.get());
}

MetadataSource::~MetadataSource() {
  context_.SetMetadataContainer(nullptr);
  container_.reset();
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
  mv::LoadSQLiteCatalog(&context_, container_.get());
  container_->SetWorkOffline(true);
}

}  // namespace mvsql
