// The catalog queries of the SQL Server family as text: the probe, the
// version, databases, schemas, objects and relations. Names and masks that
// go into a query are quoted the server's way (names in brackets, texts in
// single quotes), so that no name changes the statement around it. `major`
// is the server's major version number (7 to 12).
#pragma once

#include "support/WideString.h"

namespace mv {

extern const char16_t* const kMSSQLProbeQuery;         // the field attribute_value of the first row
extern const char16_t* const kMSSQLCompactProbeQuery;  // opens only on the compact edition
extern const char16_t* const kMSSQLVersionQuery;       // VersionMajor
extern const char16_t* const kMSSQLDefaultDatabaseQuery;
extern const char16_t* const kMSSQLDefaultSchemaQuery;
extern const char16_t* const kMSSQLSynonymsQuery;

// [name] with each ] doubled.
WideString MSSQLQuoteName(WideStringView name);
// '[database].' before the objects of another database; empty for none.
WideString MSSQLDatabasePrefix(WideStringView database);
// The major version the server's answer stands for: 7 to 12 as they are,
// another value below 11 gives 7, above it 12; no answer (executed false) 12.
int CalcServerVersionMSSQL(int major, bool executed);

WideString MSSQLDatabasesQuery(int major);
WideString MSSQLSchemasQuery(int major, WideStringView database);
// The first attempt at the objects of a database: the catalog views from
// version 9, sp_tables below.
WideString MSSQLObjectsQuery(int major, WideStringView database);
// The tables of a catalog of a linked server.
WideString MSSQLLinkedServerTablesQuery(WideStringView server, WideStringView catalog);
WideString MSSQLRelationsQuery(int major, WideStringView database);
// The table-valued functions of a database, read as procedures
// (PROCEDURE_SCHEMA, PROCEDURE_NAME, PROCEDURE_TYPE "PROCEDURE" or
// "SYSTEM PROCEDURE"); temporary ones left out. The catalog views from
// version 9, sysobjects below.
WideString MSSQLTableFunctionsQuery(int major, WideStringView database);
// Opens only where the catalog view sys.all_objects exists.
WideString MSSQLAllObjectsProbeQuery(WideStringView database);
// The synonyms of a database (kMSSQLSynonymsQuery for the connected one).
WideString MSSQLSynonymsQuery(WideStringView database);

}  // namespace mv
