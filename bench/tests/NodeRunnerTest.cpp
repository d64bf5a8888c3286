// The Node.js runners read statement files and print result lines through
// bench/peers/bench-runner.js; these tests hold it to the engine's reading and
// to the C++ runner frame's line, so every tool sees the same statements.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "BenchRunner.h"
#include "RunTool.h"
#include "support/StatementList.h"
#include "support/TextFile.h"

namespace {

using mvtest::RunTool;
using mvtest::TempFile;

const std::string kPeersDir = MV_BENCH_DIR "/peers";

bool HaveNode() { return RunTool("sh", {"-c", "command -v node"}).exitCode == 0; }

#define REQUIRE_NODE() \
  if (!HaveNode()) GTEST_SKIP() << "node is not installed"

std::string Fnv1a(const std::string& bytes) {
  std::uint32_t h = 0x811c9dc5u;
  for (unsigned char c : bytes) h = (h ^ c) * 0x01000193u;
  char hex[9];
  std::snprintf(hex, sizeof hex, "%08x", h);
  return hex;
}

// What list-statements.js prints, computed by the engine's own reader.
std::string EngineListing(const std::string& path) {
  std::string out;
  for (const auto& e : mv::ReadStatementList(path)) {
    const std::string utf8 = mv::UTF8Encode(e.Text);
    out += std::to_string(e.Index) + "\t" + std::to_string(e.Line) + "\t" + std::to_string(utf8.size()) + "\t" +
           Fnv1a(utf8) + "\n";
  }
  return out;
}

void ExpectSameReading(const std::string& bytes, const std::string& what) {
  TempFile file(bytes, ".sql");
  const auto node = RunTool("node", {kPeersDir + "/list-statements.js", file.path()});
  ASSERT_EQ(node.exitCode, 0) << node.err;
  const std::string engine = EngineListing(file.path());
  ASSERT_FALSE(engine.empty()) << what;
  EXPECT_EQ(node.out, engine) << what;
}

TEST(NodeRunner, SplitsStatementFilesLikeTheEngine) {
  REQUIRE_NODE();
  ExpectSameReading("SELECT 1\n;;\nSELECT 2\n", "plain");
  ExpectSameReading("\r\n\r\nSELECT 1\r\nFROM t\r\n;;\r\n SELECT 2 \r\n \t;; \t\r\n\r\n;;\r\nSELECT 3", "CR LF, blanks, empty entry, no final line end");
  ExpectSameReading("SELECT ';;'\n  ;; x\n;;;\nFROM t\n;;\n;;\n\n\n;;\n  \n\t\n;;\n-- only a comment\n", "near separators");
  ExpectSameReading("SELECT 'na\xC3\xAFve \xE2\x82\xAC \xF0\x9F\x98\x80'\n;;\nSELECT \xE5\xAD\x97\n", "non-ASCII");
  ExpectSameReading("\xEF\xBB\xBFSELECT 1\n;;\nSELECT 2\n", "UTF-8 byte order mark");
  // UTF-16 LE with its byte order mark.
  std::string utf16 = "\xFF\xFE";
  for (char16_t c : std::u16string(u"SELECT '\u00e9'\r\n;;\r\nSELECT 2\r\n")) {
    utf16 += static_cast<char>(c & 0xFF);
    utf16 += static_cast<char>(c >> 8);
  }
  ExpectSameReading(utf16, "UTF-16 LE");
}

TEST(NodeRunner, SplitsTheSharedStatementSetLikeTheEngine) {
  REQUIRE_NODE();
  // The committed set file itself is not SQL, but it exercises comments and
  // long lines; the real statement set is checked by compare-peers.sh.
  ExpectSameReading(mv::ReadAllBytes(MV_BENCH_DIR "/statement-set.txt") + "\n;;\nSELECT 1\n", "set file");
}

TEST(NodeRunner, PrintsTheSameResultLineAsTheCppFrame) {
  REQUIRE_NODE();
  for (double seconds : {0.0, 0.25, 1.5e-7, 123.456789012, 2.0, 0.000123456789, 1e-12}) {
    const mv::TmvBenchResult r{.Tool = "t", .Mode = "parse", .Work = "w", .Statements = 3, .Accepted = 2,
                               .Rejected = 1, .Bytes = 4321, .Seconds = seconds, .Runs = seconds > 0 ? 5 : 0,
                               .Reps = seconds > 0 ? 7 : 0};
    const std::string runnerModule = std::string("'").append(kPeersDir).append("/bench-runner.js'");
    char script[512];
    std::snprintf(script, sizeof script,
                  "process.stdout.write(require(%s).formatBenchResult({tool:'t',mode:'parse',work:'w',"
                  "statements:3,accepted:2,rejected:1,bytes:4321,seconds:%.17g,runs:%d,reps:%d}))",
                  runnerModule.c_str(), seconds, r.Runs, r.Reps);
    const auto node = RunTool("node", {"-e", script});
    ASSERT_EQ(node.exitCode, 0) << node.err;
    EXPECT_EQ(node.out, mv::FormatBenchResult(r)) << seconds;
  }
}

TEST(NodeRunner, CountsKeepsAndWritesAcceptedEntriesLikeTheCppFrame) {
  REQUIRE_NODE();
  TempFile statements("ok one\n;;\nbad two\n;;\n\n;;\nok three\n;;\nfour\n", ".sql");
  TempFile only("1\n2\n5\n", ".txt");
  TempFile accepted("", ".txt");
  const std::string script =
      "const h = require('" + kPeersDir + "/bench-runner.js');"
      "const o = h.parseBenchArguments(['--runs', '2', '--min-time', '0', '--verbose', '--only', '" + only.path() +
      "', '--accepted-out', '" + accepted.path() + "', '" + statements.path() + "']);"
      "const s = h.loadBenchStatements(o.statementsPath, o.onlyPath);"
      "const modes = [{name: 'parse', work: 'keyword', run: (t) => t.includes('ok')},"
      "  {name: 'parse+print', work: 'throwing', run: (t) => { if (t.includes('bad')) throw new Error('bad statement'); }}];"
      "for (const r of h.runBenchModes('fake', modes, s, o, (x) => process.stderr.write(x)))"
      "  process.stdout.write(h.formatBenchResult(r).replace(/ seconds=\\S+ mb_per_s=\\S+/, '') + '\\n');";
  const auto node = RunTool("node", {"-e", script});
  ASSERT_EQ(node.exitCode, 0) << node.err;
  EXPECT_EQ(node.out,
            "bench-result tool=fake mode=parse work=keyword statements=3 accepted=1 rejected=2 bytes=6 runs=2 reps=1\n"
            "bench-result tool=fake mode=parse+print work=throwing statements=3 accepted=2 rejected=1 bytes=10 runs=2 reps=1\n");
  EXPECT_EQ(node.err,
            "fake parse: entry 2 rejected: rejected\n"
            "fake parse: entry 5 rejected: rejected\n"
            "fake parse+print: entry 2 rejected: bad statement\n");
  EXPECT_EQ(mvtest::ReadFileBytes(accepted.path()), "1\n");
}

TEST(NodeRunner, OffersTheSameOptionsAsTheCppFrame) {
  REQUIRE_NODE();
  const std::string script =
      "process.stdout.write(require('" + kPeersDir + "/bench-runner.js').usage('bench_x'))";
  const auto node = RunTool("node", {"-e", script});
  ASSERT_EQ(node.exitCode, 0) << node.err;
  EXPECT_EQ(node.out, mv::BenchUsage("bench_x"));
}

TEST(NodeRunner, RunnersReportUsageErrorsWithExitCodeTwo) {
  REQUIRE_NODE();
  const auto node = RunTool("node", {kPeersDir + "/bench-runner.js"});
  EXPECT_EQ(node.exitCode, 0);  // the frame alone does nothing
  const std::string script = "require('" + kPeersDir +
                             "/bench-runner.js').benchRunnerMain({tool: 't', makeModes: () => []})";
  const auto noFile = RunTool("node", {"-e", script});
  EXPECT_EQ(noFile.exitCode, 2) << noFile.err;
  EXPECT_NE(noFile.err.find("no statements file given"), std::string::npos) << noFile.err;
}

}  // namespace
