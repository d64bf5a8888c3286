// mvsql metadata --postgresql on the throw-away server with Chinook and the
// tables with awkward names: the summary (a golden file), the XML read back,
// the dialect detected from the connection, and a server that is not there.
#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <sstream>

#include "ChinookLoader.h"
#include "RunTool.h"

namespace {

// The summary without its count of the server's aggregates, which differs
// between server versions.
std::string WithoutAggregateCount(const std::string& summary) {
  std::istringstream in(summary);
  std::string out, line;
  while (std::getline(in, line))
    if (line.rfind("custom aggregate functions: ", 0) != 0) out += line + "\n";
  return out;
}

int ClosedPort() {
  const int s = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  bind(s, reinterpret_cast<sockaddr*>(&address), sizeof address);
  socklen_t length = sizeof address;
  getsockname(s, reinterpret_cast<sockaddr*>(&address), &length);
  close(s);
  return ntohs(address.sin_port);
}

TEST(PostgresMetadataCommand, SummaryXmlDetectionAndUnreachableServer) {
  MV_REQUIRE_POSTGRES_CHINOOK();
  const std::string server = mvtest::ChinookOnPostgres().ConnectionString();

  mvtest::TempFile written("", ".xml");
  const auto summary = mvtest::RunMvsql({"metadata", "--postgresql", server, "--summary", "-o", written.path()});
  ASSERT_EQ(summary.exitCode, 0) << summary.err;
  EXPECT_EQ(WithoutAggregateCount(summary.out),
            mvtest::ReadFileBytes(std::string(MV_TEST_DATA_DIR) + "/metadata/chinook-postgresql-summary.txt"))
      << summary.out;
  // Names print by the rules of the dialect they are read under.
  const auto reread = mvtest::RunMvsql({"metadata", "--xml", written.path(), "--dialect", "postgresql"});
  EXPECT_EQ(reread.exitCode, 0) << reread.err;
  EXPECT_EQ(reread.out, summary.out);

  const auto automatic = mvtest::RunMvsql({"metadata", "--postgresql", server, "--dialect", "auto", "--summary"});
  EXPECT_EQ(automatic.exitCode, 0) << automatic.err;
  EXPECT_EQ(automatic.out, "detected dialect: postgresql\n" + summary.out);

  const std::string down = "host=127.0.0.1 port=" + std::to_string(ClosedPort()) + " dbname=shop user=reader";
  const auto start = std::chrono::steady_clock::now();
  const auto refused = mvtest::RunMvsql({"metadata", "--postgresql", down});
  EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 3.0);
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.out, "");
  EXPECT_NE(refused.err.find("mvsql metadata: Cannot connect to the PostgreSQL server 127.0.0.1:" +
                             down.substr(20, down.find(' ', 20) - 20) + ", database shop: "),
            std::string::npos)
      << refused.err;
  EXPECT_EQ(mvtest::RunMvsql({"metadata", "--postgresql", server, "--sqlite", "x.db"}).exitCode, 2);
}

}  // namespace
