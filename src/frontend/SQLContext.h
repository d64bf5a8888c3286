// The SQL context: the entry of all SQL text. It binds a syntax provider
// (the dialect), a metadata provider and a metadata container, and is where
// every syntax tree node belongs. It runs the two parser passes for each kind
// of fragment, compares names under the dialect's case rules, answers from
// cached name lists whether a name is an aggregate or a built-in function,
// keeps six one-line builders for printing nodes, and keeps a registry of all
// live nodes so that a change of dialect reaches each of them.
//
// Failures: whole statements raise EmvSQLError (frontend/SQLError.h);
// fragments (an expression, a name typed into a cell) answer null instead.
// Without a syntax provider the entries raise the plain Exception "Syntax
// provider is not specified", except the name entries, which then take the
// text as one name.
//
// A context and its trees belong to one thread at a time. Only the
// identifier check shares state: it runs on one scanner and parser of the
// context under IdentifiersLock.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "frontend/SQLError.h"
#include "metadata/MetadataForward.h"
#include "sqlgen/SQLBuilder.h"
#include "support/LogHelper.h"
#include "support/UpdatablePersistent.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseSyntaxProvider;
class TmvBaseScanner;
class TmvBaseParser;
class TastNode;
class TastToken;
class TastTokenIdentifier;
class TSQLQualifiedName;
class TSQLQualifiedNamesList;
class TSQLDatabaseObject;
class TSQLSelectStatement;
class TSQLSubSelectStatement;
class TSQLSubQuerySelectExpression;
class TSQLFromSource;
class TSQLFromObject;
class TSQLExpressionItem;
class TSQLSelectItem;
struct TmvToken;

// A list that collects the messages of failed fragment parses.
using TmvErrorList = std::vector<WideString>;

class TmvBaseSQLContext : public TmvUpdatablePersistent {
  MV_DECLARE_CLASS()
 public:
  TmvBaseSQLContext();
  ~TmvBaseSQLContext() override;

  // From another context, inside one batch: the providers and the six
  // builders' settings (not the container). Other sources fall to the inherited Assign.
  void Assign(const TmvPersistent* source) override;
  void Assign(const TmvBaseSQLContext& source) { Assign(&source); }

  // --- What gives text its meaning. None is owned. ---
  TmvBaseSyntaxProvider* SyntaxProvider() const { return syntaxProvider_; }
  // Hooks the provider's notifications and tells every node of the change.
  void SetSyntaxProvider(TmvBaseSyntaxProvider* provider);
  TmvBaseMetadataProvider* MetadataProvider() const { return metadataProvider_; }
  void SetMetadataProvider(TmvBaseMetadataProvider* provider);
  TmvMetadataContainer* MetadataContainer() const { return metadataContainer_; }
  void SetMetadataContainer(TmvMetadataContainer* container);

  // Fired (from DoUpdated) after the dialect changed, with the context as sender.
  TmvNotificationEvent& GetOnSyntaxProviderChanged() { return onSyntaxProviderChanged_; }

  // Parsers made for this context explore every way on their own
  // (TmvBaseParser::ReferenceMode): slower, with the same results; for tests
  // that compare the two.
  bool ReferenceParsing = false;

  // --- Parsing whole statements; each result belongs to the caller. ---
  // Raises EmvSQLError: "Not a SELECT SQL statement." (ekNotSelectStatement)
  // when the text does not begin with SELECT or WITH ... SELECT, "Invalid
  // SELECT statement." (ekInvalidSelectStatement) on a syntax error.
  TmvOwned<TSQLSelectStatement> ParseSelect(const WideString& text);
  // The same for a statement inside another (no closing ";").
  TmvOwned<TSQLSubSelectStatement> ParseSubQuery(const WideString& text);
  // A sub-query that is one SELECT without WITH: the select alone, with the
  // statement's ORDER BY when it has none of its own. Anything else raises
  // "SQL query must be single SELECT statement" (ekNotASingleSelectStatement).
  TmvOwned<TSQLSubQuerySelectExpression> ParseUnionSubQuery(const WideString& text);
  // One FROM source; raises EmvSQLError "Invalid FROM object expression".
  TmvOwned<TSQLFromSource> ParseDatasource(const WideString& text);

  // --- Parsing fragments: null on a syntax error. ---
  // The line naming the failing token goes to `errors` when given.
  TmvOwned<TSQLExpressionItem> ParseExpression(const WideString& text, TmvErrorList* errors = nullptr);
  // With requireLeftOperand false the text may be a predicate without its
  // left side ("= 5", "Is Null"); leftIsLogical tells that the missing side
  // is a logical value.
  TmvOwned<TSQLExpressionItem> ParseLogicalExpression(const WideString& text, bool requireLeftOperand = true,
                                                      bool leftIsLogical = false, TmvErrorList* errors = nullptr);
  TmvOwned<TSQLSelectItem> ParseSelectItem(const WideString& text);
  // One bare name token: blanks and comments around it fail. Without a
  // provider, a token of the text as it stands, not quoted.
  TmvOwned<TastTokenIdentifier> ParseIdentifier(const WideString& text);
  // A dotted name of a table. Without a provider, the text as its one name.
  TmvOwned<TSQLDatabaseObject> ParseObjectName(const WideString& text);
  // The same as a qualified name (a TSQLDatabaseObject with a provider).
  TmvOwned<TSQLQualifiedName> ParseQualifiedName(const WideString& text);

  // --- For text that is a plain name rather than SQL. ---
  // The text, else the text in the dialect's quotes, else the text quoted
  // with the closing quote doubled.
  TmvOwned<TastTokenIdentifier> ParseIdentifierQuoteIfNeed(const WideString& text);
  // Null for empty text; the text, else the text in the dialect's quotes.
  TmvOwned<TSQLDatabaseObject> ParseObjectNameQuoteIfNeed(const WideString& text);
  TmvOwned<TSQLQualifiedName> ParseQualifiedNameQuoteIfNeed(const WideString& text);

  // --- Statement tests. ---
  // Whether the text begins (after brackets and comments) with SELECT, or
  // with WITH and holds neither INSERT nor UPDATE after it.
  bool IsSelectStatement(const WideString& text);
  // The same on a scanned text; `token` names the token that decided a
  // false answer (null for SELECT).
  // The first word is the provider's SELECT (SELECT itself without one).
  static bool IsSelectStatement(const TmvBaseScanner& scanner, const TmvToken*& token,
                                const TmvBaseSyntaxProvider* provider = nullptr);
  // Whether the text can stand as an identifier without quotes: one bare
  // name token of the dialect's identifier grammar that the provider accepts.
  bool IsValidIdent(WideStringView text) const;

  // --- FROM sources made from names. ---
  // Raises EmvQueryBuilderError "Invalid object name" when the name does not
  // parse; an empty alias is none.
  TmvOwned<TSQLFromObject> CreateSQLFromObject(const WideString& objectName, const WideString& alias);
  TmvOwned<TSQLFromObject> CreateSQLFromObject(const TSQLQualifiedName* name, const TastTokenIdentifier* alias);

  // --- The six one-line builders; setters copy settings into them. ---
  TSQLBuilderFast& SQLBuilderExpression() { return *builders_[0]; }
  TSQLBuilderFast& SQLBuilderExpressionQuoted() { return *builders_[1]; }
  TSQLBuilderFast& SQLBuilderExpressionNonQuoted() { return *builders_[2]; }
  TSQLBuilderFast& SQLBuilderExpressionForServer() { return *builders_[3]; }
  TSQLBuilderFast& SQLBuilderExpressionForServerWithoutQuotes() { return *builders_[4]; }
  TSQLBuilderFast& SQLBuilderMetadata() { return *builders_[5]; }
  void SetSQLBuilderExpression(const TSQLBuilder& value) { SetBuilder(0, value); }
  void SetSQLBuilderExpressionQuoted(const TSQLBuilder& value) { SetBuilder(1, value); }
  void SetSQLBuilderExpressionNonQuoted(const TSQLBuilder& value) { SetBuilder(2, value); }
  void SetSQLBuilderExpressionForServer(const TSQLBuilder& value) { SetBuilder(3, value); }
  void SetSQLBuilderExpressionForServerWithoutQuotes(const TSQLBuilder& value) { SetBuilder(4, value); }
  void SetSQLBuilderMetadata(const TSQLBuilder& value) { SetBuilder(5, value); }

  // --- The registry of live nodes: constant time both ways. ---
  int RegisterAstNode(TastNode* node);
  void UnregisterAstNode(TastNode* node, int slot);
  int AstNodeCount() const { return int(astNodes_.size() - freeAstNodeSlots_.size()); }
  // Tells every registered node, in slot order, that the dialect changed.
  // Nodes made or freed during the walk are handled: a freed slot is skipped.
  void NotifySyntaxProviderChanged();

  // --- Identifiers and names under the dialect's case rules. ---
  int CompareIdentifiers(const TastTokenIdentifier* a, const TastTokenIdentifier* b) const;
  bool IsIdentifiersEqual(const TastTokenIdentifier* a, const TastTokenIdentifier* b) const;
  int CompareTokens(const TastToken* a, const TastToken* b) const;
  // Count of parts first, then the parts from the object name outward.
  int CompareQualifiedNames(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const;
  bool IsQualifiedNamesEqual(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const;
  // The same with the tokens a bound name compares by (its source's alias or name).
  int CompareQualifiedNamesFull(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const;
  bool IsQualifiedNamesFullEqual(const TSQLQualifiedName* a, const TSQLQualifiedName* b) const;
  // The provider's comparison operators, cached until the dialect changes.
  const std::vector<std::string>& GetComparisonOperators();

  // --- The dialect's vocabulary, cached until the dialect changes. ---
  bool IsNameOfAggregate(const TSQLQualifiedName* name);
  bool IsNameOfPrefixedAggregate(const TSQLQualifiedName* name);
  bool IsNameOfStarAggregate(const TSQLQualifiedName* name);
  bool IsNameOfMultiparamAggregate(const TSQLQualifiedName* name);
  bool IsNameOfBuiltinFunction(const TSQLQualifiedName* name);
  // Whether the metadata container lists the name among its custom
  // aggregates; false without a container.
  bool IsNameOfCustomAggregate(const TSQLQualifiedName* name);
  // Gives a name the spelling of the dialect's list that knows it.
  void AggregateNormalize(TSQLQualifiedName* name);
  void BuiltinFunctionNormalize(TSQLQualifiedName* name);
  void InvalidateAggregateNamesCache();
  void InvalidateBuiltinFunctionNamesCache();

  // --- Parts of a name held inside out (object name at index 0). ---
  TmvOwned<TastToken> ExtractNameFromFullName(const TSQLQualifiedName* name) const;
  TmvOwned<TastToken> ExtractSchemaFromFullName(const TSQLQualifiedName* name) const;
  TmvOwned<TSQLQualifiedName> ExtractDatabaseFromFullName(const TSQLQualifiedName* name);
  // The same on SQL text, printed back; empty when there is no such part.
  WideString ExtractNameFromFullName(const WideString& name);
  WideString ExtractSchemaFromFullName(const WideString& name);
  WideString ExtractDatabaseFromFullName(const WideString& name);

  // --- The shared identifier scanner and parser, made on first use. ---
  void IdentifiersLock() const { identifiersCriticalSection_.lock(); }
  void IdentifiersUnlock() const { identifiersCriticalSection_.unlock(); }
  // Callers hold IdentifiersLock while they use these. Null without a provider.
  TmvBaseScanner* GetIdentifiersScanner() const;
  TmvBaseParser* GetIdentifiersParser() const;

  // Debug lines of the context; its prefix is "TmvBaseSQLContext(ADDRESS).".
  TmvLogHelper& LogHelper() { return logHelper_; }

  // --- Metadata (defined with the metadata layer, ContextMetadata.cpp,
  // as is IsNameOfCustomAggregate). ---
  // Forwarders to the syntax provider's operations of the same name, with
  // this context first; each raises "Syntax provider is not specified"
  // without a provider.
  void GetDatabasesList(TmvConnection* connection, std::vector<WideString>& list);
  void LoadFieldsForQuery(TmvConnection* connection, WideStringView sql, TmvMetadataFieldsList& fields);
  void LoadMetadataCustomAggregateNames(TmvConnection* connection, TmvMetadataContainer* container,
                                        const TSQLQualifiedName* database);
  void LoadMetadataForProcedure(TmvConnection* connection, TmvMetadataProcedure* procedure);
  void LoadMetadataForSynonym(TmvConnection* connection, TmvMetadataSynonym* synonym);
  void LoadMetadataForTable(TmvConnection* connection, TmvMetadataTable* table);
  void LoadMetadataForView(TmvConnection* connection, TmvMetadataView* view);
  void LoadMetadataObjects(TmvConnection* connection, TmvMetadataContainer* container, const TmvMetadataFilter* filter,
                           const TSQLQualifiedName* database);
  void LoadMetadataRelations(TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database);
  // Whether "select 1 as dummy_value from <name>" opens on the metadata
  // provider; false when the provider cannot run SQL or the statement fails.
  bool IsTableExists(TmvConnection* connection, WideStringView name);

 protected:
  void DoUpdated() override;

 private:
  void SetBuilder(int index, const TSQLBuilder& value);
  void FillAggregateNamesCache();
  void FillBuiltinFunctionNamesCache();
  void RequireSyntaxProvider() const;
  // Gives `name` the spelling of the container's custom aggregate it matches; false if none.
  bool NormalizeCustomAggregate(TSQLQualifiedName* name);
  // Hooks (or unhooks) the metadata provider's destroying event.
  void HookMetadataProvider(bool hook);
  void SyntaxProviderDestroying();
  void HookSyntaxProvider(bool hook);
  void FreeIdentifierParsing();
  TmvOwned<TSQLSubSelectStatement> ParseWholeSubQuery(const WideString& text);

  TmvBaseSyntaxProvider* syntaxProvider_ = nullptr;
  TmvBaseMetadataProvider* metadataProvider_ = nullptr;
  TmvMetadataContainer* metadataContainer_ = nullptr;
  std::unique_ptr<TSQLBuilderFast> builders_[6];
  mutable std::recursive_mutex identifiersCriticalSection_;
  mutable TmvOwned<TmvBaseScanner> identifiersScanner_;
  mutable TmvOwned<TmvBaseParser> identifiersParser_;
  std::unique_ptr<std::vector<std::string>> comparisonOperators_;
  std::unique_ptr<TSQLQualifiedNamesList> prefixedAggregateNames_;
  std::unique_ptr<TSQLQualifiedNamesList> aggregateNames_;
  std::unique_ptr<TSQLQualifiedNamesList> starAggregateNames_;
  std::unique_ptr<TSQLQualifiedNamesList> multiparamAggregateNames_;
  std::unique_ptr<TSQLQualifiedNamesList> builtinFunctionNames_;
  std::vector<TastNode*> astNodes_;
  std::vector<int> freeAstNodeSlots_;
  bool syntaxProviderChanged_ = false;
  TmvNotificationEvent onSyntaxProviderChanged_;
  TmvLogHelper logHelper_;
};

// The text inside quotes (the inverse of CreateQuotedIdentifier in
// tree/Tokens.h): the characters between a leading `begin` (compared without
// regard to case) and the last character, with a doubled first character of
// `end` taken once. Text no longer than the two quotes, or not starting with
// `begin`, comes back as it stands.
WideString ExtractQuotedIdentifier(WideStringView text, WideStringView begin, WideStringView end);

}  // namespace mv
