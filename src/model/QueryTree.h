// The skeleton of an editable query: the main query, sub-queries (derived
// tables, common table expressions, sub-selects in expressions), bracketed
// union groups, and the single SELECTs of a union.
//
//   TmvQueryBase        a union member: its node holds the operator that
//                       joins it to the member before it, and the ALL flag
//     TmvUnionSubQuery  one SELECT; holds the datasources
//     TmvUnionGroup     a bracketed group of members, in SQL order
//       TmvSubQuery     a whole sub-select, the outermost group of it
//         TmvQuery      the main query, one per host
//
// Every member of a sub-select (at any depth of brackets) is owned by the
// sub-query it lies in (its RootQuery); ParentQuery is the group that
// encloses it. A sub-query is owned by the object that keeps the syntax node
// it came from (a datasource, a select item, or the sub-query whose WITH
// clause defines it).
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "model/ControlOwner.h"
#include "model/Links.h"
#include "model/QueryModelHost.h"
#include "support/WideString.h"
#include "tree/SelectStatement.h"

namespace mv {

class TastTokenIdentifier;
class TmvDatasource;
class TmvDataSourceObject;
class TmvDatasourceGroup;
class TmvDatasourceQuery;
class TmvMetadataObject;
class TmvMetadataRelation;
class TSQLQualifiedName;
class TmvMetadataFieldsList;
class TmvSelectList;
class TmvUnionGroup;
class TmvUnionSubQuery;
class TmvSubQuery;
class TSQLSubQueryExpression;
class TSQLSubQueryExpressions;
class TSQLSubQuerySelectExpression;
class TSQLSubSelectStatement;
class TSQLSelectStatement;
class TSQLWithClause;
class TSQLWithClauseItem;

class TmvQueryBase : public TmvQueryBuilderControlOwner {
  MV_DECLARE_CLASS()
 public:
  TmvQueryBase(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* parent);
  ~TmvQueryBase() override;

  TmvUnionGroup* ParentQuery() const { return parentQuery_; }
  // Moves the member to the end of `group` (null: out of every group).
  void SetParentQuery(TmvUnionGroup* group);
  TmvSubQuery* RootQuery() const { return rootQuery_; }
  TSQLSubQueryExpression* QueryAST() const { return queryAST_.get(); }
  // Index in the parent group; -1 without one.
  int IndexInParent() const;

  // The bare operator ("Union"), and with " ALL" when the flag is set.
  WideString GetUnionOperator() const;
  // Stores the text with every " ALL" removed; the flag stays as it is.
  void SetUnionOperator(const WideString& text);
  bool GetUnionAllFlag() const;
  void SetUnionAllFlag(bool value);
  WideString GetUnionOperatorFull() const;
  // Upper-cases the text; " ALL" in it sets the flag, its absence clears it.
  void SetUnionOperatorFull(const WideString& text);

  // Moves `other` behind / in front of this member, into this member's group.
  void InsertAfter(TmvQueryBase* other);
  void InsertBefore(TmvQueryBase* other);

  virtual ImvUnionOperatorControl* GetUnionOperatorControl() const = 0;
  // The menu of the operator before this member: the dialect's set
  // operators, the one in force checked; each entry sets it.
  TmvMenu GetUnionOperatorMenu();
  // Takes the node over (a different old one is freed).
  virtual void LoadFromAST(TmvOwned<TSQLSubQueryExpression> node);

  void AfterConstruction() override;

 protected:
  friend class TmvUnionGroup;
  void Destroying() override;
  void SetQueryAST(TmvOwned<TSQLSubQueryExpression> node);
  TmvOwned<TSQLSubQueryExpression> TakeQueryAST() { return std::move(queryAST_); }
  // Copies operator and flag to the control when it is shown.
  void UpdateUnionOperator();
  // The parent group is going away while this member stays: to the root.
  void ParentGroupDestroying();

 private:
  TmvUnionGroup* parentQuery_ = nullptr;
  TmvSubQuery* rootQuery_ = nullptr;
  TmvOwned<TSQLSubQueryExpression> queryAST_;
};

class TmvUnionGroup : public TmvQueryBase {
  MV_DECLARE_CLASS()
 public:
  using TmvQueryBase::TmvQueryBase;

  int Count() const { return static_cast<int>(items_.size()); }
  TmvQueryBase* Items(int index) const;
  int IndexOf(const TmvQueryBase* item) const;

  // A new empty SELECT at the end. Raises the dialect's refusal first.
  TmvUnionSubQuery* Add();
  // A new empty bracketed group at the end. Raises the dialect's refusal first.
  TmvUnionGroup* AddGroup();
  // The same at `index` (0..Count, else a list index error).
  TmvUnionSubQuery* Insert(int index);
  TmvUnionGroup* InsertGroup(int index);
  // Moves a member within the group.
  void Move(int from, int to);
  // Takes a member out of the group and frees it.
  void Remove(TmvQueryBase* item);
  void Delete(int index);

  // Bracket moves: members next to the group (up to and including `bound`)
  // move in or out. See the .cpp for the exact rules.
  void AddToBegin(TmvQueryBase* bound);
  void AddToEnd(TmvQueryBase* bound);
  void RemoveFromBegin(TmvQueryBase* bound);
  void RemoveFromEnd(TmvQueryBase* bound);

  // A member made from a node, at the end.
  TmvUnionSubQuery* AddAST(TmvOwned<TSQLSubQuerySelectExpression> node);
  TmvUnionGroup* AddGroupAST(TmvOwned<TSQLSubQueryExpressions> node);

  // All SELECTs below, in SQL order.
  std::vector<TmvUnionSubQuery*> GetUnionSubQueriesList() const;
  void GatherUnionSubQueries(std::vector<TmvUnionSubQuery*>& list) const;
  // Frees every member, last first, in one update.
  virtual void Clear();
  TSQLSubQueryExpressions* GetUnionGroupAst() const;

  // Takes over the node and makes members of its members.
  void LoadFromAST(TmvOwned<TSQLSubQueryExpression> node) override;
  ImvUnionOperatorControl* GetUnionOperatorControl() const override;
  int GetControlsCount() const override { return 3; }
  // Destroys the group when it has no member left.
  void DestroyIfEmpty();

  // The bracket controls' moves: one member in or out on either side.
  void MoveLeftForwardEvent();
  void MoveLeftBackwardEvent();
  void MoveRightForwardEvent();
  void MoveRightBackwardEvent();
  // Dissolves the brackets: the members take the group's place.
  void RemoveBracketsEvent();
  // The menu of a bracket (a member in or out on that side, or no brackets),
  // of the operator, or of the group itself (no brackets).
  TmvMenu GetPopupMenu(ImvControl* control) override;

 protected:
  void Destroying() override;
  TmvOwned<TastNode> CreateResultAST() override;
  // The members of the node (QueryAST) leave it as members of the model.
  void LoadMembers();

 private:
  friend class TmvQueryBase;
  // Raises the dialect's refusal of a new member or group here.
  void CheckCanAdd(bool group) const;
  std::vector<TmvQueryBase*> items_;
};

class TmvUnionSubQuery : public TmvQueryBase {
  MV_DECLARE_CLASS()
 public:
  using TmvQueryBase::TmvQueryBase;
  void AfterConstruction() override;

  TmvDatasourceGroup* Datasources() const { return datasources_; }
  // The rows: select items, conditions, grouping and sort of this SELECT.
  TmvSelectList* SelectList() const { return selectList_; }
  TSQLSubQuerySelectExpression* SelectAST() const;

  void LoadFromAST(TmvOwned<TSQLSubQueryExpression> node) override;
  ImvUnionOperatorControl* GetUnionOperatorControl() const override;
  int GetControlsCount() const override { return 3; }
  bool MakeVisible(int index) const override;
  // The share of the page's height that the grid below the pane takes,
  // from 0 to 1 (a value outside is held at the nearer end). The page reads
  // it when it updates and reports a moved splitter through the setter,
  // which acts on a change only and updates it.
  double Ratio() const { return ratio_; }
  void SetRatio(double value);

  // The SELECT alone, with the sort of the whole query when it has none.
  WideString GetSql();
  // Replaces this SELECT by the text (one SELECT), keeping operator and flag.
  void SetSql(const WideString& text);
  // The text of one clause of the result tree; empty when there is none.
  WideString GetSelectListString();
  WideString GetFromClauseString();
  WideString GetWhereClauseString();
  WideString GetGroupByClauseString();
  WideString GetHavingClauseString();
  WideString GetOrderByClauseString();

  // The result tree of this SELECT as a node of its class (a clone).
  TmvOwned<TSQLSubQuerySelectExpression> GetResultQueryAST();

  // --- Adding datasources; the forms without a position use (0, 0). Each
  // returns null when the host refused (OnBeforeAddDatasource). ---
  TmvDataSourceObject* AddObject(const WideString& name, const WideString& alias);
  TmvDataSourceObject* AddObjectAt(const WideString& name, TmvPoint position, const WideString& alias);
  TmvDataSourceObject* AddObject(const TSQLQualifiedName* name, const TastTokenIdentifier* alias);
  TmvDataSourceObject* AddObjectAt(const TSQLQualifiedName* name, TmvPoint position,
                                   const TastTokenIdentifier* alias);
  TmvDataSourceObject* AddObject(TmvMetadataObject* object, const TastTokenIdentifier* alias);
  TmvDataSourceObject* AddObjectAt(TmvMetadataObject* object, TmvPoint position, const TastTokenIdentifier* alias);
  // AddObject, then the links of the metadata's relations, and those of
  // equal field names where the options ask for them.
  TmvDataSourceObject* AddObjectWithFK(const WideString& name, const WideString& alias);
  TmvDataSourceObject* AddObjectWithFKAt(const WideString& name, TmvPoint position, const WideString& alias);
  TmvDataSourceObject* AddObjectWithFK(const TSQLQualifiedName* name, const TastTokenIdentifier* alias);
  TmvDataSourceObject* AddObjectWithFKAt(const TSQLQualifiedName* name, TmvPoint position,
                                         const TastTokenIdentifier* alias);
  // The other end of the relation joined to `datasource`: the datasource
  // of the SELECT that reads it, or a new one; a link per column pair.
  TmvDataSourceObject* AddLinkedObject(TmvDatasource* datasource, TmvMetadataRelation* relation);
  // A procedure call: its text comes from OnQueryProcedureParameters.
  TmvDatasource* AddStoredProc(const WideString& name, const WideString& alias);
  TmvDatasource* AddStoredProcAt(const WideString& name, TmvPoint position, const WideString& alias);
  // Any FROM entry as text, or as a node (null without a provider).
  TmvDatasource* AddFromExpression(const WideString& text, const WideString& alias);
  TmvDatasource* AddFromExpressionAt(const WideString& text, TmvPoint position, const WideString& alias);
  TmvDatasource* AddFromExpressionAt(TmvOwned<TSQLFromSource> node, TmvPoint position,
                                     const TastTokenIdentifier* alias);
  // The common path of every adding: binding, a unique alias, the host's say.
  TmvDatasource* AddDatasourceHelper(TmvOwned<TSQLFromSource> node, TmvPoint position,
                                     const TmvClass& datasourceClass);
  // Puts the datasource into a new derived table in its place.
  TmvDatasourceQuery* ConvertDatasourceToDerivedTable(TmvDatasource* datasource);
  // A new empty derived table named "QueryN".
  TmvDatasourceQuery* AddSubQueryEvent();

  // --- Common table expressions from this SELECT's menu ---
  // The expressions this SELECT may use: the main query's, up to the one it
  // belongs to (that one too where recursion is allowed and this is not its
  // first SELECT).
  std::vector<TSQLWithClauseItem*> GetUsableCTEs() const;
  // A new empty expression named "QueryN" (before the one this SELECT
  // belongs to, else at the end), used by this SELECT.
  TmvDataSourceObject* AddNewCTEEvent();
  // This SELECT uses the expression, under a unique alias where its name is taken.
  TmvDataSourceObject* AddExistingCTEEvent(TSQLWithClauseItem* item);

  // --- Aliases (compared without regard to case) ---
  bool IsUniqueAlias(const WideString& name) const;
  WideString CreateUniqueAlias(const WideString& base) const;
  // The alias, else the metadata object's name, else the common table
  // expression's, else the object's own name; empty when none.
  WideString GetFromSourceBaseName(const TSQLFromSource* node) const;

  // The menu of the page's work area (add a derived table or a common
  // table expression, the union entries, the SELECT's properties) or, for
  // its union button, the moves and the union entries.
  TmvMenu GetPopupMenu(ImvControl* control) override;

  // Union editing from the page's controls.
  void MoveLeftEvent();
  void MoveRightEvent();
  void BracketsEvent();
  void RemoveEvent();
  TmvUnionSubQuery* NewEvent();
  TmvUnionSubQuery* CopyToNewEvent();

  void GatherPrepareAndFixupContext(std::vector<TSQLWithClauseItem*>& cteList,
                                    std::vector<TSQLFromSource*>& fromSources, bool includeOwn) override;
  void CollectVisibleDatasources(TmvDatasourceList& list) override;

  // --- Links. The forms without a place put the link where UseANSIJoins
  // says; names as text go through ParseQualifiedNameQuoteIfNeed. Each
  // returns the new link (null when none was made). ---
  TmvLink* AddLink(TmvDatasource* fromDatasource, const TSQLQualifiedName* fromFieldName,
                   const TSQLQualifiedName* toFieldName, TmvDatasource* toDatasource);
  TmvLink* AddLink(TmvDatasource* fromDatasource, const TSQLQualifiedName* fromFieldName,
                   const TSQLQualifiedName* toFieldName, TmvDatasource* toDatasource, TmvQueryBuilderLinkPlace place);
  TmvLink* AddLink(TmvDatasource* fromDatasource, const WideString& fromFieldName, const WideString& toFieldName,
                   TmvDatasource* toDatasource);
  TmvLink* AddLink(TmvDatasource* fromDatasource, const WideString& fromFieldName, const WideString& toFieldName,
                   TmvDatasource* toDatasource, TmvQueryBuilderLinkPlace place);
  TmvLink* AddLink(TmvDatasource* fromDatasource, TmvDatasource* toDatasource, const WideString& expression);
  TmvLink* AddLink(TmvDatasource* fromDatasource, TmvDatasource* toDatasource, const WideString& expression,
                   TmvQueryBuilderLinkPlace place);
  // The expression is cloned and bound to this SELECT first.
  TmvLink* AddLink(TmvDatasource* fromDatasource, TmvDatasource* toDatasource, const TSQLExpressionItem* expression,
                   TmvQueryBuilderLinkPlace place);
  // Splits the condition as a loaded ON clause is split, under the later of the two.
  std::vector<TmvLink*> AddLinksFromExpression(TmvDatasource* datasource1, TmvDatasource* datasource2,
                                               const TSQLExpressionItem* expression);
  std::vector<TmvLink*> AddLinksFromExpression(TmvDatasource* datasource1, TmvDatasource* datasource2,
                                               const WideString& expression);
  // Links from the relations of the metadata and from equal field names;
  // each returns the number of links made.
  int AddFKLinksForObject(TmvDataSourceObject* object);
  int AddIdenticalFieldsLinksForObject(TmvDataSourceObject* object);
  // A simple link from datasource1's field to datasource2's, in this direction.
  TmvLink* FindLink(TmvDatasource* datasource1, const TSQLQualifiedName* name1, const TSQLQualifiedName* name2,
                    TmvDatasource* datasource2) const;
  TmvLink* FindLink(TmvDatasource* datasource1, const WideString& name1, const WideString& name2,
                    TmvDatasource* datasource2) const;
  bool HaveAnsiJoins() const;
  bool HaveWhereJoins() const;
  bool UseANSIJoins() const;

 protected:
  void Destroying() override;
  TmvOwned<TastNode> CreateResultAST() override;
  bool NotifyDatasourceDestroyingInternal(TmvDatasource* datasource) override;
  void NotifyDatasourceReplacedInternal(TmvDatasource* oldDatasource, TmvDatasource* newDatasource) override;

 private:
  WideString ClauseText(const std::function<TastNode*(TSQLSubQuerySelectExpression*)>& clause);
  TmvDatasourceGroup* datasources_ = nullptr;
  TmvSelectList* selectList_ = nullptr;
  double ratio_ = 0.3;
};

// A list of sub-queries (not owned).
class TmvSubQueriesList {
 public:
  int Count() const { return static_cast<int>(items_.size()); }
  TmvSubQuery* Item(int index) const;
  int IndexOf(const TmvSubQuery* subQuery) const;
  void RegisterSubQuery(TmvSubQuery* subQuery);
  void UnregisterSubQuery(TmvSubQuery* subQuery);
  // Appends all to `list`.
  void Collect(std::vector<TmvSubQuery*>& list) const;
  std::vector<TmvSubQuery*> GetList() const { return items_; }

 private:
  std::vector<TmvSubQuery*> items_;
};

class TmvSubQuery : public TmvUnionGroup {
  MV_DECLARE_CLASS()
 public:
  TmvSubQuery(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* parent);
  ~TmvSubQuery() override;
  void AfterConstruction() override;

  virtual bool GetIsSubQuery() const { return true; }
  bool GetIsMainQuery() const { return !GetIsSubQuery(); }
  TmvSubQuery* ParentSubQuery() const { return parentSubQuery_; }
  TmvSubQueriesList& SubQueries() { return subQueries_; }
  TSQLSubSelectStatement* GetSubQueryAST() const;

  // --- Members ---
  TmvUnionSubQuery* ActiveUnionSubQuery() const { return activeUnionSubQuery_; }
  // Asks the host first when this is its active sub-query; false when vetoed.
  bool SetActiveUnionSubquery(TmvUnionSubQuery* member);
  const std::vector<TmvUnionSubQuery*>& UnionSubQueries() const { return unionSubQueries_; }
  void UpdateUnionSubQueriesOrder();
  // The first SELECT, looking into groups; null for an empty group.
  TmvUnionSubQuery* FirstSelect() const;
  bool IsQueryWithUnions() const;

  // The output columns of this sub-select, worked out first when a change
  // left them stale.
  TmvMetadataFieldsList* Fields() {
    if (fieldsStale_ && fieldsRefresh_) {
      fieldsStale_ = false;
      fieldsRefresh_();
    }
    return fields_.get();
  }
  // Set by the proxy that made the sub-query: how to work the columns out,
  // and that a change may have changed them.
  void SetFieldsRefresh(std::function<void()> refresh) { fieldsRefresh_ = std::move(refresh); }
  void SetFieldsStale() { fieldsStale_ = true; }

  // --- What this sub-query is ---
  TSQLWithClauseItem* CteItem() const { return cteItem_; }
  TmvDatasourceQuery* DerivedTable() const { return derivedTable_; }
  TmvQueryBuilderControlOwner* ParentSelectItem() const { return parentSelectItem_; }
  bool IsSubQueryCTE() const { return cteItem_ != nullptr; }
  bool IsSubQueryDerivedTable() const { return derivedTable_ != nullptr; }
  TSQLWithClauseItem* SubQueryCTEItemAST() const { return cteItem_; }
  // The WITH clause the item stands in (the main query's), or null.
  TSQLWithClause* SubQueryCTEClauseAST() const;
  int SubQueryCTEIndex() const;
  TmvDatasourceQuery* SubQueryDerivedTable() const { return derivedTable_; }

  // --- Common table expressions of this query's WITH clause ---
  TSQLWithClauseItem* AddNewCTE(const WideString& subQueryText, const WideString& name);
  TSQLWithClauseItem* AddNewCTE(const TSQLSubSelectStatement* statement, const TastTokenIdentifier* name);
  TSQLWithClauseItem* InsertNewCTE(int index, const WideString& subQueryText, const WideString& name);
  TSQLWithClauseItem* InsertNewCTE(int index, const TSQLSubSelectStatement* statement,
                                   const TastTokenIdentifier* name);
  bool IsUniqueCTEName(const TastTokenIdentifier* name) const;
  WideString CreateUniqueCTEName(const WideString& base) const;
  // For a sub-query that is a common table expression.
  bool CanRenameCTETo(const TastTokenIdentifier* name) const;
  void RenameCTE(const TastTokenIdentifier* name);
  // The same with the user's answer (ImvUserInteraction) and its checks.
  void RenameCTEEvent();
  void RemoveCTEEvent();
  TmvMenu GetPopupMenu(ImvControl* control) override;

  // --- Captions and text ---
  WideString GetCaption();
  void UpdateCaption();
  // A sub-select in a row's expression is named by the row's alias.
  WideString SelectItemCaption() const;
  WideString GetSql();
  void SetSql(const WideString& text);
  void ClearInternal();
  void Clear() override;

  // Takes the statement over: its WITH items become sub-queries, its members
  // members of this group.
  void LoadFromStatement(TmvOwned<TSQLSubSelectStatement> statement);
  void LoadFromAST(TmvOwned<TSQLSubQueryExpression> node) override;
  // The statement's sort (or the first SELECT's own) goes to the rows of
  // the first SELECT.
  void LoadOrderBy();

  ImvUnionOperatorControl* GetUnionOperatorControl() const override { return nullptr; }
  int GetControlsCount() const override { return 1; }
  bool CanCreateControls() const override;
  bool MakeVisible(int) const override { return false; }
  void GatherPrepareAndFixupContext(std::vector<TSQLWithClauseItem*>& cteList,
                                    std::vector<TSQLFromSource*>& fromSources, bool includeOwn) override;
  void CollectVisibleCte(std::vector<TSQLWithClauseItem*>& list) override;

  // Set by the proxy that made the sub-query.
  void SetKind(TSQLWithClauseItem* cteItem, TmvDatasourceQuery* derivedTable, TmvQueryBuilderControlOwner* selectItem);
  // The output columns changed: a common table expression passes them on.
  void FieldsUpdated();

 protected:
  void Destroying() override;
  TmvOwned<TastNode> CreateResultAST() override;
  void DoAfterUpdated() override;

 private:
  friend class TmvUnionSubQuery;
  friend class TmvQueryBase;
  void RegisterUnionSubQuery(TmvUnionSubQuery* member);
  void UnregisterUnionSubQuery(TmvUnionSubQuery* member);
  void ActiveMemberDestroying(TmvUnionSubQuery* member);
  TSQLWithClauseItem* InsertCTEItem(int index, TmvOwned<TSQLSubSelectStatement> statement,
                                    TmvOwned<TastTokenIdentifier> name);

  TmvSubQuery* parentSubQuery_ = nullptr;
  TmvSubQueriesList subQueries_;
  TmvUnionSubQuery* activeUnionSubQuery_ = nullptr;
  std::vector<TmvUnionSubQuery*> unionSubQueries_;
  TmvOwned<TmvMetadataFieldsList> fields_;
  std::function<void()> fieldsRefresh_;
  bool fieldsStale_ = false;
  TSQLWithClauseItem* cteItem_ = nullptr;
  TmvDatasourceQuery* derivedTable_ = nullptr;
  TmvQueryBuilderControlOwner* parentSelectItem_ = nullptr;
  WideString caption_;
};

// The statement of an empty text: one SELECT *, with a FROM clause where the
// dialect needs one; a TSQLSelectStatement for the main query.
TmvOwned<TSQLSubSelectStatement> CreateEmptyStatement(TmvBaseSQLContext* context, bool main);
// One SELECT whose items are none or a lone "*", with no FROM entries, no
// other clause and no common table expressions: a query not yet begun.
bool IsQueryTreeEmpty(const TSQLSubSelectStatement* statement);
// A statement-level sort of a statement of one SELECT that has none of its
// own moves down to that SELECT.
void MoveOrderByToLoneSelect(TSQLSubSelectStatement* statement);

class TmvQuery : public TmvSubQuery {
  MV_DECLARE_CLASS()
 public:
  using TmvSubQuery::TmvSubQuery;
  bool GetIsSubQuery() const override { return false; }
  TSQLSelectStatement* GetQueryAST() const;

 protected:
  void DoAfterUpdated() override;
};

}  // namespace mv
