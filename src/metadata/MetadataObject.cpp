#include "metadata/MetadataObject.h"

#include <pugixml.hpp>

#include <cstring>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataNames.h"
#include "metadata/MetadataProvider.h"
#include "metadata/MetadataXml.h"
#include "sqlgen/SQLBuilder.h"
#include "support/Exceptions.h"
#include "tree/FromClause.h"

namespace mv {

MV_DEFINE_ABSTRACT_METADATA_CLASS(TmvMetadataObject, TmvMetadataBase)
MV_DEFINE_METADATA_CLASS(TmvMetadataTable, TmvMetadataObject)
MV_DEFINE_METADATA_CLASS(TmvMetadataView, TmvMetadataObject)
MV_DEFINE_METADATA_CLASS(TmvMetadataProcedure, TmvMetadataObject)
MV_DEFINE_METADATA_CLASS(TmvMetadataSynonym, TmvMetadataObject)

namespace {

// Identifiers equal under the context's rules, an absent one counting as empty.
bool SameIdentifier(const TmvBaseSQLContext* context, const TastTokenIdentifier* a, const TastTokenIdentifier* b) {
  if (IsIdentifierEmpty(a) || IsIdentifierEmpty(b)) return IsIdentifierEmpty(a) && IsIdentifierEmpty(b);
  return context->IsIdentifiersEqual(a, b);
}

TmvBaseSQLContext& RequireContext(const TmvMetadataBase& object) {
  if (!object.SQLContext()) throw EmvQueryBuilderError(MetadataMessage(mvQBNoSyntaxProvider));
  return *object.SQLContext();
}

}  // namespace

// --- TmvMetadataObject ---

TmvMetadataObject::TmvMetadataObject(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvWithAltName(parent, context),
      container_(TmvCast<TmvMetadataContainer>(parent)),
      dbLink_(TastCreate<TSQLQualifiedName>(context)),
      database_(TastCreate<TSQLQualifiedName>(context)),
      schema_(TastCreate<TastTokenIdentifier>(context)),
      name_(TastCreate<TastTokenIdentifier>(context)),
      fields_(TmvCreate<TmvMetadataFieldsList>(this, context)),
      relations_(TmvCreate<TmvMetadataRelationsList>(this, context)) {}

TmvMetadataObject::~TmvMetadataObject() = default;

void TmvMetadataObject::Assign(const TmvPersistent* source) {
  AssignFrom<TmvMetadataObject>(
      source, [&] { TmvMetadataBase::Assign(source); },
      [&](const TmvMetadataObject& other) {
        AssignQualifiedName(*dbLink_, other.dbLink_.get());
        AssignQualifiedName(*database_, other.database_.get());
        AssignIdentifier(*schema_, other.schema_.get());
        AssignIdentifier(*name_, other.name_.get());
        schemedName_.reset();
        fullName_.reset();
        UpdateNames();
        expression_ = other.expression_;
        expressionAST_.reset();
        if (other.expressionAST_) expressionAST_ = other.expressionAST_->CloneAs<TSQLFromSource>(SQLContext());
        system_ = other.system_;
        visible_ = other.visible_;
        AssignIdentifier(*altNameId_, other.altNameId_.get());
        if (container_ && container_->Contains(this)) container_->ReHashByAltName(this);
        if (other.recomendedAliases_)
          recomendedAliases_ = other.recomendedAliases_->CloneAs<TastIdentifiersList>(SQLContext());
        else
          recomendedAliases_.reset();
        longDescription_ = other.longDescription_;
        shortDescription_ = other.shortDescription_;
        SetFields(other.GetFields());
        SetRelations(other.GetRelations());
      });
}

// --- Names ---

void TmvMetadataObject::UpdateSchemedName() const { BuildFullName(*schemedName_, name_.get(), schema_.get(), nullptr); }

void TmvMetadataObject::UpdateFullName() const {
  BuildFullName(*fullName_, name_.get(), schema_.get(), database_.get());
  if (dbLink_->GetCount() > 0) fullName_->DatabaseLink.Set(dbLink_->CloneAs<TSQLQualifiedName>(SQLContext()));
}

const TSQLQualifiedName* TmvMetadataObject::SchemedName() const {
  if (!schemedName_) {
    schemedName_ = TastCreate<TSQLQualifiedName>(SQLContext());
    UpdateSchemedName();
  }
  return schemedName_.get();
}

const TSQLQualifiedName* TmvMetadataObject::FullName() const {
  if (!fullName_) {
    fullName_ = TastCreate<TSQLQualifiedName>(SQLContext());
    UpdateFullName();
  }
  return fullName_.get();
}

void TmvMetadataObject::UpdateNames() {
  if (schemedName_) UpdateSchemedName();
  if (fullName_) UpdateFullName();
  if (!container_) return;
  if (container_->Contains(this)) container_->ReHashByName(this);
  container_->SetObjectsUpdated();
}

void TmvMetadataObject::SetName(const TastTokenIdentifier* value) {
  AssignIdentifier(*name_, value);
  UpdateNames();
  NotifyUpdated();
}

void TmvMetadataObject::SetSchema(const TastTokenIdentifier* value) {
  AssignIdentifier(*schema_, value);
  UpdateNames();
  NotifyUpdated();
}

void TmvMetadataObject::SetDatabase(const TSQLQualifiedName* value) {
  AssignQualifiedName(*database_, value);
  UpdateNames();
  NotifyUpdated();
}

void TmvMetadataObject::SetDBLink(const TSQLQualifiedName* value) {
  AssignQualifiedName(*dbLink_, value);
  UpdateNames();
  NotifyUpdated();
}

void TmvMetadataObject::SetNameStr(WideStringView text) {
  name_->SetTokenStr(text);
  UpdateNames();
  NotifyUpdated();
}

void TmvMetadataObject::SetSchemaStr(WideStringView text) {
  schema_->SetTokenStr(text);
  UpdateNames();
  NotifyUpdated();
}

void TmvMetadataObject::SetDatabaseStr(WideStringView text) {
  if (text == DatabaseStr()) return;
  SetDatabase(ParseOptionalName(SQLContext(), text).get());
}

void TmvMetadataObject::SetDBLinkStr(WideStringView text) {
  if (text == DBLinkStr()) return;
  SetDBLink(ParseOptionalName(SQLContext(), text).get());
}

WideString TmvMetadataObject::NameStr() const { return TokenSQL(name_.get()); }
WideString TmvMetadataObject::SchemaStr() const { return TokenSQL(schema_.get()); }
WideString TmvMetadataObject::DatabaseStr() const { return database_->GetQualifiedName(); }
WideString TmvMetadataObject::DBLinkStr() const { return dbLink_->GetQualifiedName(); }
WideString TmvMetadataObject::FullNameStr() const { return FullName()->GetQualifiedName(); }
WideString TmvMetadataObject::SchemedNameStr() const { return SchemedName()->GetQualifiedName(); }
WideString TmvMetadataObject::DatabaseStrNotQuoted() const { return database_->GetQualifiedNameWithoutQuotes(); }
WideString TmvMetadataObject::DBLinkStrNotQuoted() const { return dbLink_->GetQualifiedNameWithoutQuotes(); }
WideString TmvMetadataObject::FullNameStrNotQuoted() const { return FullName()->GetQualifiedNameWithoutQuotes(); }
WideString TmvMetadataObject::SchemedNameStrNotQuoted() const { return SchemedName()->GetQualifiedNameWithoutQuotes(); }

bool TmvMetadataObject::IsNameEqual(const TastTokenIdentifier* name, const TastTokenIdentifier* schema,
                                    const TSQLQualifiedName* database) const {
  const TmvBaseSQLContext& context = RequireContext(*this);
  return SameIdentifier(&context, name_.get(), name) && SameIdentifier(&context, schema_.get(), schema) &&
         context.IsQualifiedNamesEqual(database_.get(), database);
}

bool TmvMetadataObject::IsFullNameEqual(const TSQLQualifiedName* name) const {
  return RequireContext(*this).IsQualifiedNamesEqual(name, FullName());
}

TmvOwned<TSQLQualifiedName> TmvMetadataObject::GetNameAsObject(bool withDatabase, bool withSchema,
                                                               TmvObjectPrefixSkipping prefixSkipping,
                                                               bool withName) const {
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TSQLQualifiedName> result = TastCreate<TSQLQualifiedName>(context);
  const bool noLink = dbLink_->GetCount() == 0;
  bool databaseSkipped = true;
  if (withDatabase && database_->GetCount() > 0) {
    databaseSkipped = noLink && prefixSkipping != opsSkipNone && container_ && context &&
                      context->IsQualifiedNamesEqual(database_.get(), container_->DefaultDatabaseName());
    if (!databaseSkipped) result->AddName(database_.get());
  }
  if (withSchema && !schema_->IsEmpty()) {
    const bool skip = noLink && prefixSkipping == opsSkipAll && databaseSkipped && container_ &&
                      container_->DefaultSchemaNames()->ContainsSameId(schema_.get());
    if (!skip) result->AddName(schema_->CloneAs<TastToken>(context));
  }
  if (withName) result->AddName(name_->CloneAs<TastToken>(context));
  if (withDatabase && !noLink) result->DatabaseLink.Set(dbLink_->CloneAs<TSQLQualifiedName>(context));
  return result;
}

WideString TmvMetadataObject::GetNameAsString(bool withDatabase, bool withSchema, bool withName,
                                              TSQLBuilder& builder) const {
  return GetNameAsObject(withDatabase, withSchema, builder.ObjectPrefixSkipping(), withName)->SimpleSQL(builder);
}

// --- Alternate name, expression, flags ---

void TmvMetadataObject::AltNameChanged() {
  if (container_) {
    if (container_->Contains(this)) container_->ReHashByAltName(this);
    container_->SetObjectsUpdated();
  }
  NotifyUpdated();
}

void TmvMetadataObject::SetExpression(WideStringView text) {
  if (text == expression_) return;
  if (text.empty()) {
    SetExpressionAST(nullptr, text);
    return;
  }
  SetExpressionAST(RequireContext(*this).ParseDatasource(WideString(text)), text);
}

void TmvMetadataObject::SetExpressionAST(TmvOwned<TSQLFromSource> expression, WideStringView text) {
  if (expression) expression_ = WideString(text);
  expressionAST_ = std::move(expression);
  NotifyUpdated();
}

void TmvMetadataObject::SetSystem(bool value) { SetValueAndNotify(*this, system_, value); }
void TmvMetadataObject::SetVisible(bool value) { SetValueAndNotify(*this, visible_, value); }

TastIdentifiersList* TmvMetadataObject::RecomendedAliases() const {
  if (!recomendedAliases_) recomendedAliases_ = TastCreate<TastIdentifiersList>(SQLContext());
  return recomendedAliases_.get();
}

void TmvMetadataObject::SetLongDescription(WideStringView value) { SetValueAndNotify(*this, longDescription_, value); }
void TmvMetadataObject::SetShortDescription(WideStringView value) {
  SetValueAndNotify(*this, shortDescription_, value);
}

// --- Fields and relations ---

void TmvMetadataObject::SetFields(const TmvMetadataFieldsList* value) {
  TmvMetadataFieldsList* fields = GetFields();
  if (!value || value == fields) return;
  fields->Assign(value);
}

void TmvMetadataObject::SetRelations(const TmvMetadataRelationsList* value) {
  TmvMetadataRelationsList* relations = GetRelations();
  if (!value || value == relations) return;
  relations->Assign(value);
}

template <class Visit>
void TmvMetadataObject::ForEachContainerRelation(Visit visit) const {
  if (!container_) return;
  for (TmvMetadataRelation* relation : container_->GetRelations()) {
    TmvMetadataObject* key = relation->GetKeyMetadataObject();
    TmvMetadataObject* child = container_->FindObjectByFullName(relation->ChildTable());
    visit(relation, key, child);
  }
}

std::vector<TmvMetadataObject*> TmvMetadataObject::GetReferencedObjects() const {
  std::vector<TmvMetadataObject*> result;
  ForEachContainerRelation([&](TmvMetadataRelation* relation, TmvMetadataObject* key, TmvMetadataObject* child) {
    if (relation->ForeignKey()) {
      if (key == this && child) result.push_back(child);
    } else if (child == this) {
      result.push_back(key);
    }
  });
  return result;
}

std::vector<TmvMetadataObject*> TmvMetadataObject::GetReferencingObjects() const {
  std::vector<TmvMetadataObject*> result;
  ForEachContainerRelation([&](TmvMetadataRelation* relation, TmvMetadataObject* key, TmvMetadataObject* child) {
    if (relation->ForeignKey()) {
      if (child == this) result.push_back(key);
    } else if (key == this && child) {
      result.push_back(child);
    }
  });
  return result;
}

std::vector<TmvMetadataRelation*> TmvMetadataObject::GetReferencedRelations() const {
  std::vector<TmvMetadataRelation*> result;
  ForEachContainerRelation([&](TmvMetadataRelation* relation, TmvMetadataObject* key, TmvMetadataObject* child) {
    if (relation->ForeignKey() ? (key == this && child) : child == this) result.push_back(relation);
  });
  return result;
}

std::vector<TmvMetadataRelation*> TmvMetadataObject::GetReferencingRelations() const {
  std::vector<TmvMetadataRelation*> result;
  ForEachContainerRelation([&](TmvMetadataRelation* relation, TmvMetadataObject* key, TmvMetadataObject* child) {
    if (relation->ForeignKey() ? child == this : (key == this && child)) result.push_back(relation);
  });
  return result;
}

// --- Loading ---

void TmvMetadataObject::LoadFieldsHelper(TmvConnection* connection, bool forced) {
  if (GetFields()->Loaded()) return;
  TmvUpdateBatch batch(*this);
  if (container_) container_->DoObjectMetadataLoading(this);
  TmvBaseSQLContext* context = SQLContext();
  // A virtual object has no server object to ask: its fields are those of
  // its expression, which the fix-up resolves.
  if (!IsVirtualCalculatedObject() && !GetFields()->Loaded() && context && context->SyntaxProvider() &&
      context->MetadataProvider()) {
    if (!connection) connection = context->MetadataProvider()->Connection();
    if (forced || !container_ || !container_->WorkOffline()) LoadFieldsInternal(connection);
  }
  if (container_) container_->DoObjectMetadataLoaded(this);
}

void TmvMetadataObject::DeleteVirtualCalculatedFields() {
  TmvMetadataFieldsList* fields = GetFields();
  TmvUpdateBatch batch(*fields);
  for (int i = fields->Count() - 1; i >= 0; --i)
    if (fields->Items(i)->IsVirtualCalculatedField()) fields->Delete(i);
}

WideString TmvMetadataObject::FullNameForServer() const { return FullName()->GetQualifiedNameForServer(); }

WideString TmvMetadataObject::GetQueryToLoadFields(WideStringView filter) const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  return provider ? provider->GetQueryToLoadFieldsForObject(filter, FullNameForServer()) : WideString();
}

// --- XML ---

pugi::xml_node TmvMetadataObject::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  // A saved file carries the fields of every object that can be fetched.
  if (!GetFields()->Loaded() && !(container_ && container_->WorkOffline())) LoadFields();
  pugi::xml_node element = parent.append_child(nodeName);
  if (dbLink_->GetCount() > 0) dbLink_->GetXMLNode(element, "dblink", "item");
  if (database_->GetCount() > 0) database_->GetXMLNode(element, "database", "item");
  if (!schema_->IsEmpty()) schema_->GetXMLNode(element, "schema");
  name_->GetXMLNode(element, "name");
  if (!AltName().empty()) CreateNodeWithValueParent(element, "alt_name", AltName());
  if (AltNameCaseSensitive()) CreateNodeWithValueParent(element, "alt_name_case_sens", true);
  if (IsVirtualCalculatedObject()) CreateNodeWithValueParent(element, "expression", expression_);
  if (system_) CreateNodeWithValueParent(element, "system", true);
  if (!visible_) CreateNodeWithValueParent(element, "visible", false);
  if (!shortDescription_.empty()) CreateNodeWithValueParent(element, "descr", shortDescription_);
  if (!longDescription_.empty()) CreateNodeWithValueParent(element, "long_descr", longDescription_);
  // Through the virtual getters: a synonym writes its target's lists.
  if (TmvMetadataFieldsList* fields = GetFields(); fields->Loaded()) fields->GetXMLNode(element, "fields");
  if (TmvMetadataRelationsList* relations = GetRelations(); relations->Count() > 0)
    relations->GetXMLNode(element, "relations");
  return element;
}

void TmvMetadataObject::LoadFromXMLNode(pugi::xml_node element) {
  TmvUpdateBatch batch(*this);
  SetAltName(u"");
  SetAltNameCaseSensitive(false);
  // The object's own lists: a synonym reads its target's name only afterwards.
  fields_->Clear();
  fields_->SetLoaded(false);
  relations_->Clear();
  dbLink_->Clear();
  schemedName_.reset();
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    const char* name = child.name();
    auto is = [name](const char* tag) { return std::strcmp(name, tag) == 0; };
    try {
      if (is("name")) {
        name_->LoadFromXMLNode(child);
      } else if (is("schema")) {
        schema_->LoadFromXMLNode(child);
      } else if (is("database")) {
        database_->LoadFromXMLNode(child, "item");
      } else if (is("dblink")) {
        // The older form is one token element, the newer a name element.
        if (child.attribute("name")) {
          TmvOwned<TastTokenIdentifier> token = TastCreate<TastTokenIdentifier>(SQLContext());
          if (token->LoadFromXMLNode(child)) dbLink_->AddPrefix(std::move(token));
        } else {
          dbLink_->LoadFromXMLNode(child, "item");
        }
      } else if (is("fields")) {
        fields_->LoadFromXMLNode(child);
        fields_->SetLoaded(fields_->Count() > 0);
      } else if (is("relations")) {
        relations_->LoadFromXMLNode(child);
      } else if (is("alt_name_case_sens")) {
        SetAltNameCaseSensitive(XMLNodeBool(child));
      } else if (is("system")) {
        system_ = XMLNodeBool(child);
      } else if (is("visible")) {
        visible_ = XMLNodeBool(child);
      } else if (const WideString text = XMLNodeText(child); text.empty()) {
        continue;
      } else if (is("alt_name")) {
        SetAltName(text);
      } else if (is("expression")) {
        SetExpression(text);
      } else if (is("descr")) {
        shortDescription_ = text;
      } else if (is("long_descr")) {
        longDescription_ = text;
      }
    } catch (const EmvMetadataXMLError&) {
      throw;
    } catch (const Exception& e) {
      throw EmvMetadataXMLError(e.Message(), child);
    }
  }
  UpdateNames();
  NotifyUpdated();
}

// --- Tables, views, procedures ---

WideString TmvMetadataTable::GetQueryToLoadFields(WideStringView filter) const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  return provider ? provider->GetQueryToLoadFieldsForTable(filter, FullNameForServer()) : WideString();
}

void TmvMetadataTable::LoadFieldsInternal(TmvConnection* connection) {
  RequireContext(*this).LoadMetadataForTable(connection, this);
}

WideString TmvMetadataView::GetQueryToLoadFields(WideStringView filter) const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  return provider ? provider->GetQueryToLoadFieldsForView(filter, FullNameForServer()) : WideString();
}

void TmvMetadataView::LoadFieldsInternal(TmvConnection* connection) {
  RequireContext(*this).LoadMetadataForView(connection, this);
}

TmvMetadataProcedure::TmvMetadataProcedure(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataObject(parent, context), parameters_(TmvCreate<TmvMetadataParametersList>(this, context)) {}

TmvMetadataProcedure::~TmvMetadataProcedure() = default;

void TmvMetadataProcedure::Assign(const TmvPersistent* source) {
  TmvUpdateBatch batch(*this);
  TmvMetadataObject::Assign(source);
  if (const auto* other = TmvCast<TmvMetadataProcedure>(source); other && other != this)
    parameters_->Assign(other->parameters_.get());
}

WideString TmvMetadataProcedure::GetQueryToLoadFields(WideStringView filter) const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  if (!provider) return {};
  WideString params;
  if (parameters_->Loaded()) {
    for (int i = 0; i < parameters_->Count(); ++i) params += i == 0 ? u"null" : u",null";
  }
  return provider->GetQueryToLoadFieldsForProcedure(filter, FullNameForServer(), params);
}

void TmvMetadataProcedure::LoadFieldsInternal(TmvConnection* connection) {
  RequireContext(*this).LoadMetadataForProcedure(connection, this);
}

// --- Synonyms ---

namespace {

// Marks a synonym as being resolved for the length of a scope.
class TmvResolvingGuard {
 public:
  explicit TmvResolvingGuard(bool& flag) : flag_(flag), entered_(!flag) { flag_ = true; }
  ~TmvResolvingGuard() {
    if (entered_) flag_ = false;
  }
  TmvResolvingGuard(const TmvResolvingGuard&) = delete;
  TmvResolvingGuard& operator=(const TmvResolvingGuard&) = delete;
  // False when the synonym was being resolved already (a cycle).
  bool Entered() const { return entered_; }

 private:
  bool& flag_;
  bool entered_;
};

}  // namespace

TmvMetadataSynonym::TmvMetadataSynonym(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataObject(parent, context),
      referencedDatabase_(TastCreate<TSQLQualifiedName>(context)),
      referencedSchema_(TastCreate<TastTokenIdentifier>(context)),
      referencedName_(TastCreate<TastTokenIdentifier>(context)),
      referencedSchemedName_(TastCreate<TSQLQualifiedName>(context)),
      referencedFullName_(TastCreate<TSQLQualifiedName>(context)) {}

TmvMetadataSynonym::~TmvMetadataSynonym() = default;

void TmvMetadataSynonym::Assign(const TmvPersistent* source) {
  TmvUpdateBatch batch(*this);
  TmvMetadataObject::Assign(source);
  const auto* other = TmvCast<TmvMetadataSynonym>(source);
  if (!other || other == this) return;
  AssignQualifiedName(*referencedDatabase_, other->referencedDatabase_.get());
  AssignIdentifier(*referencedSchema_, other->referencedSchema_.get());
  AssignIdentifier(*referencedName_, other->referencedName_.get());
  UpdateReferencedFullName();
  NotifyUpdated();
}

void TmvMetadataSynonym::UpdateReferencedFullName() {
  BuildFullName(*referencedSchemedName_, referencedName_.get(), referencedSchema_.get(), nullptr);
  BuildFullName(*referencedFullName_, referencedName_.get(), referencedSchema_.get(), referencedDatabase_.get());
}

void TmvMetadataSynonym::SetReferencedDatabase(const TSQLQualifiedName* value) {
  AssignQualifiedName(*referencedDatabase_, value);
  UpdateReferencedFullName();
  NotifyUpdated();
}

void TmvMetadataSynonym::SetReferencedSchema(const TastTokenIdentifier* value) {
  AssignIdentifier(*referencedSchema_, value);
  UpdateReferencedFullName();
  NotifyUpdated();
}

void TmvMetadataSynonym::SetReferencedName(const TastTokenIdentifier* value) {
  AssignIdentifier(*referencedName_, value);
  UpdateReferencedFullName();
  NotifyUpdated();
}

void TmvMetadataSynonym::SetReferencedFullName(const TSQLQualifiedName* value) {
  TmvUpdateBatch batch(*this);
  SplitFullName(SQLContext(), value, *referencedName_, *referencedSchema_, *referencedDatabase_);
  UpdateReferencedFullName();
  NotifyUpdated();
}

void TmvMetadataSynonym::SetReferencedFullNameStr(WideStringView text) {
  SetReferencedFullName(ParseOptionalName(SQLContext(), text).get());
}

WideString TmvMetadataSynonym::ReferencedFullNameStr() const { return referencedFullName_->GetQualifiedName(); }

TmvMetadataObject* TmvMetadataSynonym::GetReferencedObject() const {
  if (referencedName_->IsEmpty() || !Container()) return nullptr;
  TmvMetadataObject* target = Container()->FindByNameAndClass(
      referencedName_.get(), referencedSchema_.get(), TmvMetadataObject::StaticClass(), referencedDatabase_.get());
  return target == this ? nullptr : target;
}

TmvMetadataFieldsList* TmvMetadataSynonym::GetFields() const {
  TmvResolvingGuard guard(resolving_);
  TmvMetadataObject* target = guard.Entered() ? GetReferencedObject() : nullptr;
  return target ? target->GetFields() : TmvMetadataObject::GetFields();
}

void TmvMetadataSynonym::SetFields(const TmvMetadataFieldsList* value) {
  TmvResolvingGuard guard(resolving_);
  TmvMetadataObject* target = guard.Entered() ? GetReferencedObject() : nullptr;
  if (target)
    target->SetFields(value);
  else
    TmvMetadataObject::SetFields(value);
}

TmvMetadataRelationsList* TmvMetadataSynonym::GetRelations() const {
  TmvResolvingGuard guard(resolving_);
  TmvMetadataObject* target = guard.Entered() ? GetReferencedObject() : nullptr;
  return target ? target->GetRelations() : TmvMetadataObject::GetRelations();
}

void TmvMetadataSynonym::SetRelations(const TmvMetadataRelationsList* value) {
  TmvResolvingGuard guard(resolving_);
  TmvMetadataObject* target = guard.Entered() ? GetReferencedObject() : nullptr;
  if (target)
    target->SetRelations(value);
  else
    TmvMetadataObject::SetRelations(value);
}

pugi::xml_node TmvMetadataSynonym::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  pugi::xml_node element = TmvMetadataObject::GetXMLNode(parent, nodeName);
  if (referencedDatabase_->GetCount() > 0) referencedDatabase_->GetXMLNode(element, "ref_database", "item");
  if (!referencedSchema_->IsEmpty()) referencedSchema_->GetXMLNode(element, "ref_schema");
  if (!referencedName_->IsEmpty()) referencedName_->GetXMLNode(element, "ref_name");
  return element;
}

void TmvMetadataSynonym::LoadFromXMLNode(pugi::xml_node element) {
  TmvUpdateBatch batch(*this);
  TmvMetadataObject::LoadFromXMLNode(element);
  referencedDatabase_->Clear();
  referencedSchema_->Clear();
  referencedName_->Clear();
  if (pugi::xml_node child = FindChildElByName("ref_database", element))
    referencedDatabase_->LoadFromXMLNode(child, "item");
  if (pugi::xml_node child = FindChildElByName("ref_schema", element)) referencedSchema_->LoadFromXMLNode(child);
  if (pugi::xml_node child = FindChildElByName("ref_name", element)) referencedName_->LoadFromXMLNode(child);
  UpdateReferencedFullName();
  NotifyUpdated();
}

WideString TmvMetadataSynonym::GetQueryToLoadFields(WideStringView filter) const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  return provider ? provider->GetQueryToLoadFieldsForSynonym(filter, FullNameForServer()) : WideString();
}

void TmvMetadataSynonym::LoadFieldsInternal(TmvConnection* connection) {
  if (TmvMetadataObject* target = GetReferencedObject()) {
    target->LoadFields(connection);
    return;
  }
  RequireContext(*this).LoadMetadataForSynonym(connection, this);
}

}  // namespace mv
