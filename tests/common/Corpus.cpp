#include "Corpus.h"

#include <algorithm>
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

}  // namespace mvtest
