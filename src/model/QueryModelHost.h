// The object that holds a query model: its SQL context (dialect, metadata)
// and metadata container,
// the main query, the registry of all sub-queries, the active sub-query, the
// options the model reads, the control factory, and the events through which
// the host takes part in editing (vetoes, captions, field lists). The query
// builder component derives from it and adds text, layout and metadata
// loading; the model itself needs no more than this.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "model/ModelControls.h"
#include "support/Class.h"
#include "support/LogHelper.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseSQLContext;
class TmvBaseSyntaxProvider;
class TmvMetadataContainer;
class TmvLink;
class TmvMetadataField;
class TmvMetadataProcedure;
class TmvMetadataRelation;
class TmvDatasource;
class TmvQuery;
class TmvQueryStatistics;
class TmvSubQuery;
class TmvUnionSubQuery;
class TSQLFromSource;

struct TmvPoint {
  int X = 0, Y = 0;
};

// How the fields of a datasource are ordered.
enum TmvFieldsListSortType { flsNone, flsName, flsDescription };

// The options of the query builder that the model reads.
struct TmvModelOptions {
  bool UseAltNames = true;
  bool TableChecksCountInCaption = false;
  // Fields of datasources.
  TmvFieldsListSortType SortType = flsNone;
  bool KeyFieldsFirst = true;
  bool HideAsteriskItem = false;
  // Links.
  bool CreateLinksFromRelations = true;
  bool CreateLinksByIdenticalFieldNames = false;
  // New links print in WHERE (where the dialect has outer marks there).
  bool CreateWhereJoinsByDefault = false;
  // Loading text: equality conditions between two datasources of a SELECT
  // in its WHERE clause become links.
  bool LoadJoinsFromWhereClause = true;
  // The FROM clause is put in a valid order at the end of each update.
  bool CanReorderDatasources = true;
  // Select list.
  bool UseMSStyleGrouping = false;
  bool CreateColumnAliasesFromAltNames = false;
  bool CreateColumnAliasesForUnnamedColumns = true;
  bool ResolveColumnNamingConflictsAutomatically = false;
};

// Messages the model shows the user (the grid's conflicts of column names).
enum TmvUserMessageId {
  mvMsgColumnNameAlreadyUsed,
  mvMsgDeletingAliasCauseConflict,
  mvMsgSelectingExpressionCauseConflict
};

struct TmvUserMessageParams {
  TmvUserMessageId MessageId;
  WideString MessageText;
};

// Questions the model asks the user; a host without dialogs answers them
// itself or leaves them unset (then the question is answered "no").
class TmvQBPropertiesForm;
class TmvUnionSubQuery;

class ImvUserInteraction {
 public:
  virtual ~ImvUserInteraction() = default;
  // False when the user cancels; `value` holds the default on entry.
  virtual bool InputBox(const WideString& caption, const WideString& prompt, WideString& value) = 0;
  virtual bool Confirm(const WideString& message) = 0;
  // Shows a properties form (model/PropertyForms.h) modally; true when the
  // user pressed OK and the form's CheckCanClose passed.
  virtual bool ShowPropertiesForm(TmvQBPropertiesForm& /*form*/) { return false; }
  // The window that adds metadata objects to a SELECT, where there is one.
  virtual bool CanShowAddObjectDialog() const { return false; }
  virtual void ShowAddObjectDialog(TmvUnionSubQuery* /*member*/) {}
};

class TmvQueryModelHost : public TmvObject {
  MV_DECLARE_CLASS()
 public:
  TmvQueryModelHost();
  ~TmvQueryModelHost() override;
  // Makes the main query with its one empty SELECT.
  void AfterConstruction() override;
  // Frees the model while the host is whole.
  void BeforeDestruction() override;

  TmvBaseSQLContext* SQLContext() const { return context_.get(); }
  TmvBaseSyntaxProvider* SyntaxProvider() const;
  void SetSyntaxProvider(TmvBaseSyntaxProvider* provider);
  // The host's own container, made with it on its context.
  TmvMetadataContainer* MetadataContainer() const { return container_.get(); }

  TmvQuery* Query() const { return query_.get(); }
  // What the result tree reads and returns (model/QueryStatistics.h); made
  // on first use, not rebuilt here (see ReloadStatistics).
  TmvQueryStatistics* QueryStatistics();
  // Gathers the statistics of the result tree afresh. The model has no
  // result tree of its own: the query builder makes it. Nothing here.
  virtual void ReloadStatistics() {}
  bool IsDestroying() const { return destroying_; }

  // --- Sub-queries ---
  const std::vector<TmvSubQuery*>& SubQueries() const { return subQueries_; }
  void RegisterSubQuery(TmvSubQuery* subQuery);
  void UnregisterSubQuery(TmvSubQuery* subQuery);
  TmvSubQuery* ActiveSubQuery() const { return activeSubQuery_; }
  // Asks OnActiveSubQueryChanging first (not while text is being set).
  void SetActiveSubQuery(TmvSubQuery* subQuery);
  // Asked by a sub-query before its active member changes: false keeps the
  // present one (not while text is being set).
  bool NotifyActiveUnionSubQueryChanging(TmvSubQuery* subQuery);
  void NotifyActiveUnionSubQueryChanged(TmvSubQuery* subQuery, TmvUnionSubQuery* oldMember);

  // --- Names of sub-queries: "Query1", "Query2", ... free as an alias in
  // every SELECT of every sub-query. ---
  WideString CreateUniqueQueryNameStr();
  bool IsUniqueQueryName(const WideString& name) const;
  void ResetUniqueQueryNameCounter() { uniqueQueryNameCounter_ = 1; }

  // --- Updates of the whole model ---
  virtual void BeginUpdate();
  virtual void EndUpdate();
  virtual bool GetIsUpdating() const;
  // The model changed (called once at the end of the outermost update).
  virtual void SQLUpdated();
  // While new text is being loaded vetoes of the active parts are not asked.
  bool IsSettingSql() const { return settingSql_; }
  void SetSettingSql(bool value) { settingSql_ = value; }

  // --- Around the reload of a part from new text (the whole query, a
  // sub-query or one SELECT): the query builder notes where the pictures of
  // the old objects stood and puts that on the new ones. `loaded` is false
  // when the reload failed; what was noted is dropped then. ---
  virtual void BeforeReload(TmvQueryBuilderControlOwner* /*owner*/) {}
  virtual void AfterReload(TmvQueryBuilderControlOwner* /*owner*/, bool /*loaded*/) {}

  // --- Controls ---
  ImvControlFactory* ControlFactory() const { return controlFactory_; }
  // Not owned; set it before CreateControls.
  void SetControlFactory(ImvControlFactory* factory) { controlFactory_ = factory; }
  bool HasControls() const { return hasControls_; }
  // Makes the controls of the whole model (needs a factory).
  void CreateControls();
  void DestroyControls();

  ImvUserInteraction* UserInteraction() const { return userInteraction_; }
  void SetUserInteraction(ImvUserInteraction* interaction) { userInteraction_ = interaction; }

  TmvModelOptions Options;
  TmvLogHelper& LogHelper() { return logHelper_; }

  // --- Events. Each takes the host first. ---
  std::function<void(TmvQueryModelHost*)> OnSQLUpdated;
  std::function<void(TmvQueryModelHost*, TmvSubQuery*, bool& allow)> OnActiveSubQueryChanging;
  std::function<void(TmvQueryModelHost*, TmvSubQuery*)> OnActiveSubQueryChanged;
  std::function<void(TmvQueryModelHost*, TmvSubQuery*, bool& allow)> OnActiveUnionSubQueryChanging;
  std::function<void(TmvQueryModelHost*, TmvSubQuery*)> OnActiveUnionSubQueryChanged;
  // A datasource is about to be added: the handler may move it, change the
  // node or refuse (allow = false; the node is then freed).
  std::function<void(TmvQueryModelHost*, TmvUnionSubQuery*, TmvPoint& position, bool& allow, TSQLFromSource*)>
      OnBeforeAddDatasource;
  std::function<void(TmvQueryModelHost*, TmvUnionSubQuery*, TmvDatasource*)> OnAfterAddDatasource;
  // Asked once per datasource before it goes; allow = false keeps it.
  std::function<void(TmvQueryModelHost*, TmvUnionSubQuery*, bool& allow, TmvDatasource*)> OnBeforeDeleteDatasource;
  std::function<void(TmvQueryModelHost*, TmvUnionSubQuery*, TmvDatasource*, WideString& caption)>
      OnCustomizeDatasourceCaption;
  std::function<void(TmvQueryModelHost*, TmvUnionSubQuery*, TmvDatasource*)> OnCustomizeDatasourceFieldsList;
  // Fills the call of a procedure added as a datasource, or aborts the adding.
  std::function<void(TmvQueryModelHost*, const WideString& name, TmvMetadataProcedure*, WideString& resultExpression,
                     bool& abort)>
      OnQueryProcedureParameters;
  std::function<void(TmvQueryModelHost*, TmvSubQuery*, WideString& caption)> OnGetTabHeaderText;
  // A link is about to be made between two fields (from a relation, equal
  // names, or a drop); allow = false refuses it. Fields and relation may be null.
  std::function<void(TmvQueryModelHost*, TmvUnionSubQuery*, TmvDatasource* fromDatasource,
                     TmvMetadataField* fromField, TmvDatasource* toDatasource, TmvMetadataField* toField,
                     TmvMetadataRelation* relation, bool& allow)>
      OnLinkCreating;
  std::function<void(TmvQueryModelHost*, TmvLink*)> OnLinkCreated;
  // Takes over the model's messages to the user; without it they go to the
  // log as warnings (there is no dialog without a designer).
  std::function<void(TmvQueryModelHost*, const TmvUserMessageParams&)> OnUserMessage;
  // Shows a message through OnUserMessage (or the log); an id outside the
  // enumeration raises "Unknown user message ID: " with its number.
  void DoUserMessage(TmvUserMessageId id);

 protected:
  // The steps of a change of the active sub-query or member; the query
  // builder adds its notifications. Changing answers false on a veto.
  virtual bool DoActiveSubQueryChanging(TmvSubQuery* subQuery);
  virtual void DoActiveSubQueryChanged(TmvSubQuery* subQuery);
  virtual bool DoActiveUnionSubQueryChanging(TmvSubQuery* subQuery);
  virtual void DoActiveUnionSubQueryChanged(TmvSubQuery* subQuery);

 private:
  TmvOwned<TmvBaseSQLContext> context_;
  TmvOwned<TmvMetadataContainer> container_;
  TmvOwned<TmvQuery> query_;
  TmvOwned<TmvQueryStatistics> statistics_;
  std::vector<TmvSubQuery*> subQueries_;
  TmvSubQuery* activeSubQuery_ = nullptr;
  int uniqueQueryNameCounter_ = 1;
  bool settingSql_ = false;
  bool destroying_ = false;
  bool hasControls_ = false;
  ImvControlFactory* controlFactory_ = nullptr;
  ImvUserInteraction* userInteraction_ = nullptr;
  TmvLogHelper logHelper_;
};

// Brackets a reload of `owner` with the host's BeforeReload and
// AfterReload: Loaded() once the new objects are there; leaving the scope
// without it (an exception) tells the host that the reload failed.
class TmvReloadScope {
 public:
  TmvReloadScope(TmvQueryModelHost* host, TmvQueryBuilderControlOwner* owner) : host_(host), owner_(owner) {
    if (host_) host_->BeforeReload(owner_);
  }
  ~TmvReloadScope() {
    if (host_) host_->AfterReload(owner_, false);
  }
  TmvReloadScope(const TmvReloadScope&) = delete;
  TmvReloadScope& operator=(const TmvReloadScope&) = delete;
  void Loaded() {
    TmvQueryModelHost* host = host_;
    host_ = nullptr;
    if (host) host->AfterReload(owner_, true);
  }

 private:
  TmvQueryModelHost* host_;
  TmvQueryBuilderControlOwner* owner_;
};

}  // namespace mv
