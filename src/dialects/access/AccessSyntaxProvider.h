// The Access provider. Its server version gives the parser a language level
// (3 for JET 3, 4 for JET 4, which reads derived tables) and decides the
// capability answers that depend on it; it is set, never detected. A row
// limit is TOP on the one select of the statement (a union is wrapped
// first); an offset cannot be written and is ignored. Dates are written
// between # characters. The catalog comes from the metadata provider: the
// dialect only probes whether a connection is one to Access.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

enum TmvQBServerVersionMSAccess : uint8_t {
  svMSJET3,
  svMSJET4,
};

class TmvMSAccessSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvMSAccessSyntaxProvider();

  // Registers the provider, its node classes and its keyword resource.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The base's settings, DenyIntoClause and the language level of the
  // version (3 or 4).
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  TmvQBServerVersionMSAccess GetServerVersion() const { return serverVersion_; }
  // Notifies only on a new value.
  void SetServerVersion(TmvQBServerVersionMSAccess value);
  // The level SetParserParams gives the parser for a version.
  static int32_t LanguageLevel(TmvQBServerVersionMSAccess version);

  // Kept for the metadata load; nothing in the dialect reads them.
  bool GetLoadQueriesWithParameters() const { return loadQueriesWithParameters_; }
  void SetLoadQueriesWithParameters(bool value) { loadQueriesWithParameters_ = value; }
  bool GetLoadLinkedTables() const { return loadLinkedTables_; }
  void SetLoadLinkedTables(bool value) { loadLinkedTables_ = value; }
  // The answer of IsBracketsInComplexJoinMandatory; notifies on a new value.
  bool GetBracketsInComplexJoinMandatory() const { return bracketsInComplexJoinMandatory_; }
  void SetBracketsInComplexJoinMandatory(bool value);

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // A text that starts with a bracket is valid; any other only without an
  // underscore, so that every name with one is quoted.
  bool IsValidIdent(WideStringView text) const override;
  // A statement whose first select has INTO.
  bool IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const override;

  // A result offset or fetch-first clause of the statement or of its one
  // select gives its texts; otherwise the one select's TOP gives the count
  // (none for a TOP in percent). False without any of them.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // A clone whose one select (a union is wrapped first) has TOP count, or no
  // TOP when the count is empty or does not read as an expression. The
  // offset is ignored.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // #yyyy-mm-dd#, #yyyy-mm-dd hh:nn:ss#, #hh:nn:ss#.
  WideString GetDateString(TmvDateTime value) const override;
  WideString GetTimeString(TmvDateTime value) const override;
  WideString GetDateTimeString(TmvDateTime value) const override;
  WideString QuoteDateLiteral(WideStringView text) const override;
  // The text of a string constant or of a #date# (outer brackets taken
  // off); then the base's reading.
  WideString GetDate(const TSQLExpressionItem* expression) const override;
  WideString GetTime(const TSQLExpressionItem* expression) const override;
  WideString GetDateTime(const TSQLExpressionItem* expression) const override;
  static WideString GetDateStringValue(const TSQLExpressionItem* expression);

  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;

 private:
  TmvQBServerVersionMSAccess serverVersion_ = svMSJET4;
  bool loadQueriesWithParameters_ = false;
  bool loadLinkedTables_ = true;
  bool bracketsInComplexJoinMandatory_ = false;
};

// Whether the connection answers "select #01/01/01# as AccessDate" with that
// field; don't know without a provider that runs SQL.
TmvSyntaxSupportConectedServer IsConnectedServerIsMSAccess(TmvBaseMetadataProvider* provider, TmvConnection* connection);

// The keyword list of Access, separated by blanks, as the dialect's list
// spells it.
extern const char* const kMSAccessKeywords;

}  // namespace mv
