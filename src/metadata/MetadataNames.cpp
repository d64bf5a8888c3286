#include "metadata/MetadataNames.h"

#include "frontend/SQLContext.h"
#include "metadata/MetadataMessages.h"
#include "support/Exceptions.h"

namespace mv {

void AssignIdentifier(TastTokenIdentifier& target, const TastToken* source) {
  if (source == &target) return;
  if (!source) {
    target.Clear();
  } else if (const auto* id = TmvCast<TastTokenIdentifier>(source)) {
    target.Assign(*id);
  } else {
    target.SetToken(source->Token);
    target.Quoted = false;
  }
}

void AssignQualifiedName(TSQLQualifiedName& target, const TSQLQualifiedName* source) {
  if (source == &target) return;
  target.Clear();
  if (!source) return;
  target.AddName(source);
  if (source->DatabaseLink)
    target.DatabaseLink.Set(source->DatabaseLink->CloneAs<TSQLQualifiedName>(target.SQLContext()));
}

void BuildFullName(TSQLQualifiedName& target, const TastTokenIdentifier* name, const TastTokenIdentifier* schema,
                   const TSQLQualifiedName* database) {
  target.Clear();
  if (database) target.AddName(database);
  if (!IsIdentifierEmpty(schema)) target.AddName(schema->CloneAs<TastToken>(target.SQLContext()));
  if (name) target.AddName(name->CloneAs<TastToken>(target.SQLContext()));
}

void SplitFullName(TmvBaseSQLContext* context, const TSQLQualifiedName* fullName, TastTokenIdentifier& name,
                   TastTokenIdentifier& schema, TSQLQualifiedName& database) {
  if (IsQualifiedNameEmpty(fullName)) {
    name.Clear();
    schema.Clear();
    database.Clear();
    return;
  }
  if (!context) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
  AssignIdentifier(name, context->ExtractNameFromFullName(fullName).get());
  AssignIdentifier(schema, context->ExtractSchemaFromFullName(fullName).get());
  AssignQualifiedName(database, context->ExtractDatabaseFromFullName(fullName).get());
}

WideString TokenSQL(const TastToken* token) {
  if (!token) return {};
  TmvBaseSQLContext* context = token->SQLContext();
  if (!context) return token->Token;
  return const_cast<TastToken*>(token)->SimpleSQL(context->SQLBuilderExpression());
}

TmvOwned<TSQLQualifiedName> ParseNameOrNull(TmvBaseSQLContext* context, WideStringView text) {
  return context ? context->ParseQualifiedNameQuoteIfNeed(WideString(text)) : nullptr;
}

TmvOwned<TSQLQualifiedName> ParseName(TmvBaseSQLContext* context, WideStringView text) {
  TmvOwned<TSQLQualifiedName> name = ParseNameOrNull(context, text);
  if (!name) throw EmvQueryBuilderError(MetadataMessage(mvQBBadObjectName));
  return name;
}

TmvOwned<TSQLQualifiedName> ParseOptionalName(TmvBaseSQLContext* context, WideStringView text) {
  return text.empty() ? nullptr : ParseName(context, text);
}

}  // namespace mv
