// bench_statement_set: writes the fixed statement set that the peer comparison
// runs (bench/statement-set.txt names the corpus folders and steps) as one
// ';;'-separated file, with a tab-separated index next to it.
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "StatementSet.h"
#include "ToolMain.h"
#include "support/TextFile.h"

namespace {

const char* const kProgram = "bench_statement_set";
const char* const kUsage =
    "usage: bench_statement_set [--corpus DIR] [--set FILE] --out FILE\n"
    "  --corpus DIR  the shared SQL corpus (default: $MV_CORPUS_DIR)\n"
    "  --set FILE    folders and steps (default: statement-set.txt of the bench sources)\n"
    "  --out FILE    the statements, entries separated by ';;' lines; the index goes to\n"
    "                the same name with .index.tsv instead of .sql\n";

}  // namespace

int main(int argc, char** argv) {
  using namespace mv::bench;
  std::string corpus = std::getenv("MV_CORPUS_DIR") ? std::getenv("MV_CORPUS_DIR") : "";
  std::string setFile = MV_BENCH_DIR "/statement-set.txt";
  std::string outFile;
  if (auto exitCode = ParseToolOptions(argc, argv, kProgram, kUsage,
                                       {{"--corpus", &corpus}, {"--set", &setFile}, {"--out", &outFile}}))
    return *exitCode;
  if (outFile.empty()) return MissingToolOption(kProgram, "--out", kUsage);
  if (corpus.empty()) return MissingToolOption(kProgram, "--corpus (or MV_CORPUS_DIR)", kUsage);
  return RunTool(kProgram, [&] {
    const auto sources = mv::ParseStatementSet(mv::ReadAllBytes(setFile), setFile);
    if (sources.empty()) throw std::runtime_error(setFile + " names no corpus folder");
    const auto statements = mv::SelectStatements(sources, corpus);
    const std::filesystem::path out(outFile);
    if (out.has_parent_path()) std::filesystem::create_directories(out.parent_path());
    WriteFile(out, mv::JoinStatementList(statements));
    std::filesystem::path index = out;
    index.replace_extension(".index.tsv");
    WriteFile(index, mv::StatementIndex(statements));
    size_t sqlBytes = 0;
    for (const auto& s : statements) sqlBytes += mv::UTF8Encode(s.Text).size();
    std::cerr << kProgram << ": " << statements.size() << " statements (" << sqlBytes << " bytes of SQL) from "
              << sources.size() << " folders in " << out.string() << "\n";
    return 0;
  });
}
