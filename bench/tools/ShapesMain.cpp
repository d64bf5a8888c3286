// bench_shapes: writes each adversarial shape as a file of one statement
// (<name>.sql) and a tab-separated list of them (shapes.tsv: name, kind, size,
// bytes, description) into one folder.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "ShapeGenerator.h"

namespace {

const char* const kUsage =
    "usage: bench_shapes --out DIR\n"
    "Writes DIR/<shape>.sql (one statement each) and DIR/shapes.tsv.\n";

void WriteFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
  if (!out) throw std::runtime_error("cannot write " + path.string());
}

}  // namespace

int main(int argc, char** argv) {
  std::string outDir;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--help") {
      std::cout << kUsage;
      return 0;
    }
    if (arg == "--out" && i + 1 < argc) {
      outDir = argv[++i];
    } else {
      std::cerr << "bench_shapes: unexpected argument '" << arg << "'\n" << kUsage;
      return 2;
    }
  }
  if (outDir.empty()) {
    std::cerr << "bench_shapes: --out is required\n" << kUsage;
    return 2;
  }
  try {
    const std::filesystem::path dir(outDir);
    std::filesystem::create_directories(dir);
    std::string list = "name\tkind\tsize\tbytes\tdescription\n";
    for (const mv::TmvBenchShape& shape : mv::BenchShapes()) {
      const std::string sql = mv::MakeShapeSql(shape.Kind, shape.Size);
      WriteFile(dir / (shape.Name() + ".sql"), sql + "\n");
      list += shape.Name() + "\t" + shape.Kind + "\t" + std::to_string(shape.Size) + "\t" +
              std::to_string(sql.size()) + "\t" + shape.Description + "\n";
    }
    WriteFile(dir / "shapes.tsv", list);
    std::cerr << "bench_shapes: " << mv::BenchShapes().size() << " shapes in " << dir.string() << "\n";
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "bench_shapes: " << e.what() << "\n";
    return 1;
  }
}
