#include "metadata/MetadataField.h"

#include <pugixml.hpp>

#include <cstring>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataMessages.h"
#include "metadata/MetadataNames.h"
#include "metadata/MetadataXml.h"
#include "metadata/dataset/Field.h"
#include "metadata/dataset/FieldDef.h"
#include "support/Exceptions.h"
#include "support/TextHelpers.h"
#include "tree/ExpressionBase.h"
#include "tree/SelectClauses.h"

namespace mv {

MV_DEFINE_METADATA_CLASS(TmvMetadataField, TmvMetadataCollectionItemBase)
MV_DEFINE_METADATA_CLASS(TmvMetadataFieldsList, TmvMetadataCollectionBase)

// --- TmvMetadataField ---

TmvMetadataField::TmvMetadataField(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvWithDataType(parent, context), name_(TastCreate<TSQLQualifiedName>(context)) {}

TmvMetadataField::~TmvMetadataField() = default;

TmvMetadataFieldsList* TmvMetadataField::FieldsList() const { return TmvCast<TmvMetadataFieldsList>(Parent()); }

void TmvMetadataField::PrepareStatsCollections() {
  if (!usedDatabaseObjects_) usedDatabaseObjects_ = std::make_unique<TmvStatsObjects>(SQLContext());
  if (!usedDatabaseObjectColumns_) usedDatabaseObjectColumns_ = std::make_unique<TmvStatsColumns>(SQLContext());
}

void TmvMetadataField::Assign(const TmvPersistent* source) {
  AssignFrom<TmvMetadataField>(
      source, [&] { TmvMetadataCollectionItemBase::Assign(source); },
      [&](const TmvMetadataField& other) {
        altNameId_->Assign(*other.altNameId_);
        AssignDataType(other);
        fieldTypeName_ = other.fieldTypeName_;
        primaryKey_ = other.primaryKey_;
        nullable_ = other.nullable_;
        readOnly_ = other.readOnly_;
        name_->Assign(*other.name_);
        expression_ = other.expression_;
        expressionAST_.reset();
        if (other.expressionAST_) expressionAST_ = other.expressionAST_->CloneAs<TSQLExpressionItem>(SQLContext());
      });
}

namespace {

// A dataset column's name as one identifier: quoted where the dialect tells case apart.
void SetColumnName(TSQLQualifiedName& name, WideStringView text, const TmvBaseSyntaxProvider* provider) {
  name.Clear();
  name.AddName(text, provider && provider->IsIdentifiersCaseSensitive());
}

}  // namespace

void TmvMetadataField::Assign(const TmvField& source) {
  TmvUpdateBatch batch(*this);
  SetColumnName(*name_, source.FieldName(), SyntaxProvider());
  fieldType_ = source.DataType();
  size_ = source.Size();
  nullable_ = !source.Required();
  readOnly_ = source.ReadOnly();
  NotifyUpdated();
}

void TmvMetadataField::Assign(const TmvFieldDef& source) {
  TmvUpdateBatch batch(*this);
  SetColumnName(*name_, source.Name, SyntaxProvider());
  fieldType_ = source.DataType;
  size_ = source.Size;
  precision_ = source.Precision;
  scale_ = source.Scale;
  nullable_ = !source.Required();
  readOnly_ = source.ReadOnly();
  NotifyUpdated();
}

void TmvMetadataField::SetName(const TSQLQualifiedName* name) {
  if (name == name_.get()) return;
  if (name)
    name_->Assign(*name);
  else
    name_->Clear();
  NotifyUpdated();
}

void TmvMetadataField::SetNameToken(const TastTokenIdentifier* token) {
  name_->Clear();
  if (token) name_->AddName(token->CloneAs<TastToken>(SQLContext()));
  NotifyUpdated();
}

void TmvMetadataField::SetNameStr(WideStringView text) {
  if (text == NameStr()) return;
  SetName(ParseOptionalName(SQLContext(), text).get());
}

void TmvMetadataField::SetNameAlias(const TSQLAliasExpression* alias) {
  const TastToken* token = alias ? alias->Name.get() : nullptr;
  if (!token) return;
  if (const auto* id = TmvCast<TastTokenIdentifier>(token)) {
    SetNameToken(id);
    return;
  }
  // A string alias names the field by its value, whatever characters it
  // holds; other tokens by their text.
  TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(SQLContext());
  name->AddName(TmvCast<TastTokenString>(token) ? SQLUnquoteString(token->Token) : token->Token, false);
  SetName(name.get());
}

void TmvMetadataField::SetExpression(WideStringView text) {
  if (text == expression_) return;
  if (text.empty()) {
    SetExpressionAST(nullptr, text);
    return;
  }
  TmvErrorList errors;
  TmvOwned<TSQLExpressionItem> expression =
      SQLContext() ? SQLContext()->ParseExpression(WideString(text), &errors) : nullptr;
  if (!expression)
    throw EmvQueryBuilderError(WideString(text), errors.empty() ? MetadataMessage(mvQBBadObjectName) : errors.front());
  SetExpressionAST(std::move(expression), text);
}

WideString TmvMetadataField::NameStr() const { return name_->GetQualifiedName(); }
WideString TmvMetadataField::NameStrNotQuoted() const { return name_->GetQualifiedNameWithoutQuotes(); }

void TmvMetadataField::SetAltNameId(const TastTokenIdentifier* token) {
  if (token == altNameId_.get()) return;
  AssignIdentifier(*altNameId_, token);
  NotifyUpdated();
}

void TmvMetadataField::SetExpressionAST(TmvOwned<TSQLExpressionItem> expression, WideStringView text) {
  if (expression) expression_ = WideString(text);
  expressionAST_ = std::move(expression);
  NotifyUpdated();
}

void TmvMetadataField::SetFieldTypeName(WideStringView value) { SetValueAndNotify(*this, fieldTypeName_, value); }
void TmvMetadataField::SetPrimaryKey(bool value) { SetValueAndNotify(*this, primaryKey_, value); }
void TmvMetadataField::SetNullable(bool value) { SetValueAndNotify(*this, nullable_, value); }
void TmvMetadataField::SetReadOnly(bool value) { SetValueAndNotify(*this, readOnly_, value); }

WideString TmvMetadataField::GetFieldTypeNameAndSize() const {
  const TmvBaseSyntaxProvider* provider = SyntaxProvider();
  if (!provider) return fieldTypeName_;
  if (precision_ != 0 && provider->IsVariablePrecisionType(fieldTypeName_))
    return fieldTypeName_ + u"(" + IntToWide(precision_) + u"," + IntToWide(scale_) + u")";
  if (size_ != 0 && !fieldTypeName_.empty() && !provider->IsFixedSizeType(fieldTypeName_))
    return fieldTypeName_ + u"(" + IntToWide(size_) + u")";
  return fieldTypeName_;
}

// --- XML ---

pugi::xml_node TmvMetadataField::GetXMLNode(pugi::xml_node parent, const char* nodeName) {
  pugi::xml_node element = parent.append_child(nodeName);
  name_->GetXMLNode(element, "name", "item");
  if (IsVirtualCalculatedField()) CreateNodeWithValueParent(element, "expression", expression_);
  if (!fieldTypeName_.empty()) CreateNodeWithValueParent(element, "type_name", fieldTypeName_);
  CreateNodeWithValueParent(element, "type", int(fieldType_)).append_attribute("platform").set_value("native");
  if (size_ != 0) CreateNodeWithValueParent(element, "size", size_);
  if (precision_ != 0) CreateNodeWithValueParent(element, "precision", precision_);
  if (scale_ != 0) CreateNodeWithValueParent(element, "scale", scale_);
  if (primaryKey_) CreateNodeWithValueParent(element, "primary_key", true);
  if (!nullable_) CreateNodeWithValueParent(element, "nullable", false);
  if (readOnly_) CreateNodeWithValueParent(element, "readonly", true);
  if (!AltName().empty()) CreateNodeWithValueParent(element, "alt_name", AltName());
  if (AltNameCaseSensitive()) CreateNodeWithValueParent(element, "alt_name_case_sens", true);
  if (!shortDescription_.empty()) CreateNodeWithValueParent(element, "descr", shortDescription_);
  if (!longDescription_.empty()) CreateNodeWithValueParent(element, "long_descr", longDescription_);
  return element;
}

void TmvMetadataField::LoadFromXMLNode(pugi::xml_node element) {
  TmvUpdateBatch batch(*this);
  name_->Clear();
  altNameId_->Clear();
  expression_.clear();
  expressionAST_.reset();
  fieldTypeName_.clear();
  fieldType_ = ftUnknown;
  size_ = precision_ = scale_ = 0;
  primaryKey_ = false;
  nullable_ = true;
  readOnly_ = false;
  shortDescription_.clear();
  longDescription_.clear();
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    const char* name = child.name();
    auto is = [name](const char* tag) { return std::strcmp(name, tag) == 0; };
    try {
      if (is("name"))
        name_->LoadFromXMLNode(child, "item");
      else if (is("type"))
        fieldType_ = ReadXMLFieldType(child);
      else if (is("type_name"))
        fieldTypeName_ = XMLNodeText(child);
      else if (is("size"))
        size_ = XMLNodeInt(child, 0);
      else if (is("precision"))
        precision_ = XMLNodeInt(child, 0);
      else if (is("scale"))
        scale_ = XMLNodeInt(child, 0);
      else if (is("primary_key"))
        primaryKey_ = XMLNodeBool(child);
      else if (is("nullable"))
        nullable_ = XMLNodeBool(child);
      else if (is("readonly"))
        readOnly_ = XMLNodeBool(child);
      else if (is("alt_name"))
        altNameId_->SetToken(XMLNodeText(child));
      else if (is("alt_name_case_sens"))
        altNameId_->Quoted = XMLNodeBool(child);
      else if (is("descr"))
        shortDescription_ = XMLNodeText(child);
      else if (is("long_descr"))
        longDescription_ = XMLNodeText(child);
      else if (is("expression"))
        SetExpression(XMLNodeText(child));
    } catch (const EmvMetadataXMLError&) {
      throw;
    } catch (const Exception& e) {
      throw EmvMetadataXMLError(e.Message(), child);
    }
  }
  NotifyUpdated();
}

// --- TmvMetadataFieldsList ---

TmvMetadataFieldsList::TmvMetadataFieldsList(TmvMetadataBase* parent, TmvBaseSQLContext* context)
    : TmvMetadataLoadedListOf<TmvMetadataField>(parent, context) {}

TmvMetadataField* TmvMetadataFieldsList::AddField(const TSQLQualifiedName* name, TFieldType fieldType, int32_t size,
                                                  bool nullable, bool readOnly, WideStringView shortDescription,
                                                  WideStringView longDescription, WideStringView altName) {
  TmvUpdateBatch batch(*this);
  TmvMetadataField* field = Add();
  field->SetName(name);
  field->SetFieldType(fieldType);
  field->SetSize(size);
  field->SetNullable(nullable);
  field->SetReadOnly(readOnly);
  field->SetShortDescription(shortDescription);
  field->SetLongDescription(longDescription);
  field->SetAltName(altName);
  return field;
}

TmvMetadataField* TmvMetadataFieldsList::AddField(const TastToken* token) {
  TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(SQLContext());
  if (const auto* id = TmvCast<TastTokenIdentifier>(token))
    name->AddName(id->CloneAs<TastToken>(SQLContext()));
  else if (TmvCast<TastTokenString>(token))
    name->AddName(SQLUnquoteString(token->Token), false);
  else if (token)
    name->AddName(token->Token, false);
  return AddField(name.get());
}

TmvMetadataField* TmvMetadataFieldsList::AddField(WideStringView text) {
  return AddField(ParseName(SQLContext(), text).get());
}

TmvMetadataField* TmvMetadataFieldsList::AddField(const TmvField& source) {
  TmvUpdateBatch batch(*this);
  TmvMetadataField* field = Add();
  field->Assign(source);
  return field;
}

TmvMetadataField* TmvMetadataFieldsList::AddField(const TmvFieldDef& def) {
  TmvUpdateBatch batch(*this);
  TmvMetadataField* field = Add();
  field->Assign(def);
  return field;
}

int TmvMetadataFieldsList::FindFieldByName(const TastToken* token) const {
  if (!token) return -1;
  TmvBaseSQLContext* context = SQLContext();
  for (int i = 0; i < Count(); ++i) {
    const TSQLQualifiedName* name = Items(i)->Name();
    if (name->GetCount() == 1 && context->CompareTokens(name->Token(0), token) == 0) return i;
  }
  return -1;
}

int TmvMetadataFieldsList::FindFieldByName(const TastTokenIdentifier* token) const {
  if (!token) return -1;
  TmvBaseSQLContext* context = SQLContext();
  for (int i = 0; i < Count(); ++i) {
    const TSQLQualifiedName* name = Items(i)->Name();
    if (name->GetCount() != 1) continue;
    const auto* id = TmvCast<TastTokenIdentifier>(name->Token(0));
    if (id && context->IsIdentifiersEqual(id, token)) return i;
  }
  return -1;
}

int TmvMetadataFieldsList::FindFieldByName(const TSQLQualifiedName* name) const {
  TmvBaseSQLContext* context = SQLContext();
  for (int i = 0; i < Count(); ++i)
    if (context->IsQualifiedNamesEqual(Items(i)->Name(), name)) return i;
  return -1;
}

int TmvMetadataFieldsList::FindFieldByName(WideStringView text) const {
  TmvBaseSQLContext* context = SQLContext();
  if (!context || !context->SyntaxProvider()) {
    const WideString wanted = WideUpperCase(text);
    for (int i = 0; i < Count(); ++i) {
      const TSQLQualifiedName* name = Items(i)->Name();
      if (name->GetCount() == 1 && WideUpperCase(name->Token(0)->Token) == wanted) return i;
    }
    return -1;
  }
  TmvOwned<TSQLQualifiedName> name = ParseNameOrNull(context, text);
  return name ? FindFieldByName(name.get()) : -1;
}

}  // namespace mv
