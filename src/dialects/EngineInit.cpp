// The engine's start-up registration: the one place outside the dialect
// folders that names the concrete dialects of the build.
#include "dialects/EngineInit.h"

#include "dialects/access/AccessSyntaxProvider.h"
#include "dialects/advantage/AdvantageSyntaxProvider.h"
#include "dialects/db2/DB2SyntaxProvider.h"
#include "dialects/firebird/FirebirdSyntaxProvider.h"
#include "dialects/forms/QueryPropsForm.h"
#include "dialects/informix/InformixSyntaxProvider.h"
#include "dialects/interbase/IBSyntaxProvider.h"
#include "dialects/mimersql/MimerSQLSyntaxProvider.h"
#include "dialects/mssql/MSSQLSyntaxProvider.h"
#include "dialects/mysql/MYSQLSyntaxProvider.h"
#include "dialects/netezza/NetezzaSyntaxProvider.h"
#include "dialects/oracle/OracleSyntaxProvider.h"
#include "dialects/pgsql/PGSQLSyntaxProvider.h"
#include "dialects/sql2003/SQL2003SyntaxProvider.h"
#include "dialects/sql89/SQL89SyntaxProvider.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "dialects/sqlite/SQLiteSyntaxProvider.h"
#include "dialects/sybase/SybaseSyntaxProvider.h"
#include "dialects/teradata/TeradataSyntaxProvider.h"
#include "dialects/universal/AutoSyntaxProvider.h"
#include "dialects/universal/UniversalSyntaxProvider.h"
#include "frontend/SQLError.h"
#include "metadata/MetadataMessages.h"

namespace mv {

namespace {

// One row per dialect, in the order of the table of providers: SQL-92,
// SQL-89, SQL-2003, SQL Server, SQL Server Compact, Oracle, MySQL,
// PostgreSQL, InterBase, Firebird, DB2, Informix, Access, Sybase, SQLite,
// Teradata, Netezza, Advantage, Mimer SQL, universal. The order decides ties
// when a provider is detected from a connection.
constexpr void (*kDialects[])() = {
    &TmvSQL92SyntaxProvider::RegisterDialect,
    &TmvSQL89SyntaxProvider::RegisterDialect,
    &TmvSQL2003SyntaxProvider::RegisterDialect,
    // SQL Server and SQL Server Compact.
    &TmvMSSQLSyntaxProvider::RegisterDialect,
    &TmvOracleSyntaxProvider::RegisterDialect,
    &TmvMYSQLSyntaxProvider::RegisterDialect,
    &TmvPGSQLSyntaxProvider::RegisterDialect,
    &TmvIBSyntaxProvider::RegisterDialect,
    &TmvFirebirdSyntaxProvider::RegisterDialect,
    &TmvDB2SyntaxProvider::RegisterDialect,
    &TmvInformixSyntaxProvider::RegisterDialect,
    &TmvMSAccessSyntaxProvider::RegisterDialect,
    &TmvSybaseSyntaxProvider::RegisterDialect,
    &TmvSQLiteSyntaxProvider::RegisterDialect,
    &TmvTeradataSyntaxProvider::RegisterDialect,
    &TmvNetezzaSyntaxProvider::RegisterDialect,
    &TmvAdvantageSyntaxProvider::RegisterDialect,
    &TmvMimerSQLSyntaxProvider::RegisterDialect,
    &TmvUniversalSyntaxProvider::RegisterDialect,
    // Not in that table: it stands for whichever of the others it detects.
    &TmvAutoSyntaxProvider::RegisterDialect,
};

}  // namespace

void InitializeEngine() {
  RegisterFrontendMessages();
  RegisterMetadataMessages();
  for (auto registerDialect : kDialects) registerDialect();
  RegisterQueryPropsForms();
}

}  // namespace mv
