// The text that tells what a name of a fixed-up tree refers to.
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "metadata/QueryFixup.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"

namespace mv {

namespace {

std::string Quoted(const WideString& text) { return "\"" + UTF8Encode(text) + "\""; }

// How a source is named in the query: its alias, else its object's name.
std::string SourceName(const TSQLFromSource* source) {
  if (source->Alias && source->Alias->Name) return Quoted(source->Alias->Name->Token);
  if (const auto* object = TmvCast<TSQLFromObject>(source); object && object->Object)
    return Quoted(object->Object->GetQualifiedName());
  if (const auto* function = TmvCast<TSQLFromFunction>(source); function && function->Name)
    return Quoted(function->Name->GetQualifiedName());
  return "(unnamed source)";
}

std::string DescribeColumn(const TSQLObjectColumn* column) {
  const TSQLFromSource* source = column->FromSource;
  if (!source) return " -> not bound";
  const TmvMetadataField* field = column->GetMetadataField();
  const TmvMetadataObject* object = source->GetMetadataObject();
  if (field && object)
    return " -> field " + Quoted(field->NameStrNotQuoted()) + " of " + Quoted(object->FullNameStrNotQuoted()) +
           " (source " + SourceName(source) + ")";
  const std::string name = column->GetCount() > 0 ? Quoted(column->Token(0)->Token) : "\"\"";
  if (source->SQLContext()->SyntaxProvider()->FindFieldInFieldsList(column, source->FieldsList()) >= 0)
    return " -> column " + name + " of " + SourceName(source);
  return " -> source " + SourceName(source) + ", no such column known";
}

std::string DescribeObjectName(const TSQLDatabaseObject* name) {
  const TSQLFromSource* source = name->FromSource;
  if (!source) return " -> not bound";
  if (!name->IsOwnNameOfSource()) return " -> source " + SourceName(source);
  if (const auto* object = TmvCast<TSQLFromObject>(source); object && object->WithItem && object->WithItem->Name)
    return " -> with item " + Quoted(object->WithItem->Name->Token);
  if (const TmvMetadataObject* object = source->GetMetadataObject())
    return " -> object " + Quoted(object->FullNameStrNotQuoted());
  return " -> not bound";
}

}  // namespace

std::string DescribeBinding(const TastNodeBase* node) {
  if (const auto* column = TmvCast<TSQLObjectColumn>(node)) return DescribeColumn(column);
  if (const auto* name = TmvCast<TSQLDatabaseObject>(node)) return DescribeObjectName(name);
  return {};
}

}  // namespace mv
