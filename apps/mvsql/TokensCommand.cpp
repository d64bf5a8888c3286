// mvsql tokens: the token list of the input as a dialect's scanner makes it,
// one token a line, tab-separated: kind, line:col, pos, flags ("-", or C for
// a comment and P for a partial token), and the text with CR, LF, tab and
// backslash written as \r, \n, \t and \\.
#include <ostream>
#include <string>

#include "Arguments.h"
#include "Command.h"
#include "DialectNames.h"
#include "support/TextFile.h"

namespace mvsql {

namespace {

std::string Escaped(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '\r': out += "\\r"; break;
      case '\n': out += "\\n"; break;
      case '\t': out += "\\t"; break;
      case '\\': out += "\\\\"; break;
      default: out += c;
    }
  }
  return out;
}

}  // namespace

int RunTokens(const std::vector<std::string>& args, std::ostream& out, std::ostream&) {
  Arguments arguments(args, {"dialect"}, {});
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = CreateDialect(arguments.Value("dialect", "sql92"));
  const std::string path = arguments.InputPath();
  const mv::WideString text = mv::ReadTextFile(path);
  mv::TmvOwned<mv::TmvBaseScanner> scanner = provider->CreateScanner();
  scanner->Init(text);
  std::string line;
  for (const mv::TmvToken& t : scanner->GetTokens()) {
    std::string flags = std::string(t.IsComment ? "C" : "") + (t.IsPartial ? "P" : "");
    line = std::to_string(t.Kind) + "\t" + std::to_string(t.Line) + ":" + std::to_string(t.Col) + "\t" +
           std::to_string(t.Pos) + "\t" + (flags.empty() ? "-" : flags) + "\t" + Escaped(mv::UTF8Encode(t.Text)) + "\n";
    out << line;
  }
  return kExitSuccess;
}

}  // namespace mvsql
