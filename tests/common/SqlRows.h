// Rows of a query on a test server, as text: what the server fixtures return
// and what the tests compare.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace mvtest {

// A row as text, one entry per column; a NULL is an empty optional.
using SqlRow = std::vector<std::optional<std::string>>;
using SqlRows = std::vector<SqlRow>;

// A row as one line for messages: values separated by " | ", NULL as "NULL".
std::string RowText(const SqlRow& row);

// Whether the tests run under continuous integration (CI=true), where a
// missing database server is a failure rather than a reason to skip.
bool RunningInCI();

}  // namespace mvtest
