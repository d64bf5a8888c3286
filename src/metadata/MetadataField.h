// Fields of metadata objects (columns of tables, views, procedure results)
// and the list that holds them. The list's loaded flag (see
// TmvMetadataLoadedListOf) is set by every AddField as well.
#pragma once

#include "metadata/MetadataAltName.h"
#include "metadata/MetadataDataType.h"
#include "tree/NodeStatistics.h"
#include "tree/QualifiedNames.h"

namespace mv {

class TmvField;
struct TmvFieldDef;
class TSQLExpressionItem;
class TSQLAliasExpression;
class TmvMetadataFieldsList;

class TmvMetadataField : public TmvWithDataType<TmvWithAltName<TmvMetadataCollectionItemBase>> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataField(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  ~TmvMetadataField() override;

  // From another field: everything. Other sources fall to the inherited Assign.
  void Assign(const TmvPersistent* source) override;
  using TmvMetadataCollectionItemBase::Assign;
  // From a dataset's column: the name as one identifier (quoted where the
  // dialect is case-sensitive), type, size, nullability and read-only state.
  void Assign(const TmvField& source);
  // The same from a column description, with its precision and scale.
  void Assign(const TmvFieldDef& source);

  TmvMetadataFieldsList* FieldsList() const;

  // --- Name ---
  const TSQLQualifiedName* Name() const { return name_.get(); }
  // Copies the name; null clears it.
  void SetName(const TSQLQualifiedName* name);
  // A one-part name of a clone of the token.
  void SetNameToken(const TastTokenIdentifier* token);
  // The name read from SQL text (quoted where it has to be); empty text
  // clears it; "Invalid object name" for text that is no name.
  void SetNameStr(WideStringView text);
  // The alias of a select item: an identifier as it stands, a string by its
  // value (unquoted), another token by its text.
  void SetNameAlias(const TSQLAliasExpression* alias);
  // The name as the context's builder writes it, and without quotes.
  WideString NameStr() const;
  WideString NameStrNotQuoted() const;

  // --- Alternate (display) name: also a copy of a whole token (null clears) ---
  void SetAltNameId(const TastTokenIdentifier* token);

  // --- Virtual calculated field: an expression in place of a column ---
  const WideString& Expression() const { return expression_; }
  TSQLExpressionItem* ExpressionAST() const { return expressionAST_.get(); }
  // Parses non-empty text as an expression, which then makes the field
  // virtual; empty text frees the parse and keeps the previous text. A text
  // that does not parse raises EmvQueryBuilderError and changes nothing.
  void SetExpression(WideStringView text);
  // Takes a parsed expression and its text; null with any text frees the parse.
  void SetExpressionAST(TmvOwned<TSQLExpressionItem> expression, WideStringView text);
  bool IsVirtualCalculatedField() const { return expressionAST_ != nullptr; }

  // --- Type (type, size, precision, scale and descriptions: see TmvWithDataType) ---
  // The server's own spelling of the type.
  const WideString& FieldTypeName() const { return fieldTypeName_; }
  void SetFieldTypeName(WideStringView value);
  bool PrimaryKey() const { return primaryKey_; }
  void SetPrimaryKey(bool value);
  bool Nullable() const { return nullable_; }
  void SetNullable(bool value);
  bool ReadOnly() const { return readOnly_; }
  void SetReadOnly(bool value);

  // The type name with "(precision,scale)" for a variable precision type of
  // the dialect, else with "(size)" unless the dialect prints the type
  // without one; no blanks.
  WideString GetFieldTypeNameAndSize() const;

  // --- Statistics: for a field of a FROM source or a select's result, the
  // objects and columns that it reads. Null until prepared; not copied by
  // Assign (each gathering fills them afresh). ---
  TmvStatsObjects* UsedDatabaseObjects() const { return usedDatabaseObjects_.get(); }
  TmvStatsColumns* UsedDatabaseObjectColumns() const { return usedDatabaseObjectColumns_.get(); }
  // Makes the two lists when missing.
  void PrepareStatsCollections();

  // --- XML (see MetadataXml.h) ---
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* nodeName) override;
  // Resets the field to its defaults, then reads the children in any order;
  // a type that names no field type raises EmvMetadataXMLError.
  void LoadFromXMLNode(pugi::xml_node element) override;

 private:
  std::unique_ptr<TmvStatsObjects> usedDatabaseObjects_;
  std::unique_ptr<TmvStatsColumns> usedDatabaseObjectColumns_;
  TmvOwned<TSQLQualifiedName> name_;
  WideString expression_;
  TmvOwned<TSQLExpressionItem> expressionAST_;
  WideString fieldTypeName_;
  bool primaryKey_ = false;
  bool nullable_ = true;
  bool readOnly_ = false;
};

class TmvMetadataFieldsList : public TmvMetadataLoadedListOf<TmvMetadataField> {
  MV_DECLARE_METADATA_CLASS()
 public:
  TmvMetadataFieldsList(TmvMetadataBase* parent, TmvBaseSQLContext* context);
  const char* GetXMLItemName() const override { return "field"; }

  TmvMetadataField* AddField(const TSQLQualifiedName* name, TFieldType fieldType = ftUnknown, int32_t size = 0,
                             bool nullable = true, bool readOnly = false, WideStringView shortDescription = {},
                             WideStringView longDescription = {}, WideStringView altName = {});
  // A one-part name from a token: an identifier is cloned, a string literal
  // is unquoted into an identifier, any other token gives an identifier of its text.
  TmvMetadataField* AddField(const TastToken* token);
  // A name read from SQL text; "Invalid object name" for text that is no name.
  TmvMetadataField* AddField(WideStringView text);
  TmvMetadataField* AddField(const TmvField& field);
  TmvMetadataField* AddField(const TmvFieldDef& def);

  // Index of the field of that name, or -1. A token is compared with
  // one-part names only.
  int FindFieldByName(const TastToken* token) const;
  int FindFieldByName(const TastTokenIdentifier* token) const;
  int FindFieldByName(const TSQLQualifiedName* name) const;
  // SQL text; without a syntax provider the upper-case texts of one-part
  // names are compared. Text that is no name finds nothing.
  int FindFieldByName(WideStringView text) const;
};

}  // namespace mv
