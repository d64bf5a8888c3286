// The MySQL provider. Its server version is a number (major * 10000 + minor
// * 100 + release) shown as text, and it steers only the capability answers:
// the parser reads every form at every version. AnsiQuotes picks the
// scanner: a double quote opens a name under it and a string otherwise.
// Order by and the row limit belong to each select (MYSQLNodes.h), so a row
// limit applies to a single select only and is never wrapped.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvMYSQLSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  // 5.2, the version a new provider assumes.
  static constexpr int kDefaultServerVersion = 50200;

  TmvMYSQLSyntaxProvider();

  // Registers the provider, its node classes and its keyword resource.
  static void RegisterDialect();
  // The base's settings, AnsiQuotes, TryToSelectLinksViaDriver and the version.
  void Assign(const TmvPersistent* source) override;

  // MYSQLANSIScanner under AnsiQuotes, MYSQLScanner otherwise.
  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  // The base's settings and DenyIntoClause.
  void SetParserParams(TmvBaseParser& parser) const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  bool GetAnsiQuotes() const { return ansiQuotes_; }
  void SetAnsiQuotes(bool value);
  bool GetTryToSelectLinksViaDriver() const { return tryToSelectLinksViaDriver_; }
  void SetTryToSelectLinksViaDriver(bool value);
  // The same setting as DetectServerVersion.
  bool GetAutoCalcServerVersion() const { return GetDetectServerVersion(); }
  void SetAutoCalcServerVersion(bool value) { SetDetectServerVersion(value); }

  int GetServerVersionInt() const { return serverVersion_; }
  // Notifies only when the number changes.
  void SetServerVersionInt(int value);
  // The number as text: 50200 is "5.02", 41000 "4.1", 50010 "5.0.1" (a
  // one-digit part stands for its tens, so the text reads back the same).
  std::string GetServerVersion() const;
  // The text read by ParseServerVersionMySQL; a text without a major number
  // raises and keeps the number as it was.
  void SetServerVersion(std::string_view text);
  bool CanDetectServerVersion() const override { return true; }

  // The resource MYSQLSYNTAXPROVIDER_KEYWORDS.
  std::vector<WideString> GetKeywords() const override;
  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  // False for char, varchar, binary and varbinary.
  bool IsFixedSizeType(WideStringView typeName) const override;
  // The base's answer, or the first select's INTO OUTFILE or DUMPFILE.
  bool IsQueryWithIntoClause(const TSQLSubSelectStatement* statement) const override;

  // True for a statement of one select with a limit: its count and, for
  // LIMIT o, n or LIMIT n OFFSET o, its offset, in decimal.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // For a statement of one select, a clone whose limit is LIMIT count, or
  // LIMIT count OFFSET offset with both; no count, no limit. Anything else
  // gives null. Texts that are no integers raise EConvertError.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // str_to_date('yyyy-mm-dd', '%Y-%m-%d') and its time and timestamp forms.
  WideString GetDateString(TmvDateTime value) const override;
  WideString GetTimeString(TmvDateTime value) const override;
  WideString GetDateTimeString(TmvDateTime value) const override;
  // The text of a str_to_date call with a string first, else the base's.
  WideString GetDate(const TSQLExpressionItem* expression) const override;
  WideString GetTime(const TSQLExpressionItem* expression) const override;
  WideString GetDateTime(const TSQLExpressionItem* expression) const override;

  // --- The server's catalog (MySQLCatalog.h). The probe decides unless it
  // cannot run SQL; each load detects the version first when
  // DetectServerVersion is on, and falls back on the base where the catalog
  // gives no answer (relations only under TryToSelectLinksViaDriver). ---
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  // The base's step, then the version the server gives.
  void DoDetectServerVersion(TmvBaseMetadataProvider* metadataProvider, TmvObject* owner) override;
  void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection,
                        std::vector<WideString>& list) override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // information_schema.COLUMNS from 5.0.0 on, "show columns" below.
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
  // --- end of the server's catalog ---

 private:
  // Reads the version when DetectServerVersion is on (once).
  void DetectVersionFor(TmvBaseSQLContext* context);

  bool ansiQuotes_ = false;
  bool tryToSelectLinksViaDriver_ = false;
  int serverVersion_ = kDefaultServerVersion;
};

// The version number of a server's version text ("5.1.40-log" is 51040):
// up to three runs of digits separated by other characters; the major
// counts * 10000, a one-digit minor * 1000 and a longer one * 100, a
// one-digit release * 10 and a longer one * 1. A text that does not start
// with a number raises Exception("<text> is invalid version value").
int ParseServerVersionMySQL(std::string_view text);
// The text of a version number, as GetServerVersion gives it.
std::string ServerVersionTextMySQL(int version);
// The unquoted text of a str_to_date call whose first parameter is a
// string, brackets around the call allowed; empty otherwise.
WideString GetStrToDateStringValue(const TSQLExpressionItem* expression);

}  // namespace mv
