// The base of the standard providers (SQL-92, SQL-2003): metadata from the
// INFORMATION_SCHEMA views when UseInformationSchema is set, the matrix
// provider's answer otherwise or where the views give none.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvInformationSchemaSyntaxProvider : public TmvMatrixSyntaxProvider {
 public:
  using TmvMatrixSyntaxProvider::TmvMatrixSyntaxProvider;

  // While false every metadata operation is the base's.
  bool GetUseInformationSchema() const { return useInformationSchema_; }
  void SetUseInformationSchema(bool value) { useInformationSchema_ = value; }

  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

 private:
  bool useInformationSchema_ = false;
};

}  // namespace mv
