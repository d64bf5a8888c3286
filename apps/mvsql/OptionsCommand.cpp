// mvsql options: the query builder's properties and options with their
// values, one "NAME=VALUE" a line by the names of its property registry
// (SnapToGrid, OptionsView.SplitterResizeUpdate,
// FieldsListOptions.NameColumnOptions.DrawOrder), or, with --xml, its
// properties XML document. --properties FILE applies a properties document
// first, --set NAME=VALUE (repeatable) one property after it; an unknown
// name or a value the property does not take is a usage error naming it.
#include <ostream>
#include <string>

#include "Arguments.h"
#include "Command.h"
#include "DialectNames.h"
#include "component/QueryBuilder.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"

namespace mvsql {

int RunOptions(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  Arguments arguments(args, {"dialect", "set", "properties"}, {"xml"});
  if (!arguments.Positional().empty()) throw UsageError{"unexpected argument '" + arguments.Positional().front() + "'"};
  mv::TmvOwned<mv::TmvBaseSyntaxProvider> provider = CreateDialect(arguments.Value("dialect", "sql92"));
  mv::TmvOwned<mv::TmvQueryBuilder> builder = mv::TmvCreate<mv::TmvQueryBuilder>();
  builder->SetSyntaxProvider(provider.get());
  mv::TmvQueryBuilderProperties& properties = builder->Properties();

  int code = kExitSuccess;
  if (arguments.Has("properties")) {
    const std::string path = arguments.Value("properties");
    try {
      builder->SetPropertiesXML(mv::ReadTextFile(path));
    } catch (const mv::Exception& e) {
      err << "mvsql: " << path << ": " << mv::UTF8Encode(e.Message()) << "\n";
      code = kExitFailure;
    }
  }
  for (const std::string& setting : arguments.Values("set")) {
    try {
      properties.PropertyTable().SetAssignment(properties, mv::UTF8Decode(setting));
    } catch (const mv::Exception& e) {
      builder->SetSyntaxProvider(nullptr);
      throw UsageError{"--set " + setting + ": " + mv::UTF8Encode(e.Message())};
    }
  }
  if (code == kExitSuccess) {
    if (arguments.Has("xml")) {
      out << mv::UTF8Encode(builder->GetPropertiesXML());
    } else {
      const mv::TmvPropertyTable& table = properties.PropertyTable();
      for (const mv::TmvPropertyLeaf& leaf : table.Leaves())
        out << mv::UTF8Encode(leaf.Path) << "=" << mv::UTF8Encode(table.GetText(properties, leaf.Path)) << "\n";
    }
  }
  builder->SetSyntaxProvider(nullptr);
  return code;
}

}  // namespace mvsql
