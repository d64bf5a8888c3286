#include "RunTool.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace mvtest {

namespace {

std::string ShellQuote(const std::string& s) {
  std::string out = "'";
  for (char c : s) {
    if (c == '\'') out += "'\\''";
    else out += c;
  }
  return out + "'";
}

std::string MakeTempPath(const std::string& suffix) {
  std::string pattern = "/tmp/mvtest-XXXXXX" + suffix;
  std::vector<char> buf(pattern.begin(), pattern.end());
  buf.push_back('\0');
  int fd = mkstemps(buf.data(), static_cast<int>(suffix.size()));
  if (fd < 0) throw std::runtime_error("cannot create a temporary file");
  close(fd);
  return buf.data();
}

}  // namespace

TempFile::TempFile(const std::string& contents, const std::string& suffix) : path_(MakeTempPath(suffix)) {
  std::ofstream(path_, std::ios::binary) << contents;
}

TempFile::~TempFile() { std::remove(path_.c_str()); }

std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

ToolResult RunTool(const std::string& program, const std::vector<std::string>& args,
                   const std::string& input) {
  TempFile in(input), out(""), err("");
  std::string command = ShellQuote(program);
  for (const auto& a : args) command += " " + ShellQuote(a);
  command += " <" + ShellQuote(in.path()) + " >" + ShellQuote(out.path()) + " 2>" + ShellQuote(err.path());
  int status = std::system(command.c_str());
  ToolResult result;
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.out = ReadFileBytes(out.path());
  result.err = ReadFileBytes(err.path());
  return result;
}

}  // namespace mvtest
