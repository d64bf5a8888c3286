// mvsql metadata --firebird on the throw-away Firebird server with Chinook
// and the tables with awkward names: the summary (a golden file), the XML
// read back, the dialect detected from the connection, the login from the
// environment, and a server that is not there or refuses the password.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "CatalogLines.h"
#include "FirebirdChinook.h"
#include "RunTool.h"

namespace {

TEST(FirebirdMetadataCommand, SummaryXmlDetectionAndRefusedConnections) {
  MV_REQUIRE_FIREBIRD_CHINOOK();
  mvtest::FirebirdServer& fb = mvtest::ChinookOnFirebird();
  const std::string dsn = fb.Dsn(mvtest::kFirebirdChinookDatabase);
  const std::string tables = "SELECT COUNT(*) FROM RDB$RELATIONS WHERE RDB$SYSTEM_FLAG = 0";
  const std::string before = fb.Query(tables, mvtest::kFirebirdChinookDatabase).at(0).at(0).value();

  mvtest::TempFile written("", ".xml");
  const auto summary = mvtest::RunMvsql({"metadata", "--firebird", dsn, "--user", mvtest::FirebirdServer::kUser,
                                         "--password", mvtest::FirebirdServer::kPassword, "--summary", "-o",
                                         written.path()});
  ASSERT_EQ(summary.exitCode, 0) << summary.err;
  EXPECT_EQ(summary.out,
            mvtest::ReadFileBytes(std::string(MV_TEST_DATA_DIR) + "/metadata/chinook-firebird-summary.txt"))
      << summary.out;
  const auto reread = mvtest::RunMvsql({"metadata", "--xml", written.path(), "--dialect", "firebird"});
  EXPECT_EQ(reread.exitCode, 0) << reread.err;
  EXPECT_EQ(reread.out, summary.out);

  // The login from the client's variables when the options leave it out.
  setenv("ISC_USER", mvtest::FirebirdServer::kUser, 1);
  setenv("ISC_PASSWORD", mvtest::FirebirdServer::kPassword, 1);
  const auto automatic = mvtest::RunMvsql({"metadata", "--firebird", dsn, "--dialect", "auto", "--summary"});
  unsetenv("ISC_USER");
  unsetenv("ISC_PASSWORD");
  EXPECT_EQ(automatic.exitCode, 0) << automatic.err;
  EXPECT_EQ(automatic.out, "detected dialect: firebird\n" + summary.out);

  // A closed port and a wrong password: a clear error, soon, and the server as it was.
  const std::string port = std::to_string(mvtest::ClosedLoopbackPort());
  const std::vector<std::pair<std::vector<std::string>, std::string>> refusals = {
      {{"metadata", "--firebird", "127.0.0.1/" + port + ":chinook", "--user", "TEST", "--password", "test"},
       "mvsql metadata: Cannot connect to the Firebird server 127.0.0.1/" + port + ", database chinook: "},
      {{"metadata", "--firebird", dsn, "--user", "TEST", "--password", "wrong"},
       "mvsql metadata: Cannot connect to the Firebird server 127.0.0.1/" + std::to_string(fb.Port()) +
           ", database chinook: "},
  };
  for (const auto& [args, message] : refusals) {
    const auto start = std::chrono::steady_clock::now();
    const auto refused = mvtest::RunMvsql(args);
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 5.0);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err.rfind(message, 0), 0u) << refused.err;
    EXPECT_EQ(refused.err.find("wrong"), std::string::npos) << "the password stays hidden";
  }
  EXPECT_EQ(fb.Query(tables, mvtest::kFirebirdChinookDatabase).at(0).at(0).value(), before);
  EXPECT_EQ(mvtest::RunMvsql({"metadata", "--mysql", "mysql://x@h/d", "--user", "x"}).exitCode, 2);
}

}  // namespace
