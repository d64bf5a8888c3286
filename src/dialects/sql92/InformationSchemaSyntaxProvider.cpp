#include "dialects/sql92/InformationSchemaSyntaxProvider.h"

#include "metadata/fetchers/InformationSchemaCatalog.h"
#include "tree/QualifiedNames.h"

namespace mv {

TmvOwned<TSQLQualifiedName> TmvInformationSchemaSyntaxProvider::GetDefaultDatabaseName(TmvBaseSQLContext* context,
                                                                   TmvConnection* connection) {
  if (useInformationSchema_)
    if (auto name = GetDefaultDatabaseNameSQL92(context, connection)) return name;
  return TmvMatrixSyntaxProvider::GetDefaultDatabaseName(context, connection);
}

void TmvInformationSchemaSyntaxProvider::LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                              TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                              const TSQLQualifiedName* database) {
  if (!useInformationSchema_ || !LoadMetadataObjectsSQL92(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataObjects(context, connection, container, filter, database);
}

void TmvInformationSchemaSyntaxProvider::LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                                const TSQLQualifiedName* database) {
  if (!useInformationSchema_ || !LoadMetadataRelationsSQL92(context, connection, container, filter, database))
    TmvMatrixSyntaxProvider::LoadMetadataRelations(context, connection, container, filter, database);
}

void TmvInformationSchemaSyntaxProvider::LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                        TmvMetadataObject* object) {
  if (!useInformationSchema_ || !LoadFieldsForObjectSQL92(context, connection, object))
    TmvMatrixSyntaxProvider::LoadFieldsForObjectFromServer(context, connection, object);
}

}  // namespace mv
