#include "MetadataSource.h"

#include "frontend/SQLContext.h"
#include "metadata/dataset/SQLiteCatalog.h"

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

}  // namespace mvsql
