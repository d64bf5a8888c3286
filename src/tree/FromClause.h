// The FROM tree: sources (objects, sub-queries, functions, variables),
// groups of sources joined by commas or join operators, and the join kinds.
// In a group the join kind of an item stands in front of it and its ON
// condition after it; the first item of a group has neither in print.
#pragma once

#include "tree/ExpressionBase.h"
#include "tree/MetadataHooks.h"

namespace mv {

class TSQLAliasObjectAlias : public TastNode {
  MV_AST_NODE(TSQLAliasObjectAlias);

 public:
  // The name alone.
  void BuildAliasName(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // ["As"] Name; the word follows the builder's AsKeywordInObjectAlias and the dialect.
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLFromSource : public TastNode {
  MV_AST_NODE(TSQLFromSource);

 public:
  // The metadata object the source reads, only while the context's
  // container still holds it: a dropped object reads as none.
  TmvMetadataObject* GetMetadataObject() const;
  void SetMetadataObject(TmvMetadataObject* object) { MetadataObject = object; }
  // How a column refers to this source: true when something was printed.
  virtual bool BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  virtual void BuildColumnSuffix(TSQLBuilder&, const TSQLBuilderSelectFormat&) {}
  // The source itself, without alias.
  virtual void BuildExpression(TSQLBuilder&, const TSQLBuilderSelectFormat&) {}
  // A blank and the alias, when there is one.
  virtual void BuildAlias(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // The join kind, or "," when there is none.
  void BuildJoinOperator(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // (names) after the alias, when there are column names.
  void BuildColumnNamesList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // The text of BuildExpression alone, through that builder.
  WideString GetSimpleExpression(TSQLBuilder& builder);

  // Expression, alias, column names.
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

  // --- Columns the source offers (defined by the metadata layer,
  // metadata/SourceFieldLists.cpp). ---
  // As the last fix-up found them; made empty on first use.
  TmvMetadataFieldsList* FieldsList() const { return fieldsList_.Get(SQLContext()); }
  // Takes the contents of `list` unless it is this source's own.
  void SetFieldsList(const TmvMetadataFieldsList* list);
  // Fills FieldsList. The base asks the server for the columns of its
  // expression (a one-row query), unless the container works offline.
  // `withItems` and `fromSources` are what the fix-up has in sight.
  virtual void CalcFieldsList(const TSQLWithClauseItemList& withItems, const TSQLFromSourceList& fromSources,
                              TmvConnection* connection);

  // --- Statistics (metadata/TreeStatistics.cpp). The fields of FieldsList
  // carry what each column reads: a table's, its own column; a derived
  // table's or a with item's, what the select items behind it read. ---
  // Also makes the fields' lists; a source that reads an object (a table, a
  // function) records the object and the column in each field.
  void PrepareCalcStatistics() override;
  // Also passes what the result fields of a derived table or a with item
  // read to the fields of FieldsList.
  int CalcStatistics() override;

 private:
  mutable TastOwnedFieldsList fieldsList_;
};

class TSQLFromObject : public TSQLFromSource {
  MV_AST_NODE(TSQLFromObject);

 public:
  // Assign (by hand) leaves WithItem empty (the fix-up sets it again), and
  // binds an object name that named the source to this copy.
  // RestoreColumnPrefixRecursive leaves the own name as it is.
  bool RestoresColumnPrefixOf(const TastNodeBase* child) const override;
  // The alias; else the metadata object's alternate name under UseAltNames;
  // else the bare name where the dialect takes it as an alias; else the name.
  bool BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // The name's link, unless an alias or the alternate name stands for it.
  void BuildColumnSuffix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // A virtual object's expression under ExpandVirtualObjects; else the
  // alternate name under UseAltNames; else the name and its link.
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // An expanded virtual object without an alias is named by its alternate
  // name (or its name).
  void BuildAlias(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

 private:
  // The metadata object's alternate name when the builder uses alternate names, else null.
  TastTokenIdentifier* AltNameToPrint(const TSQLBuilder& builder) const;
  // The virtual object's expression when the builder expands them, else null.
  TSQLFromSource* VirtualExpressionToPrint(const TSQLBuilder& builder) const;

 public:
  // The with item's columns; else the metadata object's (loaded on demand);
  // else the server's answer for the name.
  void CalcFieldsList(const TSQLWithClauseItemList& withItems, const TSQLFromSourceList& fromSources,
                      TmvConnection* connection) override;
};

// A derived table.
class TSQLFromQuery : public TSQLFromSource {
  MV_AST_NODE(TSQLFromQuery);

 public:
  // Only an alias can name a derived table.
  bool BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // (sub-query) under the builder's FromSubQueryFormat.
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // The columns of the sub-query's first select.
  void CalcFieldsList(const TSQLWithClauseItemList& withItems, const TSQLFromSourceList& fromSources,
                      TmvConnection* connection) override;
};

// A procedure or table function used as a source.
class TSQLFromFunction : public TSQLFromSource {
  MV_AST_NODE(TSQLFromFunction);

 public:
  // Assign (by hand) binds a function name that named the source to this copy.
  // RestoreColumnPrefixRecursive leaves the own name as it is.
  bool RestoresColumnPrefixOf(const TastNodeBase* child) const override;
  bool BuildColumnPrefix(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  void BuildFunctionNameExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // (params); "()" without parameters only where the dialect takes empty brackets.
  void BuildParamsExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);
  // The metadata procedure's loaded columns; else the server's answer for a
  // call with every parameter null, which then also fills the procedure.
  void CalcFieldsList(const TSQLWithClauseItemList& withItems, const TSQLFromSourceList& fromSources,
                      TmvConnection* connection) override;
};

class TSQLFromBuiltInFunction : public TSQLFromFunction {
  MV_AST_NODE(TSQLFromBuiltInFunction);
};

class TSQLFromVariable : public TSQLFromSource {
  MV_AST_NODE(TSQLFromVariable);

 public:
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLFromNodesList : public TSQLFromSource {
  MV_AST_NODE(TSQLFromNodesList);

 public:
  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Sources joined one after the other. A group prints its list only: it has
// neither alias nor column names in text.
class TSQLFromGroup : public TSQLFromSource {
  MV_AST_NODE(TSQLFromGroup);

 public:
  TSQLFromSource* GetItems(int index) const { return TmvCast<TSQLFromSource>(Items.Item(index)); }
  int GetCount() const { return Items.Count(); }
  TSQLFromSource* Add(TmvOwned<TSQLFromSource> source);
  void Clear() { Items.Clear(); }
  void Delete(int index) { Items.Delete(index); }
  TmvOwned<TSQLFromSource> Extract(const TSQLFromSource* source);
  TmvOwned<TSQLFromSource> Extract(int index);
  int IndexOf(const TSQLFromSource* source) const { return Items.IndexOf(source); }

  void BuildExpression(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
  // A group offers no columns of its own: its items do.
  void CalcFieldsList(const TSQLWithClauseItemList& withItems, const TSQLFromSourceList& fromSources,
                      TmvConnection* connection) override;
};

// The top group of a select expression.
class TSQLFromClause : public TSQLFromGroup {
  MV_AST_NODE(TSQLFromClause);
};

// --- Join kinds ---

class TSQLJoinKind : public TastNode {
  MV_AST_NODE(TSQLJoinKind);

 public:
  virtual bool IsLeftOuter() const { return false; }
  virtual bool IsRightOuter() const { return false; }
};

class TSQLJoinKindCross : public TSQLJoinKind {
  MV_AST_NODE(TSQLJoinKindCross);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLJoinKindInner : public TSQLJoinKind {
  MV_AST_NODE(TSQLJoinKindInner);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLJoinKindOuter : public TSQLJoinKind {
  MV_AST_NODE(TSQLJoinKindOuter);

 protected:
  // <side> ["Outer"] "Join"; the word follows the builder's OuterKeywordInLinks and the dialect.
  void BuildOuter(TSQLBuilder& builder, const char16_t* side);
};

class TSQLJoinKindLeft : public TSQLJoinKindOuter {
  MV_AST_NODE(TSQLJoinKindLeft);

 public:
  bool IsLeftOuter() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLJoinKindRight : public TSQLJoinKindOuter {
  MV_AST_NODE(TSQLJoinKindRight);

 public:
  bool IsRightOuter() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TSQLJoinKindFull : public TSQLJoinKindOuter {
  MV_AST_NODE(TSQLJoinKindFull);

 public:
  bool IsLeftOuter() const override { return true; }
  bool IsRightOuter() const override { return true; }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

}  // namespace mv
