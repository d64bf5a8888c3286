// bench_shapes: writes each adversarial shape as a file of one statement
// (<name>.sql) and a tab-separated list of them (shapes.tsv: name, kind, size,
// bytes, description) into one folder.
#include <filesystem>
#include <iostream>
#include <string>

#include "ShapeGenerator.h"
#include "ToolMain.h"

namespace {

const char* const kProgram = "bench_shapes";
const char* const kUsage =
    "usage: bench_shapes --out DIR\n"
    "Writes DIR/<shape>.sql (one statement each) and DIR/shapes.tsv.\n";

}  // namespace

int main(int argc, char** argv) {
  using namespace mv::bench;
  std::string outDir;
  if (auto exitCode = ParseToolOptions(argc, argv, kProgram, kUsage, {{"--out", &outDir}})) return *exitCode;
  if (outDir.empty()) return MissingToolOption(kProgram, "--out", kUsage);
  return RunTool(kProgram, [&] {
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
    std::cerr << kProgram << ": " << mv::BenchShapes().size() << " shapes in " << dir.string() << "\n";
    return 0;
  });
}
