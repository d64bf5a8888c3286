// Dotted names. A qualified name holds its parts from the inside out:
// Items[0] is the object's own name, Items[1] its schema (where the dialect
// has schemas), and the outermost qualifier stands last; for db.dbo.t,
// Items = [t, dbo, db]. A database link (written after "@") is itself a
// qualified name.
//
//   TSQLQualifiedName   a name
//   TSQLDatabaseObject  a name of a table, view or function, optionally bound
//                       to the FROM source it refers to (or that it names)
//   TSQLObjectColumn    a column name, optionally bound to its FROM source
#pragma once

#include "tree/Tokens.h"

namespace mv {

class TSQLQualifiedName : public TastTokenList {
  MV_AST_NODE(TSQLQualifiedName);

 public:
  // --- Parts. "Name" is the inner end (Items[0]), "prefix" the outer end. ---
  void AddName(TmvOwned<TastToken> token);
  void AddName(WideStringView text, bool quoted);
  // An identifier given as SQL text, quoted where it has to be.
  void AddName(WideStringView sqlText);
  // Clones of the other's parts, keeping their order.
  void AddName(const TSQLQualifiedName* other);
  void AddPrefix(TmvOwned<TastToken> token);
  void AddPrefix(WideStringView text, bool quoted);
  void AddPrefix(WideStringView sqlText);
  void AddPrefix(const TSQLQualifiedName* other);
  TmvOwned<TastToken> ExtractName();
  TmvOwned<TastToken> ExtractPrefix();
  void RemoveLastName();     // deletes Items[0]
  void RemoveFirstPrefix();  // deletes the last item
  // A clone without its n innermost / n outermost parts.
  TmvOwned<TSQLQualifiedName> GetNameWithoutNames(int n) const;
  TmvOwned<TSQLQualifiedName> GetNameWithoutPrefixes(int n) const;
  // The other's parts match this name's from the outermost inward; false when the other is longer.
  bool StartsWith(const TSQLQualifiedName* other) const;
  // Clones of the other's parts and link in place of this name's, and
  // nothing else: no binding, no statistics.
  void AssignParts(const TSQLQualifiedName& other);
  // Empties the parts and frees the link.
  void Clear();
  // The name read from SQL text; empty text clears it. Raises Exception
  // "Invalid object name" for text that is no name.
  void SetQualifiedName(WideStringView sqlText);

  // --- Comparison. ---
  // The link's tokens, then the parts from the outermost to the object name.
  void GetTokensToCompare(TastTokenRefs& list) const;
  // The tokens a name compares by; a bound name compares by what it refers to.
  virtual void GetAllTokensToCompare(TastTokenRefs& list) const;

  // --- Text. ---
  WideString GetQualifiedName() const;
  WideString GetQualifiedNameWithQuotes() const;
  WideString GetQualifiedNameWithoutQuotes() const;
  WideString GetQualifiedNameForServer() const;
  WideString GetNonQualifiedNameNames() const;

  // --- Printing. ---
  virtual void BuildQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  virtual void BuildQualifiedNameDBLink(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  virtual void BuildQualifiedName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // The parts from the outermost down, "." between them.
  void BuildNonQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

  // --- XML: an element `tag`, a "dblink" child when linked, then one token
  // element `itemTag` per part from Items[0] on. ---
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* tag, const char* itemTag) const;
  void LoadFromXMLNode(pugi::xml_node element, const char* itemTag);
};

// True for null and for a name with no parts whose link is empty too.
bool IsQualifiedNameEmpty(const TSQLQualifiedName* name);

class TSQLDatabaseObject : public TSQLQualifiedName {
  MV_AST_NODE(TSQLDatabaseObject);

 public:
  // Whether this is the FROM source's own name (of its object or function).
  bool IsOwnNameOfSource() const;

  void GetAllTokensToCompare(TastTokenRefs& list) const override;
  void GetReferencedDatasources(TSQLFromSourceList& list) override;
  bool ReplaceReferencesToDatasource(TSQLFromSource* oldSource, TSQLFromSource* newSource) override;
  // Makes a bound name self-contained again (the source's alias or name as prefix) and unbinds it.
  void RestoreColumnPrefix() override;
  // Bound: the object its source stands for, with the source's alias (the
  // objects behind a with item or a virtual object). Defined by the metadata
  // layer (metadata/TreeStatistics.cpp).
  int CalcStatistics() override;

  // The source's column prefix when bound, else the full name.
  void BuildQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // The name with the prefixes the builder's ObjectPrefixSkipping leaves.
  void BuildQualifiedNameNamesFull(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // Bound: the source prints the name (prefix, suffix). Otherwise, and for
  // a source that cannot be named, as a qualified name.
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLObjectColumn : public TSQLQualifiedName {
  MV_AST_NODE(TSQLObjectColumn);

 public:
  // The field the column is bound to, only while it is still a field of the
  // source's metadata object (a reloaded or dropped field reads as none).
  TmvMetadataField* GetMetadataField() const;
  void SetMetadataField(TmvMetadataField* field) { MetadataField = field; }
  // Bound to a field with an alternate name, under UseAltNames: that name.
  void BuildQualifiedNameNames(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  void GetAllTokensToCompare(TastTokenRefs& list) const override;
  void GetReferencedDatasources(TSQLFromSourceList& list) override;
  void GetReferencedColumns(TSQLObjectColumnList& list) override;
  bool ReplaceReferencesToDatasource(TSQLFromSource* oldSource, TSQLFromSource* newSource) override;
  void RestoreColumnPrefix() override;
  // The object of its source, then what the source's field of that name
  // reads; without such a field, the column by the object's and its own
  // name. An unbound column counts only with a prefix (its object's name).
  int CalcStatistics() override;

  // Bound: the source's prefix, ".", the column's own name, the source's
  // suffix. Otherwise as a qualified name. Then "(+)" when marked.
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

}  // namespace mv
