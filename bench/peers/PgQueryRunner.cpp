// bench_pg_query: the native PostgreSQL parser library as a peer. Two kinds of
// work: "parse" (text to the parse tree, handed out as JSON text: the
// library's cheapest complete parse, several times faster than its protobuf
// output) and "parse+print" (text to the protobuf tree, which is what its
// deparser takes, then back to SQL text), the counterparts of our parse and print.
#include <pg_query.h>

#include <string>
#include <vector>

#include "BenchRunner.h"

namespace {

bool Reject(PgQueryError* error, std::string& reason) {
  if (!error) return false;
  reason = std::string(error->message ? error->message : "error") + " at " + std::to_string(error->cursorpos);
  return true;
}

bool Parse(const mv::TmvBenchStatement& s, std::string& reason) {
  PgQueryParseResult parsed = pg_query_parse(s.Utf8.c_str());
  const bool ok = !Reject(parsed.error, reason);
  pg_query_free_parse_result(parsed);
  return ok;
}

bool ParseAndDeparse(const mv::TmvBenchStatement& s, std::string& reason) {
  PgQueryProtobufParseResult parsed = pg_query_parse_protobuf(s.Utf8.c_str());
  bool ok = !Reject(parsed.error, reason);
  if (ok) {
    PgQueryDeparseResult printed = pg_query_deparse_protobuf(parsed.parse_tree);
    ok = !Reject(printed.error, reason) && printed.query && *printed.query;
    if (!ok && reason.empty()) reason = "deparse gave no text";
    pg_query_free_deparse_result(printed);
  }
  pg_query_free_protobuf_parse_result(parsed);
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<mv::TmvBenchMode> modes = {
      {"parse", "pg_query_parse", Parse},
      {"parse+print", "pg_query_parse_protobuf+pg_query_deparse_protobuf", ParseAndDeparse},
  };
  const int code = mv::BenchRunnerMain(argc, argv, "libpg_query", modes);
  pg_query_exit();
  return code;
}
