#include "metadata/MetadataNames.h"

#include "frontend/SQLContext.h"

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

WideString TokenSQL(const TastToken* token) {
  if (!token) return {};
  TmvBaseSQLContext* context = token->SQLContext();
  if (!context) return token->Token;
  return const_cast<TastToken*>(token)->SimpleSQL(context->SQLBuilderExpression());
}

}  // namespace mv
