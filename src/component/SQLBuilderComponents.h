// Components that give a host the formatted text of a query and follow the
// query builder's changes: each holds its own SQL builder (its formats), prints
// the whole query, the active sub-query or the active SELECT, and fires
// OnSQLUpdated whenever that text may have changed.
//
//   TmvSQLBuilderPlainText text;            // formatted, line-broken text
//   text.SetQueryBuilder(builder);
//   text.Builder().SetRightMargin(60);
//   text.OnSQLUpdated = [](auto* sender) { show(sender->GetSql()); };
#pragma once

#include <functional>

#include "sqlgen/SQLOptions.h"
#include "support/Class.h"
#include "support/Event.h"
#include "support/WideString.h"

namespace mv {

class TmvQueryBuilder;
class TSQLBuilder;
class TSQLBuilderPiped;

class TmvBaseSQLBuilder : public TmvObject {
  MV_DECLARE_CLASS()
 public:
  TmvBaseSQLBuilder();
  ~TmvBaseSQLBuilder() override;
  // Makes the inner builder (CreateSQLBuilder) and follows its settings.
  void AfterConstruction() override;
  void BeforeDestruction() override;

  // The inner builder: its formats and settings are the component's.
  TSQLBuilder& Builder() const { return *builder_; }

  TmvQueryBuilder* QueryBuilder() const { return queryBuilder_; }
  // Not owned; the component lets go when the query builder is freed.
  void SetQueryBuilder(TmvQueryBuilder* value);
  TmvQueryPart TargetQueryPart() const { return targetQueryPart_; }
  void SetTargetQueryPart(TmvQueryPart value);

  // The target part printed by the inner builder; empty without a query
  // builder or for an empty query; the held text in sleep mode.
  WideString GetSql();
  // The whole text (or, in a part's target, that part) goes to the query
  // builder; raises without one.
  void SetSql(const WideString& text);

  // A boolean view of the builder's QuoteIdentifiers: icAll or icIfNeed.
  bool QuoteAllIdentifiers() const;
  void SetQuoteAllIdentifiers(bool value);

  void BeginUpdate();
  void EndUpdate();
  bool GetIsUpdating() const;
  // The target part and the inner builder's settings.
  void Assign(const TmvBaseSQLBuilder& source);
  // While a stored form is loaded updates wait; Loaded fires once if one came.
  void BeginLoading() { loading_ = true; }
  void Loaded();
  // The settings as properties XML (PropertiesXML.h, root "properties"): the
  // inner builder's keyed settings and "quote-all-identifiers" (defined in
  // SQLBuilderComponentsXML.cpp). Setting applies inside one update; empty
  // or malformed text changes nothing.
  WideString GetPropertiesXML() { return GetPropertiesXMLByXPath({}, {}); }
  WideString GetPropertiesXMLByXPath(WideStringView include, WideStringView exclude);
  void SetPropertiesXML(WideStringView text);

  std::function<void(TmvBaseSQLBuilder*)> OnSQLUpdated;
  std::function<void(TmvBaseSQLBuilder*)> OnQueryPartChanging;
  std::function<void(TmvBaseSQLBuilder*)> OnQueryPartChanged;
  TmvNotificationEvent DestroyingNotification;

 protected:
  virtual TmvOwned<TSQLBuilder> CreateSQLBuilder() = 0;
  void SQLUpdated();

 private:
  void Attach();
  void Detach();

  TmvOwned<TSQLBuilder> builder_;
  TmvQueryBuilder* queryBuilder_ = nullptr;
  TmvQueryPart targetQueryPart_ = mvqpQuery;
  bool loading_ = false;
  bool updatePending_ = false;
};

// Formatted text with line breaks and indents (a piped builder).
class TmvSQLBuilderPlainText : public TmvBaseSQLBuilder {
  MV_DECLARE_CLASS()
 public:
  TSQLBuilderPiped& Piped() const;
  bool DynamicIndents() const;
  void SetDynamicIndents(bool value);
  bool DynamicRightMargin() const;
  void SetDynamicRightMargin(bool value);

 protected:
  TmvOwned<TSQLBuilder> CreateSQLBuilder() override;
};

}  // namespace mv
