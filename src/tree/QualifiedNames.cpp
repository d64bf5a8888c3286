#include "tree/QualifiedNames.h"

#include <algorithm>
#include <pugixml.hpp>

#include "dialects/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "support/MessageCatalog.h"
#include "tree/FromClause.h"

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
  return !name || (name->GetCount() == 0 && IsQualifiedNameEmpty(name->DatabaseLink.get()));
}

// --- Comparison ---

void TSQLQualifiedName::GetTokensToCompare(TastTokenRefs& list) const {
  if (DatabaseLink) DatabaseLink->GetTokensToCompare(list);
  for (int i = GetCount(); i-- > 0;)
    if (const TastToken* token = Token(i)) list.push_back(token);
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

pugi::xml_node TSQLQualifiedName::GetXMLNode(pugi::xml_node parent, const char* tag, const char* itemTag) const {
  pugi::xml_node element = parent.append_child(tag);
  if (!IsQualifiedNameEmpty(DatabaseLink.get())) DatabaseLink->GetXMLNode(element, "dblink", "item");
  for (int i = 0; i < GetCount(); ++i) {
    const TastToken* token = Token(i);
    if (!token) continue;
    if (const auto* id = TmvCast<TastTokenIdentifier>(token)) {
      id->GetXMLNode(element, itemTag);
    } else {
      pugi::xml_node item = element.append_child(itemTag);
      item.append_attribute("name").set_value(UTF8Encode(token->Token).c_str());
      item.append_attribute("case_sens").set_value(XmlBoolText(false));
    }
  }
  return element;
}

void TSQLQualifiedName::LoadFromXMLNode(pugi::xml_node element, const char* itemTag) {
  Clear();
  for (pugi::xml_node child : element.children()) {
    if (std::string_view(child.name()) == "dblink") {
      DatabaseLink.Set(TastCreate<TSQLQualifiedName>(SQLContext()));
      DatabaseLink->LoadFromXMLNode(child, "item");
    } else if (std::string_view(child.name()) == itemTag) {
      TmvOwned<TastTokenIdentifier> id = TastCreate<TastTokenIdentifier>(SQLContext());
      if (id->LoadFromXMLNode(child)) AddPrefix(std::move(id));
    }
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
  // The metadata's own spelling of a bound object and the skipping of default
  // database and schema need the metadata container; without one the name
  // prints in full, whatever ObjectPrefixSkipping says.
  TmvBaseSyntaxProvider* provider = SQLContext() ? SQLContext()->SyntaxProvider() : nullptr;
  const WideString separator = provider ? provider->GetObjectNameSeparator() : WideString(u".");
  for (int i = GetCount(); i-- > 0;) {
    GetItems(i)->BuildSQL(builder, format);
    if (i == 1)
      builder.WriteSymbol(separator);
    else if (i > 1)
      builder.WriteSymbol(u".");
  }
}

void TSQLDatabaseObject::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  if (FromSource) {
    FromSource->BuildColumnPrefix(builder, format);
    FromSource->BuildColumnSuffix(builder, format);
    return;
  }
  BuildQualifiedName(builder, format);
}

// --- TSQLObjectColumn ---

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
  // Virtual calculated fields and alternate names of bound columns print
  // from the metadata field, which joins with the metadata model.
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
