// mvsql decode: shows how the input was read. Prints the text as UTF-8 and,
// on standard error, its length in UTF-16 code units and lines.
#include <ostream>

#include "Arguments.h"
#include "Command.h"
#include "support/TextFile.h"

namespace mvsql {

int RunDecode(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {}, {});
  const mv::WideString text = mv::ReadTextFile(arguments.InputPath());
  size_t lines = text.empty() ? 0 : 1;
  for (char16_t c : text) lines += c == u'\n';
  out << mv::UTF8Encode(text);
  if (!text.empty() && text.back() != u'\n') out << "\n";
  err << text.size() << " UTF-16 code units, " << lines << " line(s)\n";
  return kExitSuccess;
}

}  // namespace mvsql
