// The provider of DB2. Its NamingConvention decides the separator of a
// table's qualifier ("." for the SQL convention, "/" for the system one,
// LIB/FILE) and whether an object's name is its default alias. A row limit
// is FETCH FIRST n ROWS ONLY on the one select expression; an offset takes
// a row number column on a wrapping select (see TransformQueryLimits). The
// catalog statements of the family are in DB2CatalogQueries.h.
#pragma once

#include "dialects/matrix/MatrixSyntaxProvider.h"

namespace mv {

enum TmvDb2NamingConventions : uint8_t {
  db2ncSql,
  db2ncSystem,
};

class TmvDB2SyntaxProvider : public TmvMatrixSyntaxProvider {
  MV_DECLARE_SYNTAX_PROVIDER()
 public:
  TmvDB2SyntaxProvider();

  // Registers the provider class, its node classes and its keyword resource
  // with the engine; InitializeEngine calls it.
  static void RegisterDialect();

  void Assign(const TmvPersistent* source) override;

  const TmvScannerClass& GetScannerClass() const override;
  const TmvParserClass& GetParserClass() const override;
  std::vector<int32_t> GetStringTokenIds() const override;
  int CapabilitySetting(TmvCapabilitySetting setting) const override;

  TmvDb2NamingConventions GetNamingConvention() const { return namingConvention_; }
  // A new value sends the provider's notifications.
  void SetNamingConvention(TmvDb2NamingConventions value);
  // Set by the objects' load when only QSYS2's catalog exists (DB2 for i);
  // the fields' load reads it.
  bool GetUseQSYS2() const { return useQSYS2_; }
  void SetUseQSYS2(bool value) { useQSYS2_ = value; }

  // False for char, character, varchar, graphic and vargraphic.
  bool IsFixedSizeType(WideStringView typeName) const override;
  // TABLE(call), printed as the keyword "Table" and brackets.
  WideString CreateWrapperForStoredProc(WideStringView call) const override;
  void BeginBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;
  void EndBuildWrapperForStoredProc(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) const override;

  // The probe of the family (a row from SYSIBM.SYSDUMMY1): supported when
  // it answers, not when the server refuses it; without SQL the base.
  TmvSyntaxSupportConectedServer IsSupportConnectedServer(TmvBaseMetadataProvider* metadataProvider,
                                                          TmvObject* owner) const override;

  // The server's answers (CURRENT_SERVER, CURRENT SQLID, SYSCAT.SCHEMATA);
  // where it refuses, the metadata provider's.
  TmvOwned<TSQLQualifiedName> GetDefaultDatabaseName(TmvBaseSQLContext* context, TmvConnection* connection) override;
  void GetDefaultSchemaNames(TmvBaseSQLContext* context, TmvConnection* connection,
                             TSQLIdentifiersCollection& names) override;
  void GetSchemasList(TmvBaseSQLContext* context, TmvConnection* connection, std::vector<WideString>& list,
                      const TSQLQualifiedName* database) override;

  // SYSIBM's catalog where SYSIBM.SYSTABLES exists (UseQSYS2 off), else
  // QSYS2's where QSYS2.SYSTABLES does (UseQSYS2 on); where neither loads,
  // the metadata provider's.
  void LoadMetadataObjects(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                           const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  void LoadMetadataRelations(TmvBaseSQLContext* context, TmvConnection* connection, TmvMetadataContainer* container,
                             const TmvMetadataFilter* filter, const TSQLQualifiedName* database) override;
  // From the catalog the objects' load chose (UseQSYS2).
  void LoadFieldsForObjectFromServer(TmvBaseSQLContext* context, TmvConnection* connection,
                                     TmvMetadataObject* object) override;

  // True with one select expression whose FETCH FIRST has a count: that
  // count. An offset is never read.
  bool GetQueryLimits(const TSQLSubSelectStatement* statement, WideString& offset, WideString& count) const override;
  // The clone, a union wrapped first, without its FETCH FIRST. A count
  // alone becomes FETCH FIRST count ROWS ONLY. An offset adds
  // "ROW_NUMBER() OVER () as RNColumn" to the select, wraps it, and keeps
  // the rows (RNColumn > offset) And (RNColumn <= count+offset) of the
  // outer select, whose list then leaves RNColumn out. A limit text that
  // does not read as an expression raises EmvSQLError.
  TmvOwned<TSQLSubSelectStatement> TransformQueryLimits(const TSQLSubSelectStatement* statement,
                                                        WideStringView offset, WideStringView count) const override;

 private:
  TmvDb2NamingConventions namingConvention_ = db2ncSql;
  bool useQSYS2_ = false;
};

// The keyword list of DB2, separated by blanks.
extern const char* const kDB2Keywords;

}  // namespace mv
