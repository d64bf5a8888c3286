// bench_parse_trace: parses statement files (entries separated by ";;" lines)
// under the SQL-92 dialect, for two jobs the timed runners do not do.
//
//   bench_parse_trace --ways FILE...
//       one line per entry that says everything a parse decided: the count of
//       complete ways the first pass found and a hash of their decisions in
//       list order, the highest token any way read, and a hash of the tree
//       dump; or the error's kind and the token blamed. Two builds that print
//       the same lines parse alike, ways and preference order included, so a
//       speed-up of the engine is checked against the build before it.
//
//   bench_parse_trace [--reps N] [--print] FILE...
//       parses every entry N times (1) and prints the counts; a fixed amount
//       of work for an instruction-counting profiler (callgrind), unlike the
//       timed runners, which repeat until a time is reached.
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/ParseTreeDump.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/Scanner.h"
#include "support/StatementList.h"
#include "tree/SelectStatement.h"

namespace {

const char* const kUsage =
    "usage: bench_parse_trace [--ways | --reps N [--print]] FILE...\n"
    "  --ways     per entry: complete ways and their decisions (hashed), farthest token, tree (hashed)\n"
    "  --reps N   parse every entry N times (default 1); --print also prints each tree\n";

// FNV-1a, 64 bits: stable across builds and runs.
struct Hash {
  uint64_t value = 14695981039346656037ull;
  void Add(const std::string& text) {
    for (unsigned char c : text) {
      value ^= c;
      value *= 1099511628211ull;
    }
    value ^= 0xFF;  // a separator, so that "ab","c" and "a","bc" differ
    value *= 1099511628211ull;
  }
};

// The first pass of a whole statement on its own, with every complete way
// kept: their count, a hash of their decisions in list order, and the
// farthest token read.
std::string FirstPassTrace(mv::TmvBaseSQLContext& context, const mv::WideString& text) {
  mv::TmvOwned<mv::TmvBaseScanner> scanner = context.SyntaxProvider()->CreateScanner();
  scanner->Init(text);
  mv::TmvOwned<mv::TmvBaseParser> parser = context.SyntaxProvider()->CreateParser(scanner.get(), &context);
  // Every complete way is kept only when every way is explored on its own.
  parser->ReferenceMode = true;
  int32_t ways = 0;
  Hash decisions;
  const bool found = parser->TestWay([&](mv::TmvWayPointsList& list) {
    parser->ParseSelectWayCalc(list);
    parser->Expect(list, mv::tkEndOfText);
    ways = list.Count();
    for (int32_t i = 0; i < list.Count(); ++i) decisions.Add(mv::TmvBaseParser::UnrollWayStr(list[i]));
  });
  return "found=" + std::to_string(found) + " ways=" + std::to_string(ways) + " decisions=" +
         std::to_string(decisions.value) + " farthest=" + std::to_string(parser->MaxTokenIndex) +
         " limit=" + std::to_string(parser->LimitExceeded());
}

void TraceEntry(mv::TmvBaseSQLContext& context, const mv::TmvStatementEntry& entry, std::ostream& out) {
  out << "#" << entry.Index << " " << FirstPassTrace(context, entry.Text);
  try {
    mv::TmvOwned<mv::TSQLSelectStatement> tree = context.ParseSelect(entry.Text);
    Hash dump;
    dump.Add(mv::DumpParseTree(tree.get()));
    out << " tree=" << dump.value << "\n";
  } catch (const mv::EmvSQLError& e) {
    out << " error=" << int(e.Kind) << " at=" << e.Pos << ":" << e.Line << ":" << e.Col << " token=" << mv::UTF8Encode(e.TokenText)
        << "\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  bool ways = false, print = false;
  int reps = 1;
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--help") {
      std::cout << kUsage;
      return 0;
    }
    if (arg == "--ways") {
      ways = true;
    } else if (arg == "--print") {
      print = true;
    } else if (arg == "--reps" && i + 1 < argc) {
      reps = std::stoi(argv[++i]);
    } else if (!arg.empty() && arg[0] == '-') {
      std::cerr << "bench_parse_trace: unexpected argument '" << arg << "'\n" << kUsage;
      return 2;
    } else {
      files.push_back(arg);
    }
  }
  if (files.empty()) {
    std::cerr << kUsage;
    return 2;
  }
  mv::InitializeEngine();
  mv::TmvSQL92SyntaxProvider provider;
  mv::TmvBaseSQLContext context;
  context.SetSyntaxProvider(&provider);
  int code = 0;
  try {
    for (const std::string& file : files) {
      const std::vector<mv::TmvStatementEntry> entries = mv::ReadStatementList(file);
      if (ways) {
        std::cout << file << "\n";
        for (const mv::TmvStatementEntry& entry : entries) TraceEntry(context, entry, std::cout);
        continue;
      }
      int parsed = 0, failed = 0;
      size_t printed = 0;
      for (int r = 0; r < reps; ++r) {
        for (const mv::TmvStatementEntry& entry : entries) {
          try {
            mv::TmvOwned<mv::TSQLSelectStatement> tree = context.ParseSelect(entry.Text);
            if (print) {
              mv::TSQLBuilderFast builder;
              printed += tree->SimpleSQL(builder).size();
            }
            ++parsed;
          } catch (const mv::EmvSQLError&) {
            ++failed;
          }
        }
      }
      std::cout << file << "\tparsed=" << parsed << "\tfailed=" << failed << "\tprinted=" << printed << "\n";
    }
  } catch (const std::exception& e) {
    std::cerr << "bench_parse_trace: " << e.what() << "\n";
    code = 1;
  }
  context.SetSyntaxProvider(nullptr);
  return code;
}
