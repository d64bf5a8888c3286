// mvsql dialects: the registered syntax providers, one a line: the class
// name, its short name for --dialect, and the provider's description (its
// server name), tab-separated.
//
// mvsql dialects --capabilities: the capability matrix as the providers of
// this build answer it under their default settings: a header row of short
// names, then one row per capability operation with T or F per provider.
// A provider without a column of its own in the matrix (one that forwards to
// another) is left out.
#include <ostream>

#include "Arguments.h"
#include "Command.h"
#include "DialectNames.h"
#include "dialects/matrix/CapabilityMatrix.h"
#include "frontend/SyntaxProvidersList.h"

namespace mvsql {

namespace {

std::string ShortName(const mv::TmvSyntaxProviderClass& c) {
  for (const DialectShortName& n : DialectShortNames())
    if (c.ClassName() == n.className) return n.shortName;
  return "-";
}

void PrintCapabilities(std::ostream& out) {
  std::vector<mv::TmvOwned<mv::TmvBaseSyntaxProvider>> providers;
  out << "Capability";
  for (const mv::TmvSyntaxProviderClass* c : mv::SyntaxProvidersList().Classes()) {
    if (!mv::FindCapabilityRow(c->ClassName())) continue;
    providers.emplace_back(c->CreateRaw());
    out << "\t" << ShortName(*c);
  }
  out << "\n";
  for (int i = 0; i < mv::kCapabilityCount; ++i) {
    const auto capability = static_cast<mv::TmvCapability>(i);
    out << mv::CapabilityName(capability);
    for (const auto& provider : providers) out << "\t" << (mv::AskCapability(*provider, capability) ? "T" : "F");
    out << "\n";
  }
}

}  // namespace

int RunDialects(const std::vector<std::string>& args, std::ostream& out, std::ostream&) {
  Arguments arguments(args, {}, {"capabilities"});
  if (!arguments.Positional().empty()) throw UsageError{"dialects takes no input"};
  if (arguments.Has("capabilities")) {
    PrintCapabilities(out);
    return kExitSuccess;
  }
  for (const mv::TmvSyntaxProviderClass* c : mv::SyntaxProvidersList().Classes()) {
    mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider(c->CreateRaw());
    out << c->ClassName() << "\t" << ShortName(*c) << "\t" << mv::UTF8Encode(provider->ServerName()) << "\n";
  }
  return kExitSuccess;
}

}  // namespace mvsql
