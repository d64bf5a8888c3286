// bench_statement_set: writes the fixed statement set that the peer comparison
// runs (bench/statement-set.txt names the corpus folders and steps) as one
// ';;'-separated file, with a tab-separated index next to it.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "StatementSet.h"
#include "support/TextFile.h"

namespace {

const char* const kUsage =
    "usage: bench_statement_set [--corpus DIR] [--set FILE] --out FILE\n"
    "  --corpus DIR  the shared SQL corpus (default: $MV_CORPUS_DIR)\n"
    "  --set FILE    folders and steps (default: statement-set.txt of the bench sources)\n"
    "  --out FILE    the statements, entries separated by ';;' lines; the index goes to\n"
    "                the same name with .index.tsv instead of .sql\n";

void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace

int main(int argc, char** argv) {
  std::string corpus = std::getenv("MV_CORPUS_DIR") ? std::getenv("MV_CORPUS_DIR") : "";
  std::string setFile = MV_BENCH_DIR "/statement-set.txt";
  std::string outFile;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--help") {
      std::cout << kUsage;
      return 0;
    }
    if ((arg == "--corpus" || arg == "--set" || arg == "--out") && i + 1 < argc) {
      (arg == "--corpus" ? corpus : arg == "--set" ? setFile : outFile) = argv[++i];
    } else {
      std::cerr << "bench_statement_set: unexpected argument '" << arg << "'\n" << kUsage;
      return 2;
    }
  }
  if (outFile.empty() || corpus.empty()) {
    std::cerr << "bench_statement_set: " << (outFile.empty() ? "--out" : "--corpus (or MV_CORPUS_DIR)")
              << " is required\n" << kUsage;
    return 2;
  }
  try {
    const auto sources = mv::ParseStatementSet(mv::ReadAllBytes(setFile), setFile);
    if (sources.empty()) throw std::runtime_error(setFile + " names no corpus folder");
    const auto statements = mv::SelectStatements(sources, corpus);
    const std::filesystem::path out(outFile);
    if (out.has_parent_path()) std::filesystem::create_directories(out.parent_path());
    const std::string joined = mv::JoinStatementList(statements);
    WriteFile(out, joined);
    std::filesystem::path index = out;
    index.replace_extension(".index.tsv");
    WriteFile(index, mv::StatementIndex(statements));
    size_t sqlBytes = 0;
    for (const auto& s : statements) sqlBytes += mv::UTF8Encode(s.Text).size();
    std::cerr << "bench_statement_set: " << statements.size() << " statements (" << sqlBytes
              << " bytes of SQL) from " << sources.size() << " folders in " << out.string() << "\n";
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "bench_statement_set: " << e.what() << "\n";
    return 1;
  }
}
