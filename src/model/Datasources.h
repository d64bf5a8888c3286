// The entries of the FROM clause of one SELECT as the model holds them:
//
//   TmvDatasourceBase
//     TmvDatasourceGroup   a bracketed group of entries (the top group is the
//                          FROM clause itself and owns every datasource and
//                          nested group of the SELECT, whatever their group)
//     TmvDatasource        any other source (a table function, a variable)
//       TmvDataSourceObject   a table, view or synonym, or a reference to a
//                             common table expression
//       TmvDatasourceQuery    a derived table
//
// Each datasource keeps the syntax node it came from, so everything the
// model does not interpret (hints, column aliases, a dialect's extras)
// travels with the node and is printed again.
#pragma once

#include <vector>

#include "model/ControlOwner.h"
#include "model/Links.h"
#include "model/QueryModelHost.h"
#include "tree/FromClause.h"

namespace mv {

class TastTokenIdentifier;
class TmvMetadataField;
class TmvMetadataFieldsList;
class TmvMetadataObject;
class TmvSubQuery;
class TmvUnionSubQuery;
class TSQLExpressionItem;
class TSQLFromGroup;
class TSQLFromObject;
class TSQLFromSource;
class TSQLExpressionAnd;
class TSQLJoinKind;

enum TmvDatasourceType { dtTable, dtView, dtStoredProc, dtFunction, dtSubQuery, dtOther };

class TmvDatasourceGroup;

class TmvDatasourceBase : public TmvQueryBuilderControlOwner {
  MV_DECLARE_CLASS()
 public:
  // `group` is the structural group (null for the top group); the owner is
  // the top group (or the SELECT for the top group itself).
  TmvDatasourceBase(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* owner, TmvDatasourceGroup* group,
                    TmvUnionSubQuery* unionSubQuery);
  ~TmvDatasourceBase() override;

  TmvDatasourceGroup* Group() const { return group_; }
  TmvUnionSubQuery* UnionSubQuery() const { return unionSubQuery_; }
  TSQLFromSource* FromSource() const { return fromSource_.get(); }
  // The ON expression taken from the node, until links are made of it.
  TSQLExpressionItem* PendingJoinExpression() const { return pendingJoinExpression_.get(); }

  // Takes the node over: stores it, sets its back reference and takes its
  // ON expression out into PendingJoinExpression.
  virtual void LoadFromAST(TmvOwned<TSQLFromSource> node);
  virtual WideString GetDataSourceName();
  virtual void UpdateChecks() {}
  // The datasources at any depth (a datasource lists itself).
  virtual void GetDatasources(TmvDatasourceList& list) = 0;
  virtual bool ContainsDatasource(const TmvDatasourceBase* datasource, bool recursive) const;
  // The dialect changed.
  virtual void SyntaxProviderChanged() {}

  // --- Joins ---
  // Splits an ON condition into links owned by this entry: simple links for
  // the operands of AND that compare two columns, one more link for the
  // rest. Raises mvQBLinksToFirstDatasource for the first entry of a group.
  std::vector<TmvLink*> AddLinksFromExpression(TmvOwned<TSQLExpressionItem> expression);
  // The join kind of the node (null: a comma, or the first entry).
  TSQLJoinKind* GetJoinKind() const;
  TastNodeClassRef GetJoinKindClass() const;
  // Sets the kind, the sides of the owned links follow; a right join on a
  // dialect without right joins becomes a left one by moving the entry.
  void SetJoinKind(TmvOwned<TSQLJoinKind> kind);
  // The same with a new kind of the class that keeps the old one's details.
  void SetJoinKindClass(TastNodeClassRef kindClass);
  // Replaces the node's join kind and nothing else.
  void SetFromSourceJoinKind(TmvOwned<TSQLJoinKind> kind);
  // The links of the group that this entry owns.
  std::vector<TmvLink*> GetOwnedLinks() const;
  void RealignLinks();
  void InvalidateLinks();
  // Makes links of PendingJoinExpression; a group passes the call on.
  virtual void LoadJoins();

 protected:
  // The node with its ON clause: the owned lpFrom links (or the pending
  // expression while no link is made of it).
  TmvOwned<TastNode> CreateResultAST() override;
  // The AND of the owned lpFrom links' expressions, simplified; null for none.
  TmvOwned<TSQLExpressionItem> CreateJoinExpression() const;
  TmvOwned<TSQLFromSource> TakeFromSource();
  void SetGroup(TmvDatasourceGroup* group) { group_ = group; }

 private:
  friend class TmvDatasourceGroup;
  TmvDatasourceGroup* group_;
  TmvUnionSubQuery* unionSubQuery_;
  TmvOwned<TSQLFromSource> fromSource_;
  TmvOwned<TSQLExpressionItem> pendingJoinExpression_;
};

class TmvDatasourceGroup : public TmvDatasourceBase {
  MV_DECLARE_CLASS()
 public:
  using TmvDatasourceBase::TmvDatasourceBase;

  TmvDatasourceGroup* TopGroup() const;
  int Count() const { return static_cast<int>(items_.size()); }
  TmvDatasourceBase* Items(int index) const;
  int IndexOf(const TmvDatasourceBase* item) const;
  // Moves an entry made elsewhere into this group, at the end.
  void Add(TmvDatasourceBase* datasource);
  // Frees the entry (through its veto).
  bool Remove(TmvDatasourceBase* datasource);
  bool Delete(int index);
  // Frees every entry without asking the host (the SELECT is being replaced).
  void Clear();
  // Moves without notification.
  void AddInternal(TmvDatasourceBase* datasource);
  void InsertInternal(int index, TmvDatasourceBase* datasource);
  void ExtractInternal(TmvDatasourceBase* datasource);

  // A new datasource of class T made from the node, at the end.
  template <class T>
  T* CreateDatasource(TmvOwned<TSQLFromSource> node);
  TmvDatasourceGroup* CreateNestedGroup(TmvOwned<TSQLFromSource> node);

  TmvDatasource* FindDatasourceByAST(const TSQLFromSource* node) const;
  TmvDatasource* FindDatasourceByMetadataObject(const TmvMetadataObject* object) const;
  TmvDatasourceList FindDatasourcesByMetadataObject(const TmvMetadataObject* object) const;
  // Whether `datasource` stands in the tree before `bound` (FROM order).
  bool ContainsDatasourceBefore(const TmvDatasourceBase* datasource, const TmvDatasourceBase* bound) const;

  bool ReorderNeeded() const { return reorderNeeded_; }
  void NotifyReorderNeeded();
  // Whether the FROM order breaks what the links ask; the reorder.
  bool IsReorderRequired() const;
  void ReorderDatasourcesInternal();
  // The reorders that changed a FROM order since the program started (a
  // measure for tests: one per group and update at most).
  static int ReorderCount();

  // --- Links (owned) ---
  int LinksCount() const { return static_cast<int>(links_.size()); }
  TmvLink* Links(int index) const;
  const std::vector<TmvLink*>& GetLinks() const { return links_; }
  // This group's links and those of the groups below, depth first.
  void GetLinksRecursive(std::vector<TmvLink*>& list) const;
  // A new empty link of this group.
  TmvLink* CreateLink();
  // A link of the expression (owned from now), under `owner`, or where the
  // group chains of its datasources say when null. An expression that
  // reaches fewer than two datasources of the SELECT raises a list index error.
  TmvLink* AddLinkAST(TmvDatasourceBase* owner, TmvOwned<TSQLExpressionItem> expression, bool isNew,
                      TmvQueryBuilderLinkPlace place);
  // Takes the join conditions of WHERE out as where-links; returns the rest.
  TmvOwned<TSQLExpressionItem> LoadWhereJoins(TmvOwned<TSQLExpressionItem> where);
  // Clones of the lpWhere links' expressions of this group and below.
  void GetWhereJoinConditions(TSQLExpressionAnd& conditions) const;
  // `where` with the where-links in front.
  TmvOwned<TSQLExpressionItem> AddWhereJoinConditions(TmvOwned<TSQLExpressionItem> where) const;
  void LoadJoins() override;

  // Takes the entries of a FROM group node, in order.
  void LoadFromAST(TmvOwned<TSQLFromSource> node) override;
  void UpdateChecks() override;
  void GetDatasources(TmvDatasourceList& list) override;
  bool ContainsDatasource(const TmvDatasourceBase* datasource, bool recursive) const override;
  void SyntaxProviderChanged() override;

 protected:
  void Destroying() override;
  TmvOwned<TastNode> CreateResultAST() override;
  // Runs the reorder that NotifyReorderNeeded asked for.
  void DoSQLUpdated() override;

 private:
  friend class TmvLink;
  void RegisterLink(TmvLink* link);
  void UnregisterLink(TmvLink* link);
  std::vector<TmvDatasourceBase*> items_;
  std::vector<TmvLink*> links_;
  bool reorderNeeded_ = false;
};

class TmvDatasource : public TmvDatasourceBase {
  MV_DECLARE_CLASS()
 public:
  using TmvDatasourceBase::TmvDatasourceBase;
  ~TmvDatasource() override;
  // Asks the host once (OnBeforeDeleteDatasource), unless the SELECT or the
  // group is going away.
  bool CanDestroy() const override;

  TmvDatasourceType DatasourceType() const { return datasourceType_; }
  void UpdateDatasourceType();

  // --- Names ---
  WideString GetAlias() const;
  // Empty text removes the alias; the SELECT's text follows everywhere.
  virtual void SetAlias(const WideString& text);
  const TastTokenIdentifier* GetAliasAST() const;
  WideString GetNameInQuery();
  virtual WideString GetObjectNameInQuery();
  WideString GetDataSourceName() override;
  const WideString& Caption() const { return caption_; }
  void SetCaption(const WideString& caption);
  void UpdateCaption();

  // --- Fields ---
  TmvMetadataFieldsList* GetFields() const;
  TmvMetadataObject* GetMetadataObject() const;
  // Orders the fields as the options ask, then lets the host change them.
  void DoCustomizeDatasourceFieldsList();
  virtual void RefreshMetadata();
  // Whether columns that vanish from the fields take what refers to them along.
  virtual bool IsCleanDeletedFields() const { return false; }
  // Takes from the SELECT what refers to columns that left the fields since
  // the last look (select items go, conditions lose them), then looks again.
  void CleanDeletedFields();

  // --- Checks: the fields that the select list shows (null: "table.*") ---
  const std::vector<TmvMetadataField*>& CheckedFields() const { return checkedFields_; }
  bool IsFieldSelected(const TmvMetadataField* field) const;
  void UpdateChecks() override;
  // Every field becomes a selected row of the select list, or leaves it.
  void CheckAllFields();
  void UncheckAllFields();
  // The check box of a field (null: "table.*") set by the user: a selected
  // row of the field, or its rows unselected.
  void SetFieldChecked(TmvMetadataField* field, bool checked);

  // --- The box on the design pane. A control that shows the datasource
  // reads these when it updates and reports a move or a resize through the
  // setters; they are kept while no control exists. A setter acts on a
  // change only: it stores the value and updates the control. The text of
  // the query does not change. ---
  int Left() const { return left_; }
  int Top() const { return top_; }
  int Width() const { return width_; }
  int Height() const { return height_; }
  void SetLeft(int value);
  void SetTop(int value);
  void SetWidth(int value);
  void SetHeight(int value);
  // A collapsed box shows its caption only.
  bool Collapsed() const { return collapsed_; }
  void SetCollapsed(bool value);
  void Collapse() { SetCollapsed(true); }
  void Expand() { SetCollapsed(false); }

  void LoadFromAST(TmvOwned<TSQLFromSource> node) override;
  void GetDatasources(TmvDatasourceList& list) override { list.push_back(this); }
  void SyntaxProviderChanged() override;
  int GetControlsCount() const override { return 1; }
  TmvMenu GetPopupMenu(ImvControl* control) override;

 protected:
  void Destroying() override;
  // The field list of the node changed.
  void FieldsListChanged(TmvObject* sender);
  void AddLinkedObjectsMenu(TmvMenu& menu);

 private:
  void BoxChanged();
  TmvDatasourceType datasourceType_ = dtOther;
  int left_ = 0, top_ = 0, width_ = 0, height_ = 0;
  bool collapsed_ = false;
  WideString caption_;
  std::vector<TmvMetadataField*> checkedFields_;
  mutable bool beforeDeleteDone_ = false;
  mutable bool deleteAllowed_ = true;
  TmvMetadataFieldsList* hookedFields_ = nullptr;
  // The names of the fields as CleanDeletedFields last saw them.
  std::vector<WideString> lastFields_;
  bool hasLastFields_ = false;
};

class TmvDataSourceObject : public TmvDatasource {
  MV_DECLARE_CLASS()
 public:
  using TmvDatasource::TmvDatasource;

  // The sub-query of the common table expression this object names, or null.
  TmvSubQuery* CteSubQuery() const { return cteSubQuery_; }
  void LoadFromAST(TmvOwned<TSQLFromSource> node) override;
  WideString GetObjectNameInQuery() override;
  WideString GetDataSourceName() override;
  bool IsCleanDeletedFields() const override { return cteSubQuery_ != nullptr; }
  TmvMenu GetPopupMenu(ImvControl* control) override;
  TSQLFromObject* FromObject() const;
  // Names the common table expression by a clone of `name` (its rename).
  void RenameObject(const TastTokenIdentifier* name);
  // Looks again for the common table expression the name refers to.
  void BindToCte();

 protected:
  void Destroying() override;

 private:
  void CteFieldsChanged(TmvObject* sender);
  void CteSubQueryDestroying(TmvObject* sender);
  void UnhookCte();
  TmvSubQuery* cteSubQuery_ = nullptr;
  TmvMetadataFieldsList* cteFields_ = nullptr;
};

class TmvDatasourceQuery : public TmvDatasource {
  MV_DECLARE_CLASS()
 public:
  using TmvDatasource::TmvDatasource;

  TmvSubQuery* SubQuery() const { return subQuery_; }
  void LoadFromAST(TmvOwned<TSQLFromSource> node) override;
  void RefreshMetadata() override;
  bool IsCleanDeletedFields() const override { return true; }
  TmvMenu GetPopupMenu(ImvControl* control) override;
  // The fields take those of the sub-query, named by the column aliases.
  void ReloadFieldsFromUnderlyingSubquery();

 protected:
  void Destroying() override;

 private:
  void SubqueryFieldsChanged(TmvObject* sender);
  TmvSubQuery* subQuery_ = nullptr;
};

template <class T>
T* TmvDatasourceGroup::CreateDatasource(TmvOwned<TSQLFromSource> node) {
  TmvDatasourceGroup* top = TopGroup();
  auto owned = TmvCreate<T>(Host(), top, this, UnionSubQuery());
  T* datasource = owned.get();
  top->RegisterChild(std::move(owned));
  AddInternal(datasource);
  {
    TmvUpdateScope update(datasource);
    datasource->LoadFromAST(std::move(node));
  }
  return datasource;
}

}  // namespace mv
