// mvsql roundtrip: the input goes into a query builder (its text becomes the
// model) and the model's text comes back: laid out by the formatting builder
// from the builder's result tree, or with --one-line as GetSql gives it. What
// changes between input and output is what the model normalises. A syntax
// error, or text that is no SELECT, prints the parser's message on standard
// error and exits with 1; the metadata of --metadata or --sqlite binds the
// names as the builder binds them.
//
// --layout FILE.xml takes the query and the places of its boxes from a
// layout document instead of the input; --layout-out FILE.xml writes the
// builder's layout document after the text is set. --properties FILE.xml
// applies a properties XML document to the builder before the text.
#include <pugixml.hpp>

#include <fstream>
#include <ostream>
#include <string>

#include "Arguments.h"
#include "BuilderSession.h"
#include "Command.h"
#include "frontend/SQLError.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"

namespace mvsql {

int RunRoundtrip(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"dialect", "metadata", "sqlite", "layout", "layout-out", "properties"}, {"one-line"});
  const std::string layoutPath = arguments.Value("layout");
  if (arguments.Has("layout") && !arguments.Positional().empty())
    throw UsageError{"--layout takes the query from the layout document: give no FILE"};
  const mv::WideString text = mv::ReadTextFile(arguments.Has("layout") ? layoutPath : arguments.InputPath());
  BuilderSession session(arguments);
  if (arguments.Has("properties")) {
    // A document that is not well-formed changes nothing; a bad value raises.
    const std::string path = arguments.Value("properties");
    try {
      session.Builder().SetPropertiesXML(mv::ReadTextFile(path));
    } catch (const mv::Exception& e) {
      err << path << ": " << mv::UTF8Encode(e.Message()) << "\n";
      return kExitFailure;
    }
  }
  try {
    if (arguments.Has("layout")) {
      // The builder ignores text that is no layout document; say so here.
      pugi::xml_document document;
      const std::string bytes = mv::UTF8Encode(text);
      const pugi::xml_parse_result parsed = document.load_buffer(bytes.data(), bytes.size());
      if (!parsed) {
        err << layoutPath << ": not a well-formed layout document: " << parsed.description() << " (byte "
            << parsed.offset << ")\n";
        return kExitFailure;
      }
      if (std::string(document.document_element().name()) != "MorvaneLayout") {
        err << layoutPath << ": not a layout document: the root element is not <MorvaneLayout>\n";
        return kExitFailure;
      }
      session.Builder().SetLayout(text);
    } else {
      session.Builder().SetSql(text);
    }
  } catch (const mv::EmvSQLError& e) {
    err << mv::UTF8Encode(e.Message()) << "\n";
    return kExitFailure;
  }
  if (arguments.Has("layout-out")) {
    const std::string path = arguments.Value("layout-out");
    std::ofstream file(path, std::ios::binary);
    file << mv::UTF8Encode(session.Builder().GetLayout());
    if (!file.flush()) {
      err << path << ": cannot write the layout document\n";
      return kExitFailure;
    }
  }
  out << session.Print(arguments.Has("one-line"));
  return kExitSuccess;
}

}  // namespace mvsql
