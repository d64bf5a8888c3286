// Dialect names on the command line: a provider's class name
// (TmvSQL92SyntaxProvider, in any case) or its short name (sql92, mssql, ...).
// Shared by every command that takes --dialect.
#pragma once

#include <string>
#include <vector>

#include "frontend/SyntaxProvider.h"

namespace mvsql {

struct DialectShortName {
  const char* shortName;
  const char* className;
};

// The short names, in the order of the table of providers.
const std::vector<DialectShortName>& DialectShortNames();

// The registered provider class a name stands for. Raises UsageError for a
// name that is no dialect, or one this build does not hold.
const mv::TmvSyntaxProviderClass& FindDialect(const std::string& name);

// A new provider of that dialect.
mv::TmvOwned<mv::TmvBaseSyntaxProvider> CreateDialect(const std::string& name);

}  // namespace mvsql
