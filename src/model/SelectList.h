// The select list of one SELECT: the rows below the design pane. One row
// (TmvSelectItem) stands for one expression that the SELECT mentions; it can
// at once be an output column, a sort key, a group key and the left side of
// conditions. The SELECT's items, WHERE, GROUP BY, HAVING and ORDER BY are
// all held here.
//
// WHERE and HAVING are held as a grid: each row keeps its conditions with the
// left-hand expression taken out, one entry per condition column; the entries
// of a column are ANDed across rows and the columns are ORed. What the grid
// cannot show stays inside one entry, so no statement is refused.
//
// The operations are defined in several files:
//   SelectList.cpp            the list, the row invariant, aggregates, loading
//                             of the select clause and the final split
//   SelectItem.cpp            a row: capabilities, expression, plain setters,
//                             sort, datasource news
//   SelectListConditions.cpp  the condition grid in both directions
//   SelectListClauses.cpp     GROUP BY and ORDER BY in both directions, the
//                             select clause of the result tree
//   SelectItemUI.cpp          what the grid calls (the ...UI setters), the
//                             expression and alias text, names and aliases,
//                             grouping strings, the row menu
//   SelectListFields.cpp      fields and expressions added by name or text
//   ConditionCriteria.cpp     the criteria text of a cell
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "model/ControlOwner.h"
#include "model/QueryModelHost.h"
#include "support/WideString.h"

namespace mv {

class TastNode;
class TastTokenIdentifier;
class TmvDatasource;
class TmvMetadataField;
class TmvUnionSubQuery;
class TSQLAliasExpression;
class TSQLExpressionAggregate;
class TSQLExpressionItem;
class TSQLFromSource;
class TSQLGroupByList;
class TSQLOrderByClause;
class TSQLOrderByItem;
class TSQLQualifiedName;
class TSQLQualifiedNamesList;
class TSQLSelectItem;
class TSQLSelectItems;
class TmvSelectList;

// Where the conditions of a row print.
enum TmvConditionsType { ctNone, ctWhere, ctHaving };

// A set of TmvConditionsType.
class TmvConditionsTypes {
 public:
  constexpr TmvConditionsTypes() = default;
  constexpr TmvConditionsTypes(std::initializer_list<TmvConditionsType> types) {
    for (TmvConditionsType type : types) bits_ |= Bit(type);
  }
  static constexpr TmvConditionsTypes All() { return {ctNone, ctWhere, ctHaving}; }
  constexpr bool Contains(TmvConditionsType type) const { return (bits_ & Bit(type)) != 0; }
  constexpr bool Empty() const { return bits_ == 0; }
  constexpr void Include(TmvConditionsType type) { bits_ |= Bit(type); }
  constexpr void Exclude(TmvConditionsType type) { bits_ &= ~Bit(type); }
  constexpr bool operator==(const TmvConditionsTypes&) const = default;

 private:
  static constexpr uint8_t Bit(TmvConditionsType type) { return static_cast<uint8_t>(1u << type); }
  uint8_t bits_ = 0;
};

enum TmvQueryBuilderItemSortType { stNone, stAsc, stDesc };

// The null ordering of a sort key, as TSQLOrderByItem::NullOrdering holds it.
enum TSQLOrderByNullOrdering : uint8_t { noNone = 0, noNullsFirst = 1, noNullsLast = 2 };

// The aggregate prefix, as TSQLExpressionAggregate::Mode holds it.
enum TmvAggregatePrefix : uint8_t { apNone = 0, apDistinct = 1, apUnique = 2 };

class TmvSelectItem : public TmvQueryBuilderControlOwner {
  MV_DECLARE_CLASS()
 public:
  TmvSelectItem(TmvQueryModelHost* host, TmvSelectList* selectList);
  ~TmvSelectItem() override;

  TmvSelectList* SelectList() const { return selectList_; }
  TmvUnionSubQuery* UnionSubQuery() const;
  // The row's place in the list.
  int Index() const;

  // --- Fields ---
  bool Select() const { return select_; }
  // A TSQLExpressionItem, a TSQLSelectItem for `*` and `t.*`, or null.
  TastNode* Expression() const { return expression_.get(); }
  TSQLFromSource* ExpressionFromSource() const { return expressionFromSource_; }
  TSQLQualifiedName* ExpressionFieldName() const { return expressionFieldName_; }
  TSQLExpressionAggregate* Aggregate() const { return aggregate_.get(); }
  TSQLAliasExpression* Alias() const { return alias_.get(); }
  TmvQueryBuilderItemSortType SortType() const { return sortType_; }
  TSQLOrderByNullOrdering SortNullOrdering() const { return sortNullOrdering_; }
  TSQLOrderByItem* OrderByItem() const { return orderByItem_.get(); }
  bool Grouping() const { return grouping_; }
  TmvConditionsType ConditionsType() const { return conditionsType_; }
  // Entry `index` (a condition column); null when empty or beyond the list.
  TSQLExpressionItem* Conditions(int index) const;
  // The length of the list of entries, trailing empty ones included.
  int ConditionsListCount() const { return static_cast<int>(conditions_.size()); }

  // Empties the row: expression, aggregate, alias, conditions, sort, names;
  // grouping off, ctWhere, out of the sort order.
  void Clear();

  // --- Capabilities ---
  bool IsCanSelect() const;
  bool IsCanSort() const;
  bool IsCanGrouping() const;
  bool IsSupportsAlias() const;
  bool IsSupportConditions() const;
  bool IsAggregatedExpression() const;
  bool IsLogicalExpression() const;
  // The row has an expression and no conditions.
  bool IsExpressionOnly() const;
  bool ExpressionOnly() const { return IsExpressionOnly(); }
  // Whether GetExpression of the row prints as `expression` does.
  bool IsEqualExpression(const TastNode* expression) const;
  TmvDatasource* GetExpressionDatasource() const;
  TmvMetadataField* GetExpressionField() const;
  // The entries up to the last non-empty one.
  int GetConditionsCount() const;

  // --- Expression ---
  // The expression with the aggregate around it (a clone), or null.
  TmvOwned<TastNode> GetExpression() const;
  // The select item of the result tree for this row, or null.
  TmvOwned<TSQLSelectItem> GetSelectItem() const;
  // Sets ExpressionFromSource and ExpressionFieldName from the expression.
  void CalcColumnAndDatasource();
  // Takes over a select item, an alias-bearing select expression or a bare
  // expression (cloned and fixed up).
  void LoadFromAST(TastNode* node);
  void LoadFromAST(TmvOwned<TastNode> node);
  // Sets the expression (the row takes it; null empties the row).
  void SetASTExpression(TmvOwned<TastNode> expression);
  WideString GetExpressionString() const;
  // Unparseable text becomes a string constant (SelectItemUI.cpp).
  void SetExpressionString(const WideString& text);
  void SetExpressionStringUI(const WideString& text);
  // `t.*` without a field name, else a column bound to the datasource.
  void SetFieldExpression(TmvDatasource* datasource, const TSQLQualifiedName* fieldName);
  void SetFieldExpression(TmvDatasource* datasource, const WideString& fieldName);
  // Text to node; false when the text does not parse.
  bool ParseNewExpression(const WideString& text, TmvOwned<TastNode>& node, TmvOwned<TSQLAliasExpression>& alias);
  // SimplifyTreeRecursive and PrepareAndFixupRecursive in this SELECT's context.
  void FixupExpression(TastNode* node);

  // --- Output flag ---
  // Raises "This expression is not selectable" when it cannot be selected.
  void SetSelect(bool value);
  void SetSelectUI(bool value);

  // --- Aggregate ---
  void SetAggregate(const TSQLExpressionAggregate* aggregate);
  WideString GetAggregateName() const;
  void SetAggregateName(const WideString& name);
  TmvAggregatePrefix GetAggregatePrefix() const;
  void SetAggregatePrefix(TmvAggregatePrefix prefix);
  WideString GetAggregateString() const;
  void SetAggregateString(const WideString& text);
  void SetAggregateStringUI(const WideString& text);
  // The names this row may take: simple ones, one-argument ones, prefixed ones.
  void GetAggregateNameList(TSQLQualifiedNamesList& simpleNames, TSQLQualifiedNamesList& oneParamNames,
                            TSQLQualifiedNamesList& prefixedNames) const;
  // The texts the grid offers, an empty one first.
  std::vector<WideString> GetAggregateStringList() const;

  // --- Alias (SelectItemUI.cpp) ---
  WideString GetAliasString() const;
  void SetAliasString(const WideString& text);
  void SetAliasStringUI(const WideString& text);

  // --- Sort ---
  void SetSortType(TmvQueryBuilderItemSortType type);
  void SetSortNullOrdering(TSQLOrderByNullOrdering ordering);
  // 0-based place in the sort order; -1 when not sorted.
  int GetSortOrder() const;
  void SetSortOrder(int position);
  WideString GetSortTypeString() const;
  void SetSortTypeString(const WideString& text);
  WideString GetSortOrderString() const;
  void SetSortOrderString(const WideString& text);
  // The sort key of the result tree for this row.
  TmvOwned<TSQLOrderByItem> GetOrderByItem() const;
  // Takes the item (stDesc or stAsc, null ordering); its expression is freed.
  void LoadOrderByItemFromAST(TmvOwned<TSQLOrderByItem> item);

  // --- Grouping ---
  void SetGrouping(bool value);
  void SetGroupingUI(bool value);
  // The group key of the result tree for this row.
  TmvOwned<TastNode> GetGroupByItem() const;
  WideString GetGroupingTypeString() const;
  void SetGroupingTypeString(const WideString& text);
  std::vector<WideString> GetGroupingTypeStringList() const;

  // --- Conditions ---
  void SetConditionsType(TmvConditionsType type);
  void SetConditionsTypeUI(TmvConditionsType type);
  // The entry printed (left side taken out: "= 1"); empty when none.
  WideString GetConditionString(int index) const;
  // The criteria text typed into a cell (ConditionCriteria.cpp).
  void SetConditionString(int index, const WideString& text);
  TSQLExpressionItem* GetASTCondition(int index) const { return Conditions(index); }
  // Stores the entry (the row takes it; null empties it).
  void SetASTCondition(int index, TmvOwned<TSQLExpressionItem> condition);
  // Adds a condition read from a WHERE or HAVING to column `index`.
  void AddCondition(int index, TmvOwned<TSQLExpressionItem> condition);
  // Drops trailing empty entries.
  void ShrinkConditionsList();
  // Takes every left operand equal to this row's expression out of `condition`.
  void RemoveLExpression(TSQLExpressionItem* condition) const;
  // Puts `expression` (cloned) into each place a left operand was taken from.
  void RestoreLExpression(TSQLExpressionItem* condition, const TastNode* expression) const;

  // --- Names (SelectItemUI.cpp) ---
  std::vector<WideString> GetOccupiedColumnNames() const;
  bool IsUnnamedColumn() const;
  bool IsColumnNamesConflict() const;
  WideString GetAliasBaseName() const;
  int GetAliasStartIndex() const;
  // A unique alias for this row, set on it.
  void CreateUniqueAlias();
  // The alias from the field's name (a virtual calculated field in a sub-query).
  void CreateAliasFromFieldName();

  // --- Row menu (SelectItemUI.cpp) ---
  bool CanAcceptMoveUpEvent() const;
  bool CanAcceptMoveDownEvent() const;
  bool CanAcceptRemoveEvent() const;
  bool CanAcceptInsertEmptyEvent() const;
  void MoveUpEvent();
  void MoveDownEvent();
  void RemoveEvent();
  void InsertEmptyEvent();
  // The entries above as data, each enabled by its Can... test.
  TmvMenu GetPopupMenu(ImvControl* control) override;

 protected:
  void Destroying() override;
  void DoSQLUpdated() override;
  bool NotifyDatasourceDestroyingInternal(TmvDatasource* datasource) override;
  void NotifyDatasourceReplacedInternal(TmvDatasource* oldDatasource, TmvDatasource* newDatasource) override;
  TmvOwned<TastNode> CreateResultAST() override;

 private:
  friend class TmvSelectList;
  void SetExpressionInternal(TmvOwned<TastNode> expression);

  TmvSelectList* selectList_;
  bool select_ = false;
  TmvOwned<TastNode> expression_;
  TSQLFromSource* expressionFromSource_ = nullptr;
  TSQLQualifiedName* expressionFieldName_ = nullptr;
  TmvOwned<TSQLExpressionAggregate> aggregate_;
  TmvOwned<TSQLAliasExpression> alias_;
  TmvQueryBuilderItemSortType sortType_ = stNone;
  TSQLOrderByNullOrdering sortNullOrdering_ = noNone;
  TmvOwned<TSQLOrderByItem> orderByItem_;
  bool grouping_ = false;
  TmvConditionsType conditionsType_ = ctWhere;
  std::vector<TmvOwned<TSQLExpressionItem>> conditions_;
};

class TmvSelectList : public TmvQueryBuilderControlOwner {
  MV_DECLARE_CLASS()
 public:
  // Owned by `unionSubQuery`, which is also its update parent.
  TmvSelectList(TmvQueryModelHost* host, TmvUnionSubQuery* unionSubQuery);
  ~TmvSelectList() override;
  void AfterConstruction() override;

  TmvUnionSubQuery* UnionSubQuery() const { return unionSubQuery_; }

  // --- Rows ---
  int Count() const { return static_cast<int>(items_.size()); }
  TmvSelectItem* Items(int index) const;
  int IndexOf(const TmvSelectItem* item) const;
  void Move(int from, int to);
  // Frees every row (the invariant adds the empty one at the end of the update).
  void Clear();
  TmvSelectItem* AddEmptyRow();
  TmvSelectItem* InsertEmptyRow(int index);
  void RemoveLastRow();
  void Delete(int index);

  const std::vector<TmvSelectItem*>& WhereOrder() const { return whereOrder_; }
  const std::vector<TmvSelectItem*>& HavingOrder() const { return havingOrder_; }
  const std::vector<TmvSelectItem*>& OrderBy() const { return orderBy_; }
  int GetOrderByItemsCount() const { return static_cast<int>(orderBy_.size()); }
  TmvSelectItem* GetOrderByItems(int index) const;
  bool Filling() const { return filling_; }
  TSQLSelectItems* SelectItemsAST() const { return selectItemsAST_.get(); }
  TSQLGroupByList* GroupByAST() const { return groupByAST_.get(); }
  TSQLOrderByClause* OrderByAST() const { return orderByAST_.get(); }

  // --- Fields and expressions (SelectListFields.cpp) ---
  // Text names that do not parse raise "Invalid field name: %s".
  TmvSelectItem* AddField(TmvDatasource* datasource, const TSQLQualifiedName* fieldName);
  TmvSelectItem* AddField(TmvDatasource* datasource, const WideString& fieldName);
  TmvSelectItem* InsertField(int index, TmvDatasource* datasource, const TSQLQualifiedName* fieldName);
  TmvSelectItem* InsertField(int index, TmvDatasource* datasource, const WideString& fieldName);
  TmvSelectItem* FindField(TmvDatasource* datasource, const TSQLQualifiedName* fieldName) const;
  TmvSelectItem* FindField(TmvDatasource* datasource, const WideString& fieldName) const;
  void RemoveFields(TmvDatasource* datasource, const TSQLQualifiedName* fieldName);
  void RemoveFields(TmvDatasource* datasource, const WideString& fieldName);
  TmvSelectItem* AddExpression(const WideString& text);
  TmvSelectItem* InsertExpression(int index, const WideString& text);
  TmvSelectItem* AddASTExpression(TmvOwned<TastNode> expression);
  TmvSelectItem* InsertASTExpression(int index, TmvOwned<TastNode> expression);

  // --- Finding rows ---
  // The first empty row (or a new one) loaded with a clone of `expression`,
  // unselected, of type `type`.
  TmvSelectItem* AddSelectItem(const TastNode* expression, TmvConditionsType type);
  // The first row from `startIndex` whose type is in `types` and whose
  // expression prints as `expression`; null when none.
  TmvSelectItem* FindSelectItemFrom(int startIndex, const TastNode* expression, TmvConditionsTypes types) const;
  TmvSelectItem* FindOrAddSelectItem(const TastNode* expression, TmvConditionsTypes types,
                                     TmvConditionsType newType);
  TmvSelectItem* FindOrAddSelectItemFrom(int startIndex, const TastNode* expression, TmvConditionsTypes types,
                                         TmvConditionsType newType);

  // --- Result clauses ---
  TmvOwned<TSQLSelectItems> GetSelectItemsTree();
  TmvOwned<TSQLExpressionItem> GetConditionTree(TmvConditionsTypes types) const;
  TmvOwned<TSQLGroupByList> GetGroupByTree() const;
  TmvOwned<TSQLOrderByClause> GetOrderByClause() const;
  // x = TRUE becomes x, x = FALSE becomes NOT x, below AND, OR, NOT and brackets.
  static TmvOwned<TSQLExpressionItem> TransformExpression(TmvOwned<TSQLExpressionItem> expression);

  // --- Conditions ---
  int GetMaxConditionCount() const;
  int GetMaxConditionCountInternal(TmvConditionsTypes types) const;
  void GetSelectItemsWithConditionsOfTypeInColumn(int column, TmvConditionsTypes types,
                                                  std::vector<TmvSelectItem*>& list) const;
  // Puts the row on WhereOrder or HavingOrder unless it stands there.
  void AddConditionOrder(TmvConditionsType type, TmvSelectItem* item);

  // --- Loading (each takes the node over) ---
  void LoadSelectListFromAST(TmvOwned<TSQLSelectItems> items);
  // All rows to ctNone until a condition claims them.
  void StartConditionsLoading();
  void LoadConditionFromAST(TmvOwned<TSQLExpressionItem> expression, TmvConditionsType type);
  void LoadGroupByListFromAST(TmvOwned<TSQLGroupByList> list);
  void LoadOrderByListFromAST(TmvOwned<TSQLOrderByClause> list);
  // Splits aggregates off and settles the rows still of type ctNone.
  void FinalizeLoading();
  // Brackets stripped, then simplified.
  static TmvOwned<TSQLExpressionItem> PrepareLogicalExpressionForLoading(TmvOwned<TSQLExpressionItem> expression);
  // The left-hand expression of a condition (see the .cpp); may replace
  // `condition` (a bare logical x becomes x = True).
  static TastNode* FindExpressionItem(TmvOwned<TSQLExpressionItem>& condition);

  // --- Queries ---
  bool IsQueryWithAggregates() const;
  bool IsQueryWithGrouping() const;

  // --- Names (SelectItemUI.cpp) ---
  bool IsUniqueColumnName(const TastTokenIdentifier* identifier, const TmvSelectItem* exceptItem) const;
  bool IsUniqueColumnName(const WideString& name, const TmvSelectItem* exceptItem) const;
  bool IsAliasAssigned(const TastTokenIdentifier* identifier) const;
  bool IsAliasAssigned(const WideString& name) const;
  WideString CreateUniqueAlias(const WideString& base, int startIndex) const;
  void AssignAliasesToDuplicateColumnNames();

  // --- Control ---
  ImvSelectListControl* SelectListControl() const;
  // Refills the grid; string setters ignore its writes meanwhile.
  void FillList();
  int GetControlsCount() const override { return 1; }
  // The widths of the grid's columns: the general ones and the condition
  // columns. The grid reads them when it updates and reports a change
  // through the setters, which act on a change only and update it.
  const std::vector<int32_t>& GeneralColumnsWidth() const { return generalColumnsWidth_; }
  void SetGeneralColumnsWidth(const std::vector<int32_t>& widths);
  const std::vector<int32_t>& ConditionsColumnsWidth() const { return conditionsColumnsWidth_; }
  void SetConditionsColumnsWidth(const std::vector<int32_t>& widths);

 protected:
  void Destroying() override;
  void DoAfterUpdated() override;
  TmvOwned<TastNode> CreateResultAST() override;

 private:
  friend class TmvSelectItem;
  TmvSelectItem* CreateRow(int index);
  // Rows leave the order lists when they are freed.
  void ItemDestroying(TmvSelectItem* item);
  void RemoveFromOrderBy(TmvSelectItem* item);
  void AddToOrderBy(TmvSelectItem* item);
  void MoveInOrderBy(TmvSelectItem* item, int position);
  // A one-part column without prefix: the row that shows this name.
  TmvSelectItem* FindRowByOccupiedName(const TastNode* expression) const;

  TmvUnionSubQuery* unionSubQuery_;
  std::vector<TmvSelectItem*> items_;
  std::vector<TmvSelectItem*> whereOrder_;
  std::vector<TmvSelectItem*> havingOrder_;
  std::vector<TmvSelectItem*> orderBy_;
  bool filling_ = false;
  TmvOwned<TSQLSelectItems> selectItemsAST_;
  TmvOwned<TSQLGroupByList> groupByAST_;
  TmvOwned<TSQLOrderByClause> orderByAST_;
  std::vector<int32_t> generalColumnsWidth_;
  std::vector<int32_t> conditionsColumnsWidth_;
};

}  // namespace mv
