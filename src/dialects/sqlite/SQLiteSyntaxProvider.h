// The provider of SQLite. It has no server version; its capability answers,
// texts and aggregate lists are its row of the capability matrix. A row
// limit is a LIMIT clause of the statement (SQLiteNodes.h), and the catalog
// is read through sqlite_master and the pragmas (SQLiteMetadataHelpers.h).
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

class TmvSQLiteSyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvSQLiteSyntaxProvider();

  // Registers the provider class, its node classes and its keyword resource
  // with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;

  void GetBuiltinFunctionNames(TSQLQualifiedNamesList& list) const override;
  bool IsFixedSizeType(WideStringView) const override { return false; }
  // A name that starts with a bracket or a back quote would read back as a
  // quoted name (the scanner takes an unclosed one too), so it is quoted.
  bool IsValidIdent(WideStringView text) const override;

  // True for any statement; the count and, with an offset, the offset of
  // the statement's limit, in decimal.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // A count alone gives LIMIT count, a count and an offset LIMIT count
  // OFFSET offset; an offset without a count is not applied. Texts that are
  // no integers raise EConvertError.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

  // --- The catalog (SQLiteMetadataHelpers.h); where it gives no answer, the
  // metadata provider's. ---
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void GetDatabasesList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list) override;
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;
  // The base, then the table's foreign keys, read table by table.
  void LoadMetadataForTable(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataTable* table) override;
};

// The keyword list of SQLite, separated by blanks.
extern const char* const kSQLiteKeywords;

}  // namespace mv
