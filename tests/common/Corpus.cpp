#include "Corpus.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace mvtest {

std::string CorpusDir() {
  std::error_code ec;
  if (const char* env = std::getenv("MV_CORPUS_DIR"); env && fs::is_directory(env, ec)) return env;
  if (fs::is_directory(MV_CORPUS_DIR, ec)) return MV_CORPUS_DIR;
  return {};
}

std::vector<std::string> CorpusFiles(const std::string& relative, const std::vector<std::string>& extensions) {
  std::vector<std::string> files;
  const std::string root = CorpusDir();
  if (root.empty()) return files;
  std::error_code ec;
  const fs::path dir = fs::path(root) / relative;
  if (!fs::is_directory(dir, ec)) return files;
  for (auto it = fs::recursive_directory_iterator(dir, ec); it != fs::recursive_directory_iterator(); it.increment(ec)) {
    if (ec) break;
    if (!it->is_regular_file(ec)) continue;
    const std::string name = it->path().string();
    for (const auto& ext : extensions) {
      if (name.size() >= ext.size() && name.compare(name.size() - ext.size(), ext.size(), ext) == 0) {
        files.push_back(name);
        break;
      }
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

const std::vector<const char*> kCorpusSelectFolders = {
    "db2-samples",
    "firebird-employee",
    "grammars-v4-examples/db2",
    "grammars-v4-examples/mysql",
    "grammars-v4-examples/plsql",
    "grammars-v4-examples/sqlite",
    "grammars-v4-examples/teradata",
    "grammars-v4-examples/tsql",
    "jsqlparser-tests",
    "mysql-5.1-tests",
    "oracle-sample-schemas",
    "postgres-regress",
    "sakila",
    "spider-dev",
    "sqlglot-fixtures",
    "sqllogictest",
    "sqlserver-samples",
    "tpcds-duckdb",
    "tpcds-spark-sql-perf",
    "tpch-duckdb",
    "tpch-sqlparser-rs",
};

std::vector<mv::TmvStatementEntry> CorpusSelects(const char* folder, std::string& why) {
  try {
    return mv::ReadStatementList(CorpusDir() + "/" + folder + "/selects.sql");
  } catch (const std::exception& e) {
    why = e.what();
    return {};
  }
}

std::string CorpusTestName(const char* folder) {
  std::string name = folder;
  for (char& c : name) {
    if (!isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
}

}  // namespace mvtest
