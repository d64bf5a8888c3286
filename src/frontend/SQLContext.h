// The SQL context: binds a syntax provider (the dialect), a metadata
// provider and a metadata container, and is where every syntax tree node
// belongs. Nodes register with it, so that a change of dialect reaches each
// of them; they compare names through it under the dialect's case rules and
// print through its six one-line builders.
//
// This holds what nodes and builders need of a context; the parse entries,
// the identifier grammar test and the metadata forwarders join it with the
// SQL-92 front end.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sqlgen/SQLBuilder.h"
#include "support/UpdatablePersistent.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseSyntaxProvider;
class TmvBaseMetadataProvider;
class TmvMetadataContainer;
class TmvMetadataFilter;
class TmvMetadataFieldsList;
class TmvMetadataTable;
class TmvMetadataView;
class TmvMetadataProcedure;
class TmvMetadataSynonym;
class TmvConnection;
class TastNode;
class TastToken;
class TastTokenIdentifier;
class TSQLQualifiedName;
class TSQLQualifiedNamesList;

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
  // Whether the text can stand as an identifier without quotes.
  bool IsValidIdent(WideStringView text) const;
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
  // Gives a name the spelling of the dialect's list that knows it.
  void AggregateNormalize(TSQLQualifiedName* name);
  void BuiltinFunctionNormalize(TSQLQualifiedName* name);
  void InvalidateAggregateNamesCache();
  void InvalidateBuiltinFunctionNamesCache();

  // --- Parts of a name held inside out (object name at index 0). ---
  TmvOwned<TastToken> ExtractNameFromFullName(const TSQLQualifiedName* name) const;
  TmvOwned<TastToken> ExtractSchemaFromFullName(const TSQLQualifiedName* name) const;
  TmvOwned<TSQLQualifiedName> ExtractDatabaseFromFullName(const TSQLQualifiedName* name);

  // --- Metadata (defined with the metadata layer, ContextMetadata.cpp). ---
  // Whether a variant of the name (with the name's or the container's default
  // database and, on a dialect with schemas, its own schema or each default
  // schema) stands in the container's custom aggregates.
  bool IsNameOfCustomAggregate(const TSQLQualifiedName* name);
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

  TmvBaseSyntaxProvider* syntaxProvider_ = nullptr;
  TmvBaseMetadataProvider* metadataProvider_ = nullptr;
  TmvMetadataContainer* metadataContainer_ = nullptr;
  std::unique_ptr<TSQLBuilderFast> builders_[6];
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
};

}  // namespace mv
