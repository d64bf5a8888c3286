// The syntax provider: the one object that knows a server family. It hands out
// the dialect's generated scanner and parser classes, answers what the dialect
// can do and how it writes names, holds the table that maps node classes to
// the dialect's extenders, names the dialect's aggregate and built-in function
// vocabulary, quotes and renders dates, and rewrites row limits. Each dialect
// derives its provider from this class and changes only what differs; the
// defaults here lean towards ANSI SQL.
//
// Capability answers are read at each use and never cached, except the
// aggregate and function names, which a context caches until the provider
// sends its notifications (SendNotifications).
//
// Metadata loading, server detection over a connection and the query tools
// join this contract with the metadata model.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "frontend/Parser.h"
#include "frontend/Scanner.h"
#include "metadata/MetadataForward.h"
#include "support/Class.h"
#include "support/DateTime.h"
#include "support/Event.h"
#include "support/LogHelper.h"
#include "support/Persistent.h"
#include "support/WideString.h"
#include "tree/NodeClass.h"

namespace mv {

class TSQLBuilder;
class TSQLBuilderSelectFormat;
class TSQLQualifiedNamesList;
class TSQLExpressionItem;
class TSQLExpressionAggregate;
class TSQLExpressionFunction;
class TSQLObjectColumn;
class TSQLDatabaseObject;
class TSQLSubSelectStatement;
class TSQLSubQueryExpression;
class TSQLSubQuerySelectExpression;
class TSQLSelectItemExpression;
class TSQLFromSource;
class TSQLFromGroup;
class TSQLQualifiedName;
class TSQLIdentifiersCollection;
class TastTokenIdentifier;
class TmvBaseSQLContext;
enum class TmvEditPropsTarget : uint8_t;

// How a server treats the case of identifiers.
enum TmvIdentCaseSensitivity : uint8_t {
  icsNonSensitive,
  icsSensitiveUpperCase,  // case matters; unquoted names are folded to upper case
  icsSensitiveLowerCase,  // case matters; unquoted names are folded to lower case
};

// A provider's answer to whether it serves the server behind a connection.
enum TmvSyntaxSupportConectedServer : uint8_t {
  scsNotSupport,
  scsMaybeSupport,
  scsSupport,
  scsDontKnow,
};

// The icons of the union navigation bar that a set operator is drawn with.
enum class TmvUnionOperatorIcon : uint8_t {
  None,
  Union,
  UnionAll,
  Except,
  ExceptAll,
  Intersect,
  IntersectAll,
};

class TmvBaseSyntaxProvider;
// A provider class as a value: the registry holds these, and a caller makes
// a provider of a class it found by name.
using TmvSyntaxProviderClass = TmvClassOf<TmvBaseSyntaxProvider>;

class TmvBaseSyntaxProvider : public TmvPersistent {
  MV_DECLARE_CLASS()
 public:
  TmvBaseSyntaxProvider();
  ~TmvBaseSyntaxProvider() override;
  TmvBaseSyntaxProvider(const TmvBaseSyntaxProvider&) = delete;
  TmvBaseSyntaxProvider& operator=(const TmvBaseSyntaxProvider&) = delete;

  // From another provider: IdentCaseSens (through the virtual setter),
  // DenyIntoClause, DetectServerVersion and AppendLimitsForFieldsQuery.
  void Assign(const TmvPersistent* source) override;

  // --- Scanner and parser. ---
  virtual const TmvScannerClass& GetScannerClass() const = 0;
  virtual const TmvParserClass& GetParserClass() const = 0;
  virtual void SetScannerParams(TmvBaseScanner&) const {}
  // Sets the parser's dialect level (ServerVersion) and DenyIntoClause.
  virtual void SetParserParams(TmvBaseParser& parser) const;
  // A new scanner of the dialect, with this provider's parameters; the caller owns it.
  TmvOwned<TmvBaseScanner> CreateScanner() const;
  // A new parser over `scanner` for `context`, with this provider's parameters.
  TmvOwned<TmvBaseParser> CreateParser(TmvBaseScanner* scanner, TmvBaseSQLContext* context) const;
  // The scanner's token kinds of string literals.
  virtual std::vector<int32_t> GetStringTokenIds() const = 0;

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
  // Aggregates that accept "*" (added to the list).
  virtual void GetStarAggregateNames(TSQLQualifiedNamesList& list) const;
  // Aggregates of one parameter without a prefix (the base clears the list).
  virtual void Get1ParamAggregateNames(TSQLQualifiedNamesList& list) const;
  // Aggregates of one parameter that take All or Distinct (added to the list).
  virtual void GetPrefixed1ParamAggregateNames(TSQLQualifiedNamesList& list) const;
  // Aggregates of several parameters (the base leaves the list alone).
  virtual void GetMultiParamAggregateNames(TSQLQualifiedNamesList& list) const;
  // Names treated as built-in functions (the base clears the list).
  virtual void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const;
  // Operators that compare, as 8-bit text: "=", ">", ">=", "<", "<=", "<>".
  virtual void GetComparisonOperators(std::vector<std::string>& list) const;
  // The set operators offered: "Union", "Union All".
  virtual void GetUnionOperatorsList(std::vector<WideString>& list) const;
  // The entry of GetUnionOperatorsList equal to `text` without regard to case, or `text`.
  WideString NormalizeUnionOperator(WideStringView text) const;
  static TmvUnionOperatorIcon GetUnionOperatorIcon(WideStringView text);

  // --- Capabilities. ---
  virtual bool IsSupportANSIJoins() const { return true; }
  // Joins must form a left-deep binary chain.
  virtual bool IsForceBinaryANSIJoins() const { return false; }
  virtual bool IsBracketsInComplexJoinMandatory() const { return false; }
  virtual bool IsSupportOracleJoins() const { return false; }       // "(+)" joins
  virtual bool IsSupportTransactSQLJoins() const { return false; }  // "*=" joins
  virtual bool IsSupportCrossJoin() const { return true; }
  virtual bool IsSupportLeftANSIJoin() const { return true; }
  virtual bool IsSupportRightANSIJoin() const { return true; }
  virtual bool IsSupportFullANSIJoin() const { return true; }
  // Any expression may stand where others allow only column-like items.
  virtual bool IsUniversalExpressions() const { return false; }
  virtual bool IsSupportAllTableFieldsSelection() const { return true; }
  virtual bool IsSupportOrderByAlias() const { return true; }
  virtual bool IsSupportViews() const { return true; }
  virtual bool IsSupportProcedures() const { return false; }
  virtual bool IsSupportSynonyms() const { return false; }
  virtual bool IsSupportUnions() const { return true; }
  virtual bool IsSupportBracketsInUnions() const { return true; }
  virtual bool IsSupportDerivedTables() const { return true; }
  virtual bool IsSupportCTE() const { return false; }
  virtual bool IsCTEColumnNamesMandatory() const { return false; }
  virtual bool IsSupportRecursiveCTE() const { return true; }
  virtual bool IsSupportNullOrdering() const { return false; }
  virtual bool IsSupportGroupByStar() const { return false; }
  virtual bool IsSupportGroupByAlias() const { return false; }
  virtual bool IsSupportSubQueryUnions() const { return true; }
  virtual bool IsSupportSubQueryBracketsInUnions() const { return true; }
  virtual bool IsSupportSubQueryDerivedTables() const { return true; }
  virtual bool IsSupportSubQueryCTE() const { return false; }
  virtual bool IsSupportDatabases() const { return true; }
  virtual bool IsSupportSchemas() const { return true; }
  virtual bool IsSupportEmptyBracketsInStoredProcs() const { return true; }
  virtual bool IsOuterKeywordInLinksMandatory() const { return false; }
  virtual bool IsInnerKeywordInLinksMandatory() const { return true; }
  virtual bool IsAsKeywordInExpressionAliasMandatory() const { return false; }
  virtual bool IsAsKeywordInObjectAliasMandatory() const { return false; }
  // A query without sources must still get a FROM clause.
  virtual bool IsFromClauseMandatory() const { return false; }
  // Between schema and object name.
  virtual WideString GetObjectNameSeparator() const { return u"."; }
  // Columns are prefixed by the bare object name.
  virtual bool GetUseObjectNamesAsDefaultAliases() const { return false; }
  // A derived table that stands for no source.
  virtual WideString GetSimpleEmptyFromSubquery() const { return u"(SELECT NULL)"; }
  // The function that upper-cases text, for case-insensitive filters.
  virtual WideString GetUpperCaseFunctionName() const { return u"upper"; }
  // The caption of the server family; the class name by default.
  virtual WideString ServerName() const;

  // --- Server detection and versions. ---
  virtual TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider*, TmvObject*) const {
    return scsDontKnow;
  }
  // Whether the provider can read the server's version over a connection.
  virtual bool CanDetectServerVersion() const { return false; }
  // True means the version is read from the server, once; never true on a
  // provider that cannot detect.
  bool GetDetectServerVersion() const { return detectServerVersion_; }
  virtual void SetDetectServerVersion(bool value);
  // Overrides call this first (detection then runs once) and read the version.
  virtual void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner);

  // --- Parsing options. ---
  // Generated parsers refuse a SELECT ... INTO clause while this is set.
  bool GetDenyIntoClause() const { return denyIntoClause_; }
  void SetDenyIntoClause(bool value);

  // --- The query that loads the fields of an object. ---
  // The template set by the user; empty means the provider's default.
  const WideString& GetQueryToLoadFieldsTemplateProperty() const { return queryToLoadFieldsTemplate_; }
  // Setting the default text clears the property.
  void SetQueryToLoadFieldsTemplate(WideStringView value);
  // The property when set, otherwise the default.
  WideString GetQueryToLoadFieldsTemplate() const;
  bool GetAppendLimitsForFieldsQuery() const { return appendLimitsForFieldsQuery_; }
  void SetAppendLimitsForFieldsQuery(bool value) { appendLimitsForFieldsQuery_ = value; }
  // Fields "*" when empty; the template with {0}/%0:s the fields and {1}/%1:s
  // the object, or, without AppendLimitsForFieldsQuery, "select F from O a".
  virtual WideString GetQueryToLoadFieldsForObject(WideStringView fields, WideStringView objectName) const;
  virtual WideString GetQueryToLoadFieldsForTable(WideStringView fields, WideStringView name) const;
  virtual WideString GetQueryToLoadFieldsForView(WideStringView fields, WideStringView name) const;
  virtual WideString GetQueryToLoadFieldsForProcedure(WideStringView fields, WideStringView name,
                                                      WideStringView params) const;
  virtual WideString GetQueryToLoadFieldsForSynonym(WideStringView fields, WideStringView name) const;
  // Text that selects from a procedure call.
  virtual WideString CreateWrapperForStoredProc(WideStringView call) const { return WideString(call); }
  // Written before and after a procedure used as a source.
  virtual void BeginBuildWrapperForStoredProc(TSQLBuilder&, const TSQLBuilderSelectFormat&) const {}
  virtual void EndBuildWrapperForStoredProc(TSQLBuilder&, const TSQLBuilderSelectFormat&) const {}

  // --- Types. ---
  // Decimal and numeric take a precision and a scale.
  virtual bool IsVariablePrecisionType(WideStringView typeName) const;
  // No size is printed after such a type.
  virtual bool IsFixedSizeType(WideStringView) const { return true; }
  // Whether the upper-cased word begins a SELECT (a dialect may have a
  // short form of it).
  virtual bool IsSelectKeyword(WideStringView upperCaseWord) const { return upperCaseWord == u"SELECT"; }
  // The class of the properties form (frontend/PropertiesForm.h) that edits
  // such an object in this dialect; empty for none.
  virtual WideString GetEditPropsFormClass(TmvEditPropsTarget) const { return {}; }
  // Sets the ExpressionType and ExpressionTypeName of an expression where
  // they can be told: constants, bound columns, logical expressions, calls
  // the dialect knows, a sub-query of one column; false otherwise.
  bool CalcExpressionType(TSQLExpressionItem* expression) const;
  // Count, Avg, Max, Min and Sum; false for other names.
  virtual bool CalcAggregateCallType(TSQLExpressionAggregate* aggregate) const;
  // Functions of the dialect whose result type is known; none in the base.
  virtual bool CalcFunctionCallType(TSQLExpressionFunction*) const { return false; }

  // --- Names the fix-up matches (metadata/SyntaxProviderNames.cpp). ---
  // The first field whose name equals the column's; for a one-part column
  // else the first whose alternate name matches; -1 if none.
  virtual int FindFieldInFieldsList(const TSQLObjectColumn* column, const TmvMetadataFieldsList* fields) const;
  // How many parts of the object name stand as prefixes of the column
  // (the container's default database and schemas may be left out); -1
  // when they do not match, and for a one-part column.
  virtual int IsColumnOfDBObject(const TSQLObjectColumn* column, const TSQLDatabaseObject* object) const;

  // --- Row limits: a limit is two texts, offset and count; empty means absent. ---
  // A query with a SELECT ... INTO clause cannot be wrapped for a result grid.
  virtual bool IsQueryWithIntoClause(const TSQLSubSelectStatement*) const { return false; }
  virtual bool IsSupportLimitOffset() const { return false; }
  virtual bool IsSupportLimitCount() const { return false; }
  // Reads the dialect's limit clauses back; true when the statement has any.
  virtual bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const;
  // A new statement with the limit applied in the dialect's way. The base raises.
  virtual TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                                WideStringView offset, WideStringView count) const;

  // --- Query tools (metadata/SyntaxProviderQueryTools.cpp): what a limit,
  // a result grid or a hidden column needs to put a statement one level down
  // and still name its columns from outside. ---
  // "Select * From (statement) q", taking the statement over. Its WITH clause
  // and its ORDER BY move to the outer level, each column of the order bound
  // to q under the name the statement gives it. Prepare the result before
  // expanding its star.
  TmvOwned<TSQLSubSelectStatement> WrapQuery(TmvOwned<TSQLSubSelectStatement> statement) const;
  // In the first select of `expression`: "*" and "t.*" become a column per
  // field of their sources (a star whose sources offer no known columns stays),
  // and every item gets a name unique without regard to case: its alias, else
  // its column name, else "Column1", "Column2"...; a clash appends the next
  // number, and an item whose name changed, or that had none, gets it as alias.
  // Returns the names in the order of the items.
  std::vector<WideString> ExpandQueryColumns(TSQLSubQueryExpression* expression) const;
  // The names of the first select's columns as they stand (the fields of the
  // sources for a star); empty for an expression without alias.
  std::vector<WideString> GetQueryColumnNames(const TSQLSubQueryExpression* expression) const;
  // Whether two of those names are equal without regard to case.
  bool IsQueryHaveDuplicatedColumnNames(const TSQLSubQueryExpression* expression) const;
  // The sources of a FROM tree, nested groups depth first.
  static std::vector<TSQLFromSource*> GetFromSources(const TSQLFromGroup* group);
  // The names of the columns a source offers (virtual calculated fields left
  // out), appended to `names`.
  static void CollectFromSourceColumnNames(const TSQLFromSource* source, std::vector<WideString>& names);
  // A select item per column of `source`, bound to it, inserted from `index`
  // on; returns how many.
  int SelectAllFromSourceFields(TSQLSubQuerySelectExpression* select, TSQLFromSource* source, int index) const;
  // `name` when no entry of `names` equals it in upper case; else `name`
  // with the first number from 1 that makes it so ("Column" for no name).
  static WideString CreateUniqueColumnName(WideStringView name, const std::vector<WideString>& names);
  // Gives the item a unique name among `names` (its alias when it had to
  // change or was missing), appends it, and returns it.
  WideString RenameSelectItemExpressionIfConflict(TSQLSelectItemExpression* item, std::vector<WideString>& names) const;
  // The last part of a column (brackets around it stripped); empty for any
  // other expression.
  static WideString GetColumnNameFromExpression(const TSQLExpressionItem* expression);
  // The alias (a string alias by its value), else the column name.
  static WideString GetColumnNameSelectItemExpression(const TSQLSelectItemExpression* item);
  // The alias WrapQuery gives the statement it wraps.
  static constexpr const char16_t* kWrapQueryAlias = u"q";

  // --- Dates and times as SQL literals. ---
  virtual WideString GetDateString(TmvDateTime value) const;      // cast('yyyy-mm-dd' as date)
  virtual WideString GetTimeString(TmvDateTime value) const;      // cast('hh:nn:ss' as time)
  virtual WideString GetDateTimeString(TmvDateTime value) const;  // date alone, or as timestamp
  // The text of a literal written by the Get...String above; empty when the
  // expression is no such literal.
  virtual WideString GetDate(const TSQLExpressionItem* expression) const;
  virtual WideString GetTime(const TSQLExpressionItem* expression) const;
  virtual WideString GetDateTime(const TSQLExpressionItem* expression) const;
  // The fixed forms yyyy-mm-dd, hh:nn:ss or both joined, then the general reading.
  virtual bool TryParseDate(WideStringView text, TmvDateTime& value) const;
  virtual bool TryParseTime(WideStringView text, TmvDateTime& value) const;
  virtual bool TryParseDateTime(WideStringView text, TmvDateTime& value) const;
  virtual WideString QuoteDateLiteral(WideStringView text) const;
  // The unquoted string of cast('text' as typeName) (brackets around it
  // stripped); empty for anything else.
  static WideString GetCastedConstantValue(const TSQLExpressionItem* expression, WideStringView typeName);

  // --- Reserved words for a host (a colouring editor); nothing here reads them. ---
  // The list of the class's keyword resource, or of its nearest ancestor's.
  virtual std::vector<WideString> GetKeywords() const;

  // --- Notification of the contexts that use this provider; the sender is the provider. ---
  // Fired by SendNotifications.
  TmvNotificationEvent& GetOnUpdate() { return onUpdate_; }
  // Fired once when the provider goes away.
  TmvNotificationEvent& GetOnDestroying() { return onDestroying_; }
  // Tells every context that a setting that changes parsing or output changed.
  void SendNotifications() { onUpdate_.Fire(this); }

  // --- Metadata loading. The base falls back on the context's metadata
  // provider (SyntaxProviderMetadata.cpp); a dialect overrides what its
  // server's catalog does better. The connection may be null (the metadata
  // provider's own is used where one is needed). ---
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

  TmvLogHelper& LogHelper() { return logHelper_; }

  // Names the logger after the object and sets DetectServerVersion to what
  // the dialect can do (the second construction phase).
  void AfterConstruction() override;

 protected:
  // For a dialect's constructor: the default of QueryToLoadFieldsTemplate.
  void SetQueryToLoadFieldsTemplateDefault(WideStringView value) { queryToLoadFieldsTemplateDefault_ = value; }

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
  bool detectServerVersion_ = false;
  bool appendLimitsForFieldsQuery_ = true;
  bool denyIntoClause_ = false;
  TmvLogHelper logHelper_;
};

// Defines the class facility of a concrete provider: StaticClass() gives a
// TmvSyntaxProviderClass whose factory makes a new provider.
#define MV_DEFINE_SYNTAX_PROVIDER(Class, Parent)                                         \
  const ::mv::TmvClass& Class::StaticClass() { return ProviderClass(); }                \
  const ::mv::TmvSyntaxProviderClass& Class::ProviderClass() {                          \
    static const ::mv::TmvSyntaxProviderClass info(                                     \
        #Class, &Parent::StaticClass(), []() -> ::mv::TmvBaseSyntaxProvider* { return new Class(); }); \
    return info;                                                                        \
  }

// Declares what MV_DEFINE_SYNTAX_PROVIDER defines, inside the class body.
#define MV_DECLARE_SYNTAX_PROVIDER()                            \
  MV_DECLARE_CLASS()                                            \
 public:                                                        \
  static const ::mv::TmvSyntaxProviderClass& ProviderClass();

}  // namespace mv
