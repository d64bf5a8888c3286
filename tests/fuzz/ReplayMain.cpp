// Runs a fuzz target over files without libFuzzer: each argument is a file or
// a folder of files, and each file is one input. Used by the test suite on
// the committed seeds, and to replay an input a fuzzing run saved.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "FuzzTarget.h"

namespace fs = std::filesystem;

namespace {

int RunFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::cerr << "cannot read " << path << "\n";
    return 1;
  }
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: " << argv[0] << " FILE|FOLDER...\n";
    return 2;
  }
  int inputs = 0;
  int unreadable = 0;
  for (int i = 1; i < argc; ++i) {
    const fs::path arg = argv[i];
    std::vector<fs::path> files;
    if (fs::is_directory(arg)) {
      for (const auto& entry : fs::directory_iterator(arg))
        if (entry.is_regular_file()) files.push_back(entry.path());
    } else {
      files.push_back(arg);
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
      unreadable += RunFile(file);
      ++inputs;
    }
  }
  std::cout << inputs << " inputs ran\n";
  return unreadable == 0 && inputs > 0 ? 0 : 1;
}
