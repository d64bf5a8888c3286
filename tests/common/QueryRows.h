// The rows of a query run through our dataset layer, as text, for tests that
// compare what a server answers.
#pragma once

#include <string>
#include <vector>

#include "metadata/dataset/Connection.h"

namespace mvtest {

using TextRows = std::vector<std::vector<std::string>>;

// Every row in the server's order; NULL reads "NULL" and a real number is
// printed by `realFormat` (a printf format of one double).
TextRows QueryRows(mv::TmvConnection& connection, const mv::WideString& sql, const char* realFormat);

}  // namespace mvtest
