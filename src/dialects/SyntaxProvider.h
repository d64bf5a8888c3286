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

 private:
  struct ExtenderEntry {
    const TastNodeClass* nodeClass;
    const TastNodeClass* extenderClass;
  };
  TmvIdentCaseSensitivity identCaseSens_ = icsSensitiveUpperCase;
  std::vector<ExtenderEntry> extenders_;
  TmvNotificationEvent onUpdate_;
  TmvNotificationEvent onDestroying_;
};

}  // namespace mv
