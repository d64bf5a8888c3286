// How the syntax provider matches the names of a statement with the metadata:
// a column with a field of a list, and the prefix of a column with the name of
// the object it may belong to.
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "tree/QualifiedNames.h"

namespace mv {

int TmvBaseSyntaxProvider::FindFieldInFieldsList(const TSQLObjectColumn* column,
                                                 const TmvMetadataFieldsList* fields) const {
  if (!column || !fields) return -1;
  const TmvBaseSQLContext* context = column->SQLContext();
  for (int i = 0; i < fields->Count(); ++i)
    if (context->IsQualifiedNamesEqual(column, fields->Items(i)->Name())) return i;
  if (column->GetCount() != 1) return -1;
  const TastToken* name = column->Token(0);
  for (int i = 0; i < fields->Count(); ++i) {
    const TmvMetadataField* field = fields->Items(i);
    if (!field->AltName().empty() && context->CompareTokens(name, field->AltNameId()) == 0) return i;
  }
  return -1;
}

namespace {

bool SameToken(const TmvBaseSQLContext* context, const TastToken* a, const TastToken* b) {
  return a && b && context->CompareTokens(a, b) == 0;
}

// Whether a prefix part where the object has none is the default the object
// stands in: a default schema, or the default database (of one part).
bool IsDefaultPart(const TmvBaseSQLContext* context, const TastToken* part, bool schemaPosition) {
  const TmvMetadataContainer* container = context->MetadataContainer();
  if (!container) return false;
  if (schemaPosition) {
    const TSQLIdentifiersCollection* schemas = container->DefaultSchemaNames();
    const auto* id = TmvCast<TastTokenIdentifier>(part);
    return schemas && id && schemas->ContainsSameId(id);
  }
  const TSQLQualifiedName* database = container->DefaultDatabaseName();
  return database && database->GetCount() == 1 && SameToken(context, part, database->Token(0));
}

}  // namespace

int TmvBaseSyntaxProvider::IsColumnOfDBObject(const TSQLObjectColumn* column, const TSQLDatabaseObject* object) const {
  if (!column || !object || column->GetCount() < 2) return -1;
  const TmvBaseSQLContext* context = column->SQLContext();
  // The column's prefixes from the inside out: the object name, then (where
  // the dialect has them) the schema, then the database.
  const int prefixes = column->GetCount() - 1;
  const int schemaIndex = IsSupportSchemas() ? 1 : -1;
  const int databaseIndex = IsSupportDatabases() ? (IsSupportSchemas() ? 2 : 1) : -1;
  for (int i = 0; i < prefixes; ++i) {
    const TastToken* part = column->Token(i + 1);
    if (i < object->GetCount()) {
      if (!SameToken(context, part, object->Token(i))) return -1;
    } else if (!((i == schemaIndex && IsDefaultPart(context, part, true)) ||
                 (i == databaseIndex && IsDefaultPart(context, part, false)))) {
      return -1;
    }
  }
  return prefixes;
}

}  // namespace mv
