// mvgrammargen: turns a dialect's token description into its scanner class
// and its grammar file into its parser class, at build time.
//
//   mvgrammargen scanner FILE.tokens  --header H --source CPP [--depfile D] [--root DIR]
//   mvgrammargen parser  FILE.grammar --header H --source CPP [--depfile D] [--root DIR]
//
// Output files are only written when their text changes. --depfile names
// every file the output depends on (included grammars, the token
// description). --root makes the paths in the banners relative to DIR, so
// that the output does not depend on where the tree is checked out.
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "Diagnostics.h"
#include "Grammar.h"
#include "Output.h"
#include "ParserWriter.h"
#include "ScannerWriter.h"
#include "TokenDescription.h"

namespace {

int Usage() {
  std::cerr << "usage: mvgrammargen scanner|parser INPUT --header FILE --source FILE"
               " [--depfile FILE] [--root DIR]\n";
  return 2;
}

std::string Relative(const std::string& path, const std::string& root) {
  if (!root.empty() && path.compare(0, root.size() + 1, root + "/") == 0) return path.substr(root.size() + 1);
  return path;
}

std::string FileName(const std::string& path) {
  size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace grammargen;
  if (argc < 3) return Usage();
  const std::string mode = argv[1];
  const std::string input = argv[2];
  std::map<std::string, std::string> options;
  for (int i = 3; i < argc; ++i) {
    std::string name = argv[i];
    if (name.rfind("--", 0) != 0 || i + 1 >= argc) return Usage();
    options[name.substr(2)] = argv[++i];
  }
  if (!options.count("header") || !options.count("source")) return Usage();
  const std::string root = options.count("root") ? options["root"] : "";
  const std::string header = options["header"];
  const std::string source = options["source"];

  try {
    GeneratedFiles files;
    std::vector<std::string> inputs;
    const SourceLocation commandLine{"mvgrammargen", 0};
    if (mode == "scanner") {
      TokenDescription description = ReadTokenDescription(input, commandLine);
      files = WriteScanner(description, Relative(input, root), FileName(header));
      inputs = description.inputs;
    } else if (mode == "parser") {
      Grammar grammar = ReadGrammar(input, commandLine);
      AnalyzeGrammar(grammar);
      files = WriteParser(grammar, Relative(input, root), FileName(header));
      inputs = grammar.inputs;
    } else {
      return Usage();
    }
    WriteIfChanged(header, files.header);
    WriteIfChanged(source, files.source);
    if (options.count("depfile")) WriteDepfile(options["depfile"], header, inputs);
  } catch (const GeneratorError& e) {
    std::cerr << e.what() << "\n";
    return 1;
  } catch (const std::exception& e) {
    std::cerr << "mvgrammargen: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
