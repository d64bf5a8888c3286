#include "tree/QualifiedNames.h"

#include <algorithm>
#include <pugixml.hpp>
#include <vector>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "tree/FromClause.h"
#include "tree/MetadataHooks.h"

namespace mv {

// --- Parts ---

void TSQLQualifiedName::AddName(TmvOwned<TastToken> token) { Insert(0, std::move(token)); }

void TSQLQualifiedName::AddName(WideStringView text, bool quoted) {
  AddName(TastCreate<TastTokenIdentifier>(SQLContext(), text, quoted));
}

void TSQLQualifiedName::AddName(WideStringView sqlText) {
  AddName(TastCreate<TastTokenIdentifier>(SQLContext(), sqlText));
}

void TSQLQualifiedName::AddName(const TSQLQualifiedName* other) {
  if (!other) return;
  for (int i = other->GetCount(); i-- > 0;)
    if (const TastToken* token = other->Token(i)) AddName(token->CloneAs<TastToken>(SQLContext()));
}

void TSQLQualifiedName::AssignParts(const TSQLQualifiedName& other) {
  if (&other == this) return;
  Clear();
  AddName(&other);
  if (other.DatabaseLink) {
    auto link = TastCreate<TSQLQualifiedName>(SQLContext());
    link->AssignParts(*other.DatabaseLink);
    DatabaseLink.Set(std::move(link));
  }
}

void TSQLQualifiedName::AddPrefix(TmvOwned<TastToken> token) { TastTokenList::Add(std::move(token)); }

void TSQLQualifiedName::AddPrefix(WideStringView text, bool quoted) {
  AddPrefix(TastCreate<TastTokenIdentifier>(SQLContext(), text, quoted));
}

void TSQLQualifiedName::AddPrefix(WideStringView sqlText) {
  AddPrefix(TastCreate<TastTokenIdentifier>(SQLContext(), sqlText));
}

void TSQLQualifiedName::AddPrefix(const TSQLQualifiedName* other) {
  if (!other) return;
  for (int i = 0; i < other->GetCount(); ++i)
    if (const TastToken* token = other->Token(i)) AddPrefix(token->CloneAs<TastToken>(SQLContext()));
}

void TSQLQualifiedName::SetQualifiedName(WideStringView sqlText) {
  if (sqlText.empty()) {
    Clear();
    return;
  }
  TmvOwned<TSQLQualifiedName> parsed = SQLContext()->ParseQualifiedNameQuoteIfNeed(WideString(sqlText));
  if (!parsed) throw Exception(MessageText(mvQBBadObjectName));
  Clear();
  // The parts and the link only: a bound name stays bound.
  TSQLQualifiedName::Assign(*parsed);
}

TmvOwned<TastToken> TSQLQualifiedName::ExtractName() { return GetCount() ? ExtractToken(0) : nullptr; }

TmvOwned<TastToken> TSQLQualifiedName::ExtractPrefix() { return GetCount() ? ExtractToken(GetCount() - 1) : nullptr; }

void TSQLQualifiedName::RemoveLastName() {
  if (GetCount()) Delete(0);
}

void TSQLQualifiedName::RemoveFirstPrefix() {
  if (GetCount()) Delete(GetCount() - 1);
}

TmvOwned<TSQLQualifiedName> TSQLQualifiedName::GetNameWithoutNames(int n) const {
  TmvOwned<TSQLQualifiedName> copy = CloneAs<TSQLQualifiedName>();
  for (int i = 0; i < n && copy->GetCount(); ++i) copy->RemoveLastName();
  return copy;
}

TmvOwned<TSQLQualifiedName> TSQLQualifiedName::GetNameWithoutPrefixes(int n) const {
  TmvOwned<TSQLQualifiedName> copy = CloneAs<TSQLQualifiedName>();
  for (int i = 0; i < n && copy->GetCount(); ++i) copy->RemoveFirstPrefix();
  return copy;
}

bool TSQLQualifiedName::StartsWith(const TSQLQualifiedName* other) const {
  if (!other || other->GetCount() > GetCount()) return false;
  for (int k = 0; k < other->GetCount(); ++k) {
    const TastToken* mine = Token(GetCount() - 1 - k);
    const TastToken* theirs = other->Token(other->GetCount() - 1 - k);
    if (!mine || !theirs || SQLContext()->CompareTokens(mine, theirs) != 0) return false;
  }
  return true;
}

void TSQLQualifiedName::Clear() {
  TastTokenList::Clear();
  DatabaseLink.Reset();
}

bool IsQualifiedNameEmpty(const TSQLQualifiedName* name) {
  for (; name; name = name->DatabaseLink.get())
    if (name->GetCount() != 0) return false;
  return true;
}

// --- Comparison ---

void TSQLQualifiedName::GetTokensToCompare(TastTokenRefs& list) const {
  // The innermost link first, then each name that links to it.
  std::vector<const TSQLQualifiedName*> chain;
  for (const TSQLQualifiedName* name = this; name; name = name->DatabaseLink.get()) chain.push_back(name);
  for (auto name = chain.rbegin(); name != chain.rend(); ++name)
    for (int i = (*name)->GetCount(); i-- > 0;)
      if (const TastToken* token = (*name)->Token(i)) list.push_back(token);
}

void TSQLQualifiedName::GetAllTokensToCompare(TastTokenRefs& list) const { GetTokensToCompare(list); }

// --- Text ---

namespace {

WideString PrintWith(const TSQLQualifiedName& name, TSQLBuilderFast& (TmvBaseSQLContext::*pick)()) {
  auto& node = const_cast<TSQLQualifiedName&>(name);
  if (TmvBaseSQLContext* context = name.SQLContext()) return node.SimpleSQL((context->*pick)());
  TSQLBuilderFast builder;
  return node.SimpleSQL(builder);
}

}  // namespace

WideString TSQLQualifiedName::GetQualifiedName() const { return PrintWith(*this, &TmvBaseSQLContext::SQLBuilderExpression); }
WideString TSQLQualifiedName::GetQualifiedNameWithQuotes() const {
  return PrintWith(*this, &TmvBaseSQLContext::SQLBuilderExpressionQuoted);
}
WideString TSQLQualifiedName::GetQualifiedNameWithoutQuotes() const {
  return PrintWith(*this, &TmvBaseSQLContext::SQLBuilderExpressionNonQuoted);
}
WideString TSQLQualifiedName::GetQualifiedNameForServer() const {
  return PrintWith(*this, &TmvBaseSQLContext::SQLBuilderExpressionForServer);
}

WideString TSQLQualifiedName::GetNonQualifiedNameNames() const {
  TSQLBuilderFast local;
  TSQLBuilder& builder = SQLContext() ? SQLContext()->SQLBuilderExpression() : local;
  auto& node = const_cast<TSQLQualifiedName&>(*this);
  builder.BeginBuild();
  node.BuildNonQualifiedNameNames(builder, builder.MainQueryFormat());
  builder.EndBuild();
  return builder.GetResult();
}

// --- Printing ---

void TSQLQualifiedName::BuildNonQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  for (int i = GetCount(); i-- > 0;) {
    GetItems(i)->BuildSQL(builder, format);
    if (i > 0) builder.WriteSymbol(u".");
  }
}

void TSQLQualifiedName::BuildQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildNonQualifiedNameNames(builder, format);
}

void TSQLQualifiedName::BuildQualifiedNameDBLink(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (IsQualifiedNameEmpty(DatabaseLink.get())) return;
  builder.WriteSymbol(u"@");
  DatabaseLink->BuildSQL(builder, format);
}

void TSQLQualifiedName::BuildQualifiedName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildQualifiedNameNames(builder, format);
  BuildQualifiedNameDBLink(builder, format);
}

void TSQLQualifiedName::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildQualifiedName(builder, format);
}

// --- XML ---

namespace {

void AppendXMLParts(const TSQLQualifiedName& name, pugi::xml_node element, const char* itemTag) {
  for (int i = 0; i < name.GetCount(); ++i) {
    const TastToken* token = name.Token(i);
    if (!token) continue;
    if (const auto* id = TmvCast<TastTokenIdentifier>(token)) {
      id->GetXMLNode(element, itemTag);
    } else {
      pugi::xml_node item = element.append_child(itemTag);
      item.append_attribute("name").set_value(UTF8Encode(token->Token).c_str());
      item.append_attribute("case_sens").set_value(XmlBoolText(false));
    }
  }
}

}  // namespace

// The link of a name is an element "dblink" inside the name's element,
// before its parts. A chain of links is written and read in a loop.
pugi::xml_node TSQLQualifiedName::GetXMLNode(pugi::xml_node parent, const char* tag, const char* itemTag) const {
  pugi::xml_node element = parent.append_child(tag);
  pugi::xml_node current = element;
  for (const TSQLQualifiedName* name = this; name;) {
    const TSQLQualifiedName* link = IsQualifiedNameEmpty(name->DatabaseLink.get()) ? nullptr : name->DatabaseLink.get();
    pugi::xml_node linkElement = link ? current.append_child("dblink") : pugi::xml_node();
    AppendXMLParts(*name, current, itemTag);
    name = link;
    current = linkElement;
    itemTag = "item";
  }
  return element;
}

void TSQLQualifiedName::LoadFromXMLNode(pugi::xml_node element, const char* itemTag) {
  Clear();
  for (TSQLQualifiedName* name = this; name;) {
    // The parts in order; of several links, the last one counts.
    pugi::xml_node link;
    for (pugi::xml_node child : element.children()) {
      if (std::string_view(child.name()) == "dblink") {
        link = child;
      } else if (std::string_view(child.name()) == itemTag) {
        TmvOwned<TastTokenIdentifier> id = TastCreate<TastTokenIdentifier>(SQLContext());
        if (id->LoadFromXMLNode(child)) name->AddPrefix(std::move(id));
      }
    }
    if (!link) break;
    name->DatabaseLink.Set(TastCreate<TSQLQualifiedName>(SQLContext()));
    name = name->DatabaseLink.get();
    element = link;
    itemTag = "item";
  }
}

// --- TSQLDatabaseObject ---

namespace {

template <class List, class T>
void AddOnce(List& list, T* item) {
  if (item && std::find(list.begin(), list.end(), item) == list.end()) list.push_back(item);
}

// The tokens a reference through `source` compares by: its alias, or the
// name of a FROM object; nothing for other sources.
void SourceTokensToCompare(const TSQLFromSource* source, TastTokenRefs& list) {
  if (source->Alias && source->Alias->Name) {
    list.push_back(source->Alias->Name.get());
    return;
  }
  if (const auto* object = TmvCast<TSQLFromObject>(source))
    if (object->Object) object->Object->GetAllTokensToCompare(list);
}

// The source's alias name as a prefix, or the parts of a FROM object's name;
// then the reference is unbound.
void RestorePrefixFrom(TSQLQualifiedName& name, TSQLFromSource* source) {
  TmvBaseSQLContext* context = name.SQLContext();
  if (source->Alias && source->Alias->Name) {
    name.AddPrefix(source->Alias->Name->CloneAs<TastToken>(context));
  } else if (const auto* object = TmvCast<TSQLFromObject>(source); object && object->Object) {
    name.AddPrefix(object->Object.get());
    if (object->Object->DatabaseLink)
      name.DatabaseLink.Set(object->Object->DatabaseLink->CloneAs<TSQLQualifiedName>(context));
  }
}

}  // namespace

bool TSQLDatabaseObject::IsOwnNameOfSource() const {
  if (!FromSource) return false;
  if (const auto* object = TmvCast<TSQLFromObject>(FromSource)) return object->Object.get() == this;
  if (const auto* function = TmvCast<TSQLFromFunction>(FromSource)) return function->Name.get() == this;
  return false;
}

void TSQLDatabaseObject::GetAllTokensToCompare(TastTokenRefs& list) const {
  if (!FromSource || IsOwnNameOfSource()) {
    GetTokensToCompare(list);
    return;
  }
  SourceTokensToCompare(FromSource, list);
}

void TSQLDatabaseObject::GetReferencedDatasources(TSQLFromSourceList& list) { AddOnce(list, FromSource); }

bool TSQLDatabaseObject::ReplaceReferencesToDatasource(TSQLFromSource* oldSource, TSQLFromSource* newSource) {
  if (FromSource != oldSource) return false;
  FromSource = newSource;
  return true;
}

void TSQLDatabaseObject::RestoreColumnPrefix() {
  if (FromSource && !IsOwnNameOfSource()) RestorePrefixFrom(*this, FromSource);
  FromSource = nullptr;
}

void TSQLDatabaseObject::BuildQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (FromSource && FromSource->BuildColumnPrefix(builder, format)) return;
  BuildQualifiedNameNamesFull(builder, format);
}

void TSQLDatabaseObject::BuildQualifiedNameNamesFull(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TmvBaseSQLContext* context = SQLContext();
  TmvBaseSyntaxProvider* provider = context ? context->SyntaxProvider() : nullptr;
  TmvMetadataContainer* container = context ? context->MetadataContainer() : nullptr;
  const WideString separator = provider ? provider->GetObjectNameSeparator() : WideString(u".");
  const TmvObjectPrefixSkipping skipping = builder.ObjectPrefixSkipping();

  // A source bound to metadata prints the metadata's own spelling, without
  // the default database and schema where the setting allows.
  if (const TmvMetadataObject* object = container && FromSource ? FromSource->GetMetadataObject() : nullptr) {
    TmvOwned<TSQLQualifiedName> name = MetadataObjectNameAsObject(object, skipping);
    TmvOwned<TastToken> objectName = name->ExtractName();
    if (name->GetCount() > 0) {
      name->BuildNonQualifiedNameNames(builder, format);
      builder.WriteSymbol(separator);
    }
    if (objectName) objectName->BuildSQL(builder, format);
    if (name->GetCount() > 0) name->BuildQualifiedNameDBLink(builder, format);
    return;
  }

  // A fully qualified name leaves out a database and a schema that are the
  // container's defaults, as the setting allows.
  if (container && provider) {
    const bool schemas = provider->IsSupportSchemas();
    const bool databases = provider->IsSupportDatabases();
    const int count = GetCount();
    const bool full = (schemas && databases && count >= 3) || ((schemas != databases) && count >= 2);
    if (full) {
      TmvOwned<TSQLQualifiedName> database = CloneAs<TSQLQualifiedName>();
      TmvOwned<TastToken> objectName = database->ExtractName();
      TmvOwned<TastToken> schema = schemas ? database->ExtractName() : nullptr;
      bool databaseOmitted = !databases;
      if (database->GetCount() > 0) {
        const TSQLQualifiedName* defaultDatabase = MetadataDefaultDatabase(container);
        databaseOmitted = skipping < opsSkipNone && !IsQualifiedNameEmpty(defaultDatabase) &&
                          context->IsQualifiedNamesEqual(database.get(), defaultDatabase);
        if (!databaseOmitted) {
          database->BuildNonQualifiedNameNames(builder, format);
          builder.WriteSymbol(u".");
        }
      }
      if (schema) {
        bool print = true;
        if (skipping == opsSkipAll && databaseOmitted) {
          const TSQLIdentifiersCollection* defaults = MetadataDefaultSchemas(container);
          const auto* id = TmvCast<TastTokenIdentifier>(schema.get());
          print = !defaults || defaults->GetCount() == 0 || !id || !defaults->ContainsSameId(id);
        }
        if (print) {
          schema->BuildSQL(builder, format);
          builder.WriteSymbol(separator);
        }
      }
      objectName->BuildSQL(builder, format);
      return;
    }
  }

  for (int i = GetCount(); i-- > 0;) {
    GetItems(i)->BuildSQL(builder, format);
    if (i == 1)
      builder.WriteSymbol(separator);
    else if (i > 1)
      builder.WriteSymbol(u".");
  }
}

void TSQLDatabaseObject::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  // A source that cannot be named (no alias on a function or a derived
  // table) prints nothing: the name prints its own parts then.
  if (FromSource && FromSource->BuildColumnPrefix(builder, format)) {
    FromSource->BuildColumnSuffix(builder, format);
    return;
  }
  BuildQualifiedName(builder, format);
}

// --- TSQLObjectColumn ---

TmvMetadataField* TSQLObjectColumn::GetMetadataField() const {
  if (!MetadataField || !FromSource) return nullptr;
  return MetadataObjectHasField(FromSource->GetMetadataObject(), MetadataField) ? MetadataField : nullptr;
}

void TSQLObjectColumn::BuildQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (FromSource && GetCount() > 0 && builder.UseAltNames()) {
    if (TastTokenIdentifier* altName = MetadataFieldAltName(GetMetadataField())) {
      altName->BuildSQL(builder, format);
      return;
    }
  }
  TSQLQualifiedName::BuildQualifiedNameNames(builder, format);
}

void TSQLObjectColumn::GetAllTokensToCompare(TastTokenRefs& list) const {
  if (FromSource) SourceTokensToCompare(FromSource, list);
  GetTokensToCompare(list);
}

void TSQLObjectColumn::GetReferencedDatasources(TSQLFromSourceList& list) { AddOnce(list, FromSource); }

void TSQLObjectColumn::GetReferencedColumns(TSQLObjectColumnList& list) { AddOnce(list, this); }

bool TSQLObjectColumn::ReplaceReferencesToDatasource(TSQLFromSource* oldSource, TSQLFromSource* newSource) {
  if (FromSource != oldSource) return false;
  FromSource = newSource;
  return true;
}

void TSQLObjectColumn::RestoreColumnPrefix() {
  if (FromSource) RestorePrefixFrom(*this, FromSource);
  FromSource = nullptr;
}

void TSQLObjectColumn::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  // Virtual calculated fields print expanded once the fix-up can resolve
  // their expression against the source.
  if (FromSource) {
    if (FromSource->BuildColumnPrefix(builder, format)) builder.WriteSymbol(u".");
    BuildQualifiedNameNames(builder, format);
    FromSource->BuildColumnSuffix(builder, format);
  } else {
    BuildQualifiedName(builder, format);
  }
  if (OuterJoinMark) builder.WriteSymbol(u"(+)");
}

}  // namespace mv
