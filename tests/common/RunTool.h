// Runs a command-line tool for a test: feeds it standard input, captures its
// output, error output and exit code.
#pragma once

#include <string>
#include <vector>

namespace mvtest {

struct ToolResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

// Runs `program` with `args` (each passed as one argument), `input` on stdin.
ToolResult RunTool(const std::string& program, const std::vector<std::string>& args,
                   const std::string& input = "");

// The mvsql binary of this build.
inline ToolResult RunMvsql(const std::vector<std::string>& args, const std::string& input = "") {
  return RunTool(MV_MVSQL_PATH, args, input);
}

// A scratch file that is removed when the object goes.
class TempFile {
 public:
  explicit TempFile(const std::string& contents, const std::string& suffix = ".txt");
  ~TempFile();
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

std::string ReadFileBytes(const std::string& path);

}  // namespace mvtest
