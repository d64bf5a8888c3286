// Metadata containers as sorted lines of text, so that what a server's
// catalog gives can be compared with what the SQLite file of Chinook gives:
// one line per object, per field (as `describe` writes it) and per foreign
// key ("Invoice -> InvoiceLine [InvoiceId] [InvoiceId]").
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace mv {
class TmvMetadataContainer;
class TmvMetadataField;
class TmvMetadataObject;
}  // namespace mv

namespace mvtest {

using ObjectTest = std::function<bool(const mv::TmvMetadataObject&)>;
// The text after the field's name, e.g. "int null" or "varchar(10) pk".
using FieldText = std::function<std::string(const mv::TmvMetadataField&)>;

// The objects that `keep` accepts, their fields and the foreign keys whose
// primary object it accepts; names without quotes, the lines sorted.
std::vector<std::string> CatalogLines(const mv::TmvMetadataContainer& container, const ObjectTest& keep,
                                      const FieldText& describe);

// Those lines of Chinook with the tables of HostileNamesSql(), read from a
// copy of the SQLite file by the SQLite catalog.
std::vector<std::string> SqliteChinookCatalogLines(const FieldText& describe);

// " null" for a nullable field that is no key, " pk" for a key field.
std::string NullAndKey(const mv::TmvMetadataField& field);

// A loopback port nothing listens on.
int ClosedLoopbackPort();

}  // namespace mvtest
