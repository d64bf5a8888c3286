// mvsql dialects: the registered syntax providers, one a line: the class
// name, its short name for --dialect, and the provider's description (its
// server name), tab-separated.
#include <ostream>

#include "Arguments.h"
#include "Command.h"
#include "DialectNames.h"
#include "frontend/SyntaxProvidersList.h"

namespace mvsql {

int RunDialects(const std::vector<std::string>& args, std::ostream& out, std::ostream&) {
  Arguments arguments(args, {}, {});
  if (!arguments.Positional().empty()) throw UsageError{"dialects takes no input"};
  for (const mv::TmvSyntaxProviderClass* c : mv::SyntaxProvidersList().Classes()) {
    mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider(c->CreateRaw());
    std::string shortName = "-";
    for (const DialectShortName& n : DialectShortNames())
      if (c->ClassName() == n.className) shortName = n.shortName;
    out << c->ClassName() << "\t" << shortName << "\t" << mv::UTF8Encode(provider->ServerName()) << "\n";
  }
  return kExitSuccess;
}

}  // namespace mvsql
