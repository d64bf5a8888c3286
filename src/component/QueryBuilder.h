// The query builder: the object a host creates to turn SQL text into an
// editable query model and back. It owns the SQL context, the metadata
// container and filter, the model of the query, the result tree generated
// from the model, and the parameters found in it, and it gathers the host's
// events. It runs without any visual control.
//
//   builder->SetSyntaxProvider(&provider);
//   builder->SetSql(u"SELECT a.x FROM a");       // text into the model
//   builder->Query()->FirstSelect()->AddObject(u"b", u"");
//   WideString text = builder->GetSql();          // the model as text
//
// Text that is not a SELECT is held unchanged ("sleep mode") and given back
// as it was. Setting the text the builder gave out changes nothing.
#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <vector>

#include "component/Layout.h"
#include "component/ParametersList.h"
#include "component/QueryBuilderProperties.h"
#include "metadata/MetadataLoadingThread.h"
#include "model/QueryModelHost.h"
#include "sqlgen/SQLOptions.h"
#include "support/Event.h"
#include "support/WideString.h"

namespace mv {

class ImvExpressionBuilderParams;
class TmvMetadataFilter;
class TmvMetadataObject;
class TmvQualifiedNamesList;
class TSQLSelectStatement;
class TSQLQualifiedName;
class TastTokenIdentifier;
class TSQLBuilderFast;

// A name with the object it stands for (GetTableNames and its kin).
struct TmvNamedObject {
  WideString Name;
  TmvMetadataObject* Object = nullptr;
};

class TmvQueryBuilder : public TmvQueryModelHost, public ImvMetadataLoadingOwner {
  MV_DECLARE_CLASS()
 public:
  TmvQueryBuilder();
  ~TmvQueryBuilder() override;
  void AfterConstruction() override;
  void BeforeDestruction() override;

  // --- Text ---
  // The whole query: the sleeping text, "" for an empty query, else the
  // model printed for the server.
  WideString GetSql();
  // Replaces the model unless the text prints as the model does. Text that
  // is not a SELECT sleeps (AllowSleepMode). A syntax error goes to
  // OnSQLError when set (the model stays), else it is raised.
  void SetSql(const WideString& text);
  // The text as a fixed-up statement the caller owns; null after an error
  // that OnSQLError took.
  TmvOwned<TSQLSelectStatement> ParseSQL(const WideString& text);
  WideString GetActivePartSQL(TmvQueryPart part);
  bool IsSelectStatement(const WideString& text);
  // Empties the query (one empty SELECT stays).
  void Clear();

  // --- The layout document (Layout.h): the text with the places of the boxes ---
  WideString GetLayout();
  // Sets the document's text (SetSql), then puts the boxes that match their
  // elements in their places. Text that is not well-formed XML changes
  // nothing; a box's number that is not an integer raises EConvertError
  // before anything changes.
  void SetLayout(const WideString& text);
  // With controls, a reload of new text keeps the places of what stays.
  void BeforeReload(TmvQueryBuilderControlOwner* owner) override;
  void AfterReload(TmvQueryBuilderControlOwner* owner, bool loaded) override;

  // --- The result tree: generated on the first read after a change ---
  TSQLSelectStatement* GetResultQueryAST();
  void GenerateResultQueryAST();
  bool IsResultQueryASTGenerated() const { return resultQueryAST_ != nullptr; }
  // Also invalidates the statistics.
  void SetResultQueryASTInvalid();
  TmvParametersList& ParametersList() { return parameters_; }

  // --- Statistics: what the result tree reads and returns ---
  // Valid: gathered again first when the query or the metadata changed.
  TmvQueryStatistics* GetQueryStatistics();
  // Makes the result tree, lets its nodes gather what they read until
  // nothing is added, and fills the statistics from it.
  void ReloadStatistics() override;

  // --- Updates: one OnSQLUpdated for the outermost pair ---
  void BeginUpdate() override;
  void EndUpdate() override;
  bool GetIsUpdating() const override { return updateCount_ > 0; }
  void SQLUpdated() override;
  // Loading from a stored form: OnSQLUpdated waits until Loaded and then
  // fires once if anything changed meanwhile.
  void BeginLoading() { loading_ = true; }
  void Loaded();

  // --- Sleep mode ---
  bool SleepMode() const { return sleepMode_; }
  const WideString& SleepModeText() const { return sleepModeText_; }
  bool AllowSleepMode = true;
  // A syntax error, or an object missing from the metadata with this on,
  // refuses the text.
  bool ParsingErrorOnUnknownObjects = false;
  // Looks up the objects a new query names once its update ends.
  bool PartialMetadataLoading = false;

  // --- Active parts and the list of sub-queries ---
  // Every SELECT of every sub-query.
  std::vector<TmvUnionSubQuery*> GetUnionSubQueriesList() const;
  // The root first, `subQuery` last; empty for null.
  std::vector<TmvSubQuery*> GetParentSubQueries(TmvSubQuery* subQuery) const;
  // The sub-queries that hang below `owner` (a sub-query or one SELECT),
  // common table expressions it reads included.
  void CollectChildSubQueries(std::vector<TmvSubQuery*>& list, TmvQueryBuilderControlOwner* owner) const;
  // Which sub-queries a designer shows as pages, from FilterTabsByCurrentQueryPart.
  std::vector<TmvSubQuery*> VisibleSubQueries() const;
  void UpdateVisibleSubQueries();
  TmvQueryPart FilterTabsByCurrentQueryPart = mvqpQuery;
  // A new identifier "QueryN" (the caller owns it).
  TmvOwned<TastTokenIdentifier> CreateUniqueQueryName();

  // --- Metadata ---
  TmvMetadataFilter* MetadataFilter() const { return metadataFilter_.get(); }
  TmvBaseMetadataProvider* MetadataProvider() const;
  void SetMetadataProvider(TmvBaseMetadataProvider* provider);
  bool WorkOffline() const;
  void SetWorkOffline(bool value);
  // Clears the container and reloads what the filter selects, synchronously.
  void RefreshMetadata();
  void RefreshMetadataAsync();
  void LoadMetadata(const TSQLQualifiedName* database = nullptr);
  void LoadMetadataByFilter(const TmvMetadataFilter* filter, const TSQLQualifiedName* database = nullptr);
  void LoadMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                          const TSQLQualifiedName* database = nullptr);
  void LoadMetadataAsync(const TSQLQualifiedName* database = nullptr);
  void CancelAsyncMetadataLoading();
  bool IsLoadingMetadataAsync() const { return asyncLoading_.IsLoading(); }
  void ClearMetadata(const TSQLQualifiedName* database = nullptr);
  void ClearMetadataByMask(WideStringView objectMask, WideStringView schemaMask,
                           const TSQLQualifiedName* database = nullptr);
  // Binds the datasources of the model to the container again.
  void RefreshDatasourcesMetadata();
  void RefreshDatasourcesMetadata(TmvSubQuery* subQuery);
  // Loads from the server the objects the query names and the container
  // lacks; nothing when offline or without a metadata provider.
  void DoPartialMetadataLoading();
  std::vector<TmvNamedObject> GetTableNames(bool system = false) const;
  std::vector<TmvNamedObject> GetViewNames(bool system = false) const;
  std::vector<TmvNamedObject> GetProcedureNames(bool system = false) const;
  std::vector<TmvNamedObject> GetSynonymNames(bool system = false) const;
  std::vector<WideString> GetDatabasesList();
  bool IsNameOfTable(const WideString& name) const;
  bool IsNameOfView(const WideString& name) const;
  bool IsNameOfProcedure(const WideString& name) const;

  // --- Settings passed to the SQL builders of the context ---
  void SetOuterKeywordInLinks(TmvSkipKeywordMode value);
  void SetInnerKeywordInLinks(TmvSkipKeywordMode value);
  void SetAsKeywordInExpressionAlias(TmvSkipKeywordMode value);
  void SetAsKeywordInObjectAlias(TmvSkipKeywordMode value);
  // Also the model's own option (captions and names of fields).
  void SetUseAltNames(bool value);
  bool GetQuoteAllIdentifiers() const;
  void SetQuoteAllIdentifiers(bool value);
  void SetObjectPrefixSkipping(TmvObjectPrefixSkipping value);

  // --- Deferred calls (run by the main-thread dispatcher's ProcessPending) ---
  // Whether the silent clear of a refused change in sleep mode is queued.
  bool IsSilentClearPosted() const { return silentClearPosted_; }
  // A control may not be freed while one of its own handlers runs: the
  // control factory hands it here, and one deferred call frees all that
  // wait (through the factory's DestroyControl) once the handler has ended.
  void DestroyInternalControl(ImvControl* control);
  // A control in use (say, an open editor) waits until allowed again.
  void PreventInternalControlDestroying(ImvControl* control);
  void AllowInternalControlDestroying(ImvControl* control);
  void PostDestroyContainedControlsMsg();
  bool IsDestroyContainedControlsMsgPosted() const { return destroyControlsPosted_; }

  // --- Notifications for internal listeners, beside the host events ---
  TmvNotificationEvent DestroyingNotification;
  TmvNotificationEvent SQLUpdatedNotification;
  TmvNotificationEvent ActiveSubQueryChangingNotification;
  TmvNotificationEvent ActiveSubQueryChangedNotification;
  TmvNotificationEvent ActiveUnionSubQueryChangingNotification;
  TmvNotificationEvent ActiveUnionSubQueryChangedNotification;
  // A background load of metadata began, ended, and put its objects in the
  // container (the metadata tree shows its loading node and reloads).
  TmvNotificationEvent AsyncLoadingStartedNotification;
  TmvNotificationEvent AsyncLoadingCompletedNotification;
  TmvNotificationEvent MetadataLoadedNotification;

  // --- Host events (the model's own are declared by TmvQueryModelHost) ---
  std::function<void(TmvQueryBuilder*, const WideString& sql, const WideString& error, const WideString& tokenText,
                     int line, int col)>
      OnSQLError;
  std::function<void(TmvQueryBuilder*)> OnSleep;
  std::function<void(TmvQueryBuilder*)> OnWake;
  // A change on the pane while the text sleeps: allow = false keeps the text.
  std::function<void(TmvQueryBuilder*, bool& allow)> OnWakeQuery;
  std::function<void(TmvQueryBuilder*)> OnMetadataLoaded;
  // The user asks for the host's own editor of an expression or criteria
  // cell (a grid shows the cell's button when this is set and
  // UseCustomExpressionBuilder is on).
  std::function<void(TmvQueryBuilder*, std::shared_ptr<ImvExpressionBuilderParams> params)> OnCustomExpressionBuilder;
  bool UseCustomExpressionBuilder = true;
  // Whether an object of the container is shown (name: its qualified name).
  std::function<void(TmvQueryBuilder*, const WideString& name, bool& visible)> OnFilterTable, OnFilterView,
      OnFilterProcedure, OnFilterSynonym;

  // --- Properties and option objects (component/options/QueryBuilder.def) ---
  // The registry of the builder's properties, owner of its option objects;
  // the accessors below hand them out as the builder's own.
  TmvQueryBuilderProperties& Properties() const { return *properties_; }
#define MV_OPTIONS_FORWARD
#include "component/options/QueryBuilder.def"
  // The properties XML document (PropertiesXML.h) of the keyed properties.
  WideString GetPropertiesXML();
  WideString GetPropertiesXMLByTypes(bool nonVisual, bool visual);
  WideString GetPropertiesXMLByXPath(WideStringView include, WideStringView exclude);
  // Inside one update; empty or malformed text changes nothing.
  void SetPropertiesXML(WideStringView text);

  // --- ImvMetadataLoadingOwner ---
  TmvMetadataContainer* MetadataContainer() override { return TmvQueryModelHost::MetadataContainer(); }
  void MetadataLoaded() override;
  void NotifyAsyncLoadingStarted() override;
  void NotifyAsyncLoadingCompleted() override;
  void PostRaiseAsyncException(std::exception_ptr error) override;

 protected:
  bool DoActiveSubQueryChanging(TmvSubQuery* subQuery) override;
  void DoActiveSubQueryChanged(TmvSubQuery* subQuery) override;
  bool DoActiveUnionSubQueryChanging(TmvSubQuery* subQuery) override;
  void DoActiveUnionSubQueryChanged(TmvSubQuery* subQuery) override;

 private:
  void ClearInternal();
  void SetSleepMode(bool value);
  void SetSleepModeText(const WideString& text);
  void SilentClearSQL();
  void DestroyContainedControls();
  void DoSQLUpdated();
  // A change of metadata can bind a name to an object: the statistics are invalid.
  void MetadataContainerUpdated(TmvObject* sender);
  void CheckProviders() const;
  std::vector<TmvNamedObject> GetNames(const TmvClass& kind, bool system) const;
  bool IsNameOf(const TmvClass& kind, const WideString& name) const;
  // Runs `change` on the context's builders, in one update of the context.
  void ChangeBuilders(const std::function<void(TSQLBuilderFast&, int index)>& change);

  TmvOwned<TSQLSelectStatement> resultQueryAST_;
  TmvOwned<TmvQueryBuilderProperties> properties_;
  // The snapshots of the reloads under way, innermost last.
  std::vector<std::pair<TmvQueryBuilderControlOwner*, std::unique_ptr<TmvLayoutItem>>> reloadSnapshots_;
  TmvParametersList parameters_;
  std::unique_ptr<TmvMetadataFilter> metadataFilter_;
  TmvMetadataAsyncLoading asyncLoading_;
  int updateCount_ = 0;
  bool sleepMode_ = false;
  bool sleepOnNotSelect_ = false;  // while SetSql parses
  WideString sleepModeText_;
  bool silentUpdate_ = false;
  bool silentClearPosted_ = false;
  bool destroyControlsPosted_ = false;
  std::vector<ImvControl*> controlsToDestroy_;
  std::vector<ImvControl*> controlsInUse_;
  bool loading_ = false;
  bool sqlUpdatedPending_ = false;
  bool refreshingAfterPartialLoading_ = false;
  // Cleared by the destructor: deferred calls queued before it find it false.
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace mv
