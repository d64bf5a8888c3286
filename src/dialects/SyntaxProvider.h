// The syntax provider: the one object that knows a server family. It answers
// what the dialect can do and how it writes names, holds the table that maps
// node classes to the dialect's extenders, and names the dialect's aggregate
// and built-in function vocabulary. Each dialect derives its provider from
// this class and changes only what differs.
//
// This holds the part of the contract that the syntax tree and the SQL
// builders ask of a provider; scanner and parser classes, metadata loading,
// server detection, limits and dates join it with the dialects.
#pragma once

#include <string>
#include <vector>

#include "support/Class.h"
#include "support/Event.h"
#include "support/WideString.h"
#include "tree/NodeClass.h"

namespace mv {

class TSQLBuilder;
class TSQLBuilderSelectFormat;
class TSQLQualifiedNamesList;
class TSQLQualifiedName;
class TSQLIdentifiersCollection;
class TastTokenIdentifier;
class TmvBaseSQLContext;
class TmvConnection;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataObject;
class TmvMetadataTable;
class TmvMetadataView;
class TmvMetadataProcedure;
class TmvMetadataSynonym;
class TmvMetadataFieldsList;

// How a server treats the case of identifiers.
enum TmvIdentCaseSensitivity : uint8_t {
  icsNonSensitive,
  icsSensitiveUpperCase,  // case matters; unquoted names are folded to upper case
  icsSensitiveLowerCase,  // case matters; unquoted names are folded to lower case
};

class TmvBaseSyntaxProvider : public TmvObject {
  MV_DECLARE_CLASS()
 public:
  TmvBaseSyntaxProvider();
  ~TmvBaseSyntaxProvider() override;
  TmvBaseSyntaxProvider(const TmvBaseSyntaxProvider&) = delete;
  TmvBaseSyntaxProvider& operator=(const TmvBaseSyntaxProvider&) = delete;

  // --- Identifier case and quotes. ---
  virtual TmvIdentCaseSensitivity GetIdentCaseSens() const { return identCaseSens_; }
  virtual void SetIdentCaseSens(TmvIdentCaseSensitivity value);
  bool IsIdentifiersCaseSensitive() const { return GetIdentCaseSens() != icsNonSensitive; }
  bool IsNonQuotedIdentifiersToUpperCase() const { return GetIdentCaseSens() == icsSensitiveUpperCase; }
  virtual WideString GetQuoteBegin() const { return u"\""; }
  virtual WideString GetQuoteEnd() const { return u"\""; }
  // The last word on whether a text may stand unquoted, after the grammar test.
  virtual bool IsValidIdent(WideStringView) const { return true; }

  // --- Extenders. ---
  // Pairs a node class with the extender class of this dialect; a second
  // pairing for the same node class raises.
  void RegisterExtender(const TastNodeClass& nodeClass, const TastNodeClass& extenderClass);
  void RegisterExtender(std::initializer_list<const TastNodeClass*> nodeClasses, const TastNodeClass& extenderClass);
  void UnregisterExtender(const TastNodeClass& nodeClass);
  // The entry for exactly that class; with `inherited`, otherwise the entry of
  // the closest ancestor (the earliest entry on a tie); null when none.
  virtual const TastNodeClass* FindExtenderClass(const TmvClass& nodeClass, bool inherited) const;

  // --- Names of aggregates and functions; lists of qualified names. ---
  virtual void GetStarAggregateNames(TSQLQualifiedNamesList& list) const;
  virtual void Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const;
  virtual void GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const;
  virtual void GetMultiParamAggregateNames(TSQLQualifiedNamesList& list) const;
  virtual void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const;
  // Operators that compare, as 8-bit text: "=", ">", ">=", "<", "<=", "<>".
  virtual void GetComparisonOperators(std::vector<std::string>& list) const;

  // --- Capabilities that printing asks. ---
  virtual bool IsBracketsInComplexJoinMandatory() const { return false; }
  virtual bool IsSupportDatabases() const { return true; }
  virtual bool IsSupportSchemas() const { return true; }
  virtual bool IsSupportEmptyBracketsInStoredProcs() const { return true; }
  virtual bool IsOuterKeywordInLinksMandatory() const { return false; }
  virtual bool IsInnerKeywordInLinksMandatory() const { return true; }
  virtual bool IsAsKeywordInExpressionAliasMandatory() const { return false; }
  virtual bool IsAsKeywordInObjectAliasMandatory() const { return false; }
  // Between schema and object name.
  virtual WideString GetObjectNameSeparator() const { return u"."; }
  // Columns are prefixed by the bare object name.
  virtual bool GetUseObjectNamesAsDefaultAliases() const { return false; }
  // Written before and after a procedure used as a source.
  virtual void BeginBuildWrapperForStoredProc(TSQLBuilder&, const TSQLBuilderSelectFormat&) const {}
  virtual void EndBuildWrapperForStoredProc(TSQLBuilder&, const TSQLBuilderSelectFormat&) const {}

  // --- Notification of the contexts that use this provider; the sender is the provider. ---
  // Fired by SendNotifications.
  TmvNotificationEvent& GetOnUpdate() { return onUpdate_; }
  // Fired once when the provider goes away.
  TmvNotificationEvent& GetOnDestroying() { return onDestroying_; }
  // Tells every context that a setting that changes parsing or output changed.
  void SendNotifications() { onUpdate_.Fire(this); }

  // --- Metadata: field types, the query that learns an object's fields, and
  // the loading road. The base falls back on the context's metadata provider
  // (SyntaxProviderMetadata.cpp); a dialect overrides what its server's
  // catalog does better. The connection may be null (the metadata
  // provider's own is used where one is needed). ---
  // Types printed with (precision,scale): decimal and numeric, in any case.
  virtual bool IsVariablePrecisionType(WideStringView typeName) const;
  // Types printed without a size; all in the base.
  virtual bool IsFixedSizeType(WideStringView typeName) const;
  // The function that upper-cases text in this dialect's SQL.
  virtual WideString GetUpperCaseFunctionName() const { return u"upper"; }
  // The fields query template: the property when set, else the default
  // ("select %0:s from %1:s a where 0<>0"). Placeholders {0} and {1} mean %0:s and %1:s.
  WideString GetQueryToLoadFieldsTemplate() const;
  // Setting the default text clears the property.
  void SetQueryToLoadFieldsTemplate(WideStringView value);
  const WideString& QueryToLoadFieldsTemplateProperty() const { return queryToLoadFieldsTemplate_; }
  void SetQueryToLoadFieldsTemplateDefault(WideStringView value) { queryToLoadFieldsTemplateDefault_ = WideString(value); }
  bool GetAppendLimitsForFieldsQuery() const { return appendLimitsForFieldsQuery_; }
  void SetAppendLimitsForFieldsQuery(bool value) { appendLimitsForFieldsQuery_ = value; }
  // A query that returns the fields (`*` when empty) of an object and no rows.
  virtual WideString GetQueryToLoadFieldsForObject(WideStringView fields, WideStringView objectName) const;
  virtual WideString GetQueryToLoadFieldsForTable(WideStringView fields, WideStringView name) const;
  virtual WideString GetQueryToLoadFieldsForView(WideStringView fields, WideStringView name) const;
  // `params` is the argument list of the call, without brackets.
  virtual WideString GetQueryToLoadFieldsForProcedure(WideStringView fields, WideStringView name,
                                                      WideStringView params) const;
  virtual WideString GetQueryToLoadFieldsForSynonym(WideStringView fields, WideStringView name) const;
  // Text that selects from a procedure call; the call unchanged in the base.
  virtual WideString CreateWrapperForStoredProc(WideStringView call) const { return WideString(call); }

  virtual void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                                std::vector<WideString>& list);
  virtual void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                              const TSQLQualifiedName* database);
  virtual void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection,
                                   TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                   const TSQLQualifiedName* database);
  virtual void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                                     const TSQLQualifiedName* database);
  // Aggregates of the server beside the dialect's own; nothing in the base.
  virtual void LoadMetadataCustomAggregateNames(TmvBaseSQLContext*, TmvConnection*, TmvMetadataContainer*,
                                                const TSQLQualifiedName*) {}
  // The fields (and a procedure's parameters) of one object, unless loaded.
  virtual void LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table);
  virtual void LoadMetadataForView(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataView* view);
  virtual void LoadMetadataForProcedure(TmvBaseSQLContext* context, TmvConnection* connection,
                                        TmvMetadataProcedure* procedure);
  virtual void LoadMetadataForSynonym(TmvBaseSQLContext* context, TmvConnection* connection,
                                      TmvMetadataSynonym* synonym);
  virtual void LoadFieldsForQuery(TmvBaseSQLContext* context, TmvConnection* connection, WideStringView sql,
                                  TmvMetadataFieldsList& fields);
  // Field details from the server's catalog; nothing in the base.
  virtual void LoadFieldsForObjectFromServer(TmvBaseSQLContext*, TmvConnection*, TmvMetadataObject*) {}
  virtual void LoadFieldsForTableFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                            TmvMetadataTable* table);
  virtual void LoadFieldsForViewFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                           TmvMetadataView* view);
  virtual void LoadParamsForProcedureFromServer(TmvBaseSQLContext*, TmvConnection*, TmvMetadataProcedure*) {}
  virtual void LoadFieldsForProcedureFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                                TmvMetadataProcedure* procedure);
  virtual void LoadFieldsForSynonymFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                              TmvMetadataSynonym* synonym);
  // The metadata provider's answers; a dialect without databases (schemas)
  // raises instead.
  virtual TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection);
  virtual void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TSQLIdentifiersCollection& names);
  // What stands for the absence of a schema; none in the base.
  virtual TmvOwned<TastTokenIdentifier> GetEmptySchemaName(TmvBaseSQLContext* context) const;

 private:
  struct ExtenderEntry {
    const TastNodeClass* nodeClass;
    const TastNodeClass* extenderClass;
  };
  TmvIdentCaseSensitivity identCaseSens_ = icsSensitiveUpperCase;
  std::vector<ExtenderEntry> extenders_;
  TmvNotificationEvent onUpdate_;
  TmvNotificationEvent onDestroying_;
  WideString queryToLoadFieldsTemplateDefault_ = u"select %0:s from %1:s a where 0<>0";
  WideString queryToLoadFieldsTemplate_;
  bool appendLimitsForFieldsQuery_ = true;
};

}  // namespace mv
