#include "DialectNames.h"

#include "Command.h"
#include "frontend/SyntaxProvidersList.h"

namespace mvsql {

const std::vector<DialectShortName>& DialectShortNames() {
  static const std::vector<DialectShortName> names = {
      {"sql92", "TmvSQL92SyntaxProvider"},        {"sql89", "TmvSQL89SyntaxProvider"},
      {"sql2003", "TmvSQL2003SyntaxProvider"},    {"mssql", "TmvMSSQLSyntaxProvider"},
      {"mssqlce", "TmvMSSQLCESyntaxProvider"},    {"oracle", "TmvOracleSyntaxProvider"},
      {"mysql", "TmvMYSQLSyntaxProvider"},        {"postgresql", "TmvPGSQLSyntaxProvider"},
      {"interbase", "TmvIBSyntaxProvider"},       {"firebird", "TmvFirebirdSyntaxProvider"},
      {"db2", "TmvDB2SyntaxProvider"},            {"informix", "TmvInformixSyntaxProvider"},
      {"access", "TmvMSAccessSyntaxProvider"},    {"sybase", "TmvSybaseSyntaxProvider"},
      {"sqlite", "TmvSQLiteSyntaxProvider"},      {"teradata", "TmvTeradataSyntaxProvider"},
      {"netezza", "TmvNetezzaSyntaxProvider"},    {"advantage", "TmvAdvantageSyntaxProvider"},
      {"mimer", "TmvMimerSQLSyntaxProvider"},     {"universal", "TmvUniversalSyntaxProvider"},
      {"auto", "TmvAutoSyntaxProvider"},
  };
  return names;
}

namespace {

std::string AvailableDialects() {
  std::string list;
  for (const mv::TmvSyntaxProviderClass* c : mv::SyntaxProvidersList().Classes()) {
    std::string name(c->ClassName());
    for (const DialectShortName& n : DialectShortNames())
      if (name == n.className) name = n.shortName;
    list += (list.empty() ? "" : ", ") + name;
  }
  return list;
}

}  // namespace

const mv::TmvSyntaxProviderClass& FindDialect(const std::string& name) {
  std::string className = name;
  for (const DialectShortName& n : DialectShortNames())
    if (mv::AnsiSameText(name, n.shortName)) className = n.className;
  if (const mv::TmvSyntaxProviderClass* c = mv::SyntaxProvidersList().FindClassByClassName(className)) return *c;
  const bool known = className != name || [&] {
    for (const DialectShortName& n : DialectShortNames())
      if (mv::SameClassName(name, n.className)) return true;
    return false;
  }();
  throw UsageError{(known ? "dialect '" + name + "' is not in this build" : "unknown dialect '" + name + "'") +
                   " (available: " + AvailableDialects() + ")"};
}

mv::TmvOwned<mv::TmvBaseSyntaxProvider> CreateDialect(const std::string& name) {
  return mv::TmvOwned<mv::TmvBaseSyntaxProvider>(FindDialect(name).CreateRaw());
}

}  // namespace mvsql
