#include "ChinookLoader.h"

#include <libpq-fe.h>
#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <regex>
#include <stdexcept>

#include "Corpus.h"

namespace mvtest {

namespace {

std::string Quoted(const std::string& name) {
  std::string out = "\"";
  for (char c : name) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

// The PostgreSQL type of a column SQLite declares as `declared`; empty when
// there is none.
std::string PostgresType(const std::string& declared) {
  static const std::regex shape(R"(^\s*([A-Z ]*[A-Z])\s*(?:\(\s*(\d+)\s*(?:,\s*(\d+)\s*)?\))?\s*$)");
  std::smatch m;
  const std::string text = Upper(declared);
  if (!std::regex_match(text, m, shape)) return {};
  const std::string base = m[1];
  const std::string args = m[2].matched ? "(" + m[2].str() + (m[3].matched ? "," + m[3].str() : "") + ")" : "";
  static const std::map<std::string, std::string> plain = {
      {"INTEGER", "integer"}, {"INT", "integer"},     {"SMALLINT", "smallint"},       {"BIGINT", "bigint"},
      {"TEXT", "text"},       {"CLOB", "text"},       {"REAL", "double precision"},   {"FLOAT", "double precision"},
      {"DOUBLE", "double precision"},                 {"DOUBLE PRECISION", "double precision"},
      {"BLOB", "bytea"},      {"BOOLEAN", "boolean"}, {"DATETIME", "timestamp"},      {"TIMESTAMP", "timestamp"},
      {"DATE", "date"},       {"TIME", "time"}};
  if (auto it = plain.find(base); it != plain.end() && args.empty()) return it->second;
  if (base == "NUMERIC" || base == "DECIMAL") return "numeric" + args;
  if (base == "NVARCHAR" || base == "VARCHAR" || base == "CHARACTER VARYING" || base == "NATIONAL VARCHAR")
    return "varchar" + args;
  if (base == "NCHAR" || base == "CHAR" || base == "CHARACTER") return "char" + args;
  return {};
}

// A prepared SQLite statement with text parameters.
class Statement {
 public:
  Statement(sqlite3* db, const std::string& sql, const std::vector<std::string>& params = {}) {
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK)
      throw std::runtime_error("SQLite: " + std::string(sqlite3_errmsg(db)) + "\nin: " + sql);
    for (size_t i = 0; i < params.size(); ++i)
      sqlite3_bind_text(stmt_, static_cast<int>(i + 1), params[i].c_str(), -1, SQLITE_TRANSIENT);
  }
  ~Statement() { sqlite3_finalize(stmt_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  bool Step() {
    const int rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    throw std::runtime_error("SQLite: " + std::string(sqlite3_errmsg(sqlite3_db_handle(stmt_))) +
                             "\nin: " + sqlite3_sql(stmt_));
  }
  bool IsNull(int c) const { return sqlite3_column_type(stmt_, c) == SQLITE_NULL; }
  std::string Text(int c) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, c));
    return text ? std::string(text, sqlite3_column_bytes(stmt_, c)) : std::string();
  }
  int Int(int c) const { return sqlite3_column_int(stmt_, c); }
  int Columns() const { return sqlite3_column_count(stmt_); }
  sqlite3_stmt* get() const { return stmt_; }

 private:
  sqlite3_stmt* stmt_ = nullptr;
};

struct Column {
  std::string name;
  std::string type;
  bool notNull = false;
  int pk = 0;  // position in the primary key, 0 when not in it
};

// One value in COPY's text format.
void AppendCopyValue(std::string& out, const Statement& row, int c) {
  switch (sqlite3_column_type(row.get(), c)) {
    case SQLITE_NULL:
      out += "\\N";
      return;
    case SQLITE_BLOB: {
      static const char* hex = "0123456789abcdef";
      const auto* bytes = static_cast<const unsigned char*>(sqlite3_column_blob(row.get(), c));
      out += "\\\\x";
      for (int i = 0, n = sqlite3_column_bytes(row.get(), c); i < n; ++i) {
        out += hex[bytes[i] >> 4];
        out += hex[bytes[i] & 15];
      }
      return;
    }
    default:
      for (char ch : row.Text(c)) {
        switch (ch) {
          case '\\': out += "\\\\"; break;
          case '\n': out += "\\n"; break;
          case '\r': out += "\\r"; break;
          case '\t': out += "\\t"; break;
          default: out += ch;
        }
      }
  }
}

void CheckResult(PGresult* result, pg_conn* connection, const std::string& what) {
  const bool ok = PQresultStatus(result) == PGRES_COMMAND_OK;
  const std::string message = ok ? "" : PQresultErrorMessage(result);
  PQclear(result);
  if (!ok)
    throw std::runtime_error("PostgreSQL: " + what + ": " + (message.empty() ? PQerrorMessage(connection) : message));
}

// Copies the rows of one table through COPY ... FROM STDIN.
void CopyRows(sqlite3* db, pg_conn* connection, const std::string& table, const std::vector<Column>& columns) {
  std::string list;
  for (const Column& c : columns) list += (list.empty() ? "" : ", ") + Quoted(c.name);
  const std::string copy = "COPY " + Quoted(table) + " (" + list + ") FROM STDIN";
  PGresult* start = PQexec(connection, copy.c_str());
  if (PQresultStatus(start) != PGRES_COPY_IN) {
    CheckResult(start, connection, copy);
    throw std::runtime_error("PostgreSQL: " + copy + " did not start");
  }
  PQclear(start);
  Statement rows(db, "SELECT " + list + " FROM " + Quoted(table));
  std::string buffer;
  auto flush = [&] {
    if (!buffer.empty() && PQputCopyData(connection, buffer.data(), static_cast<int>(buffer.size())) != 1)
      throw std::runtime_error("PostgreSQL: sending the rows of " + table + ": " + PQerrorMessage(connection));
    buffer.clear();
  };
  while (rows.Step()) {
    for (int c = 0; c < rows.Columns(); ++c) {
      if (c) buffer += '\t';
      AppendCopyValue(buffer, rows, c);
    }
    buffer += '\n';
    if (buffer.size() > (1 << 16)) flush();
  }
  flush();
  if (PQputCopyEnd(connection, nullptr) != 1)
    throw std::runtime_error("PostgreSQL: ending the rows of " + table + ": " + PQerrorMessage(connection));
  for (PGresult* result; (result = PQgetResult(connection)) != nullptr;) CheckResult(result, connection, copy);
}

bool ReadsAsNumber(const std::string& s, double& value) {
  if (s.empty() || s.find_first_of(".eE") == std::string::npos) return false;
  char* end = nullptr;
  value = std::strtod(s.c_str(), &end);
  return *end == '\0';
}

}  // namespace

std::string ChinookSqlitePath() {
  const std::string dir = CorpusDir();
  if (dir.empty()) return {};
  const std::string path = dir + "/chinook/Chinook_Sqlite.sqlite";
  std::error_code ec;
  return std::filesystem::is_regular_file(path, ec) ? path : std::string();
}

SqliteDatabase::SqliteDatabase(const std::string& path, bool writable) : path_(path) {
  const int flags = SQLITE_OPEN_URI | (writable ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY);
  if (sqlite3_open_v2(path.c_str(), &db_, flags, nullptr) != SQLITE_OK) {
    const std::string message = db_ ? sqlite3_errmsg(db_) : "out of memory";
    sqlite3_close(db_);
    throw std::runtime_error("SQLite: cannot open " + path + ": " + message);
  }
}

SqliteDatabase::~SqliteDatabase() { sqlite3_close(db_); }

void SqliteDatabase::Exec(const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string message = error ? error : sqlite3_errmsg(db_);
    sqlite3_free(error);
    throw std::runtime_error("SQLite: " + message + "\nin: " + sql);
  }
}

SqlRows SqliteDatabase::Query(const std::string& sql) {
  Statement statement(db_, sql);
  SqlRows rows;
  while (statement.Step()) {
    SqlRow& row = rows.emplace_back(statement.Columns());
    for (int c = 0; c < statement.Columns(); ++c)
      if (!statement.IsNull(c)) row[c] = statement.Text(c);
  }
  return rows;
}

std::vector<std::string> CopySqliteToPostgres(const std::string& sqlitePath, PostgresServer& server) {
  SqliteDatabase source(sqlitePath);
  sqlite3* db = source.Handle();
  pg_conn* connection = server.Connection();

  std::vector<std::string> tables;
  {
    Statement list(db, "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' "
                       "ORDER BY name");
    while (list.Step()) tables.push_back(list.Text(0));
  }

  std::vector<std::string> afterRows;  // foreign keys and indexes, made once every row is in
  server.Exec("BEGIN");
  try {
    for (const std::string& table : tables) {
      std::vector<Column> columns;
      Statement info(db, "SELECT name, type, \"notnull\", pk FROM pragma_table_info(?1) ORDER BY cid", {table});
      while (info.Step()) columns.push_back({info.Text(0), info.Text(1), info.Int(2) != 0, info.Int(3)});
      if (columns.empty()) throw std::runtime_error(sqlitePath + ": table \"" + table + "\" has no columns");

      std::string ddl = "CREATE TABLE " + Quoted(table) + " (";
      std::vector<std::pair<int, std::string>> key;
      for (const Column& c : columns) {
        const std::string type = PostgresType(c.type);
        if (type.empty())
          throw std::runtime_error(sqlitePath + ": table \"" + table + "\" column \"" + c.name +
                                   "\": no PostgreSQL type for \"" + c.type + "\"");
        ddl += (&c == &columns.front() ? "" : ", ") + Quoted(c.name) + " " + type + (c.notNull ? " NOT NULL" : "");
        if (c.pk > 0) key.emplace_back(c.pk, Quoted(c.name));
      }
      if (!key.empty()) {
        std::sort(key.begin(), key.end());
        // The constraint keeps the name SQLite's DDL gives it, if any.
        Statement sql(db, "SELECT sql FROM sqlite_master WHERE type = 'table' AND name = ?1", {table});
        static const std::regex named(R"(CONSTRAINT\s+[\["`]?([A-Za-z_][A-Za-z0-9_]*)[\]"`]?\s+PRIMARY\s+KEY)",
                                      std::regex::icase);
        std::smatch m;
        const std::string text = sql.Step() ? sql.Text(0) : "";
        ddl += std::regex_search(text, m, named) ? ", CONSTRAINT " + Quoted(m[1]) + " PRIMARY KEY ("
                                                 : ", PRIMARY KEY (";
        for (size_t i = 0; i < key.size(); ++i) ddl += (i ? ", " : "") + key[i].second;
        ddl += ")";
      }
      server.Exec(ddl + ")");
      CopyRows(db, connection, table, columns);

      Statement keys(db,
                     "SELECT id, \"table\", \"from\", \"to\", on_update, on_delete "
                     "FROM pragma_foreign_key_list(?1) ORDER BY id, seq",
                     {table});
      std::map<int, std::vector<std::string>> foreign;  // id -> referenced table, from list, to list, rules
      while (keys.Step()) {
        auto& k = foreign[keys.Int(0)];
        if (k.empty()) k = {Quoted(keys.Text(1)), "", "", keys.Text(4), keys.Text(5)};
        k[1] += (k[1].empty() ? "" : ", ") + Quoted(keys.Text(2));
        if (!keys.IsNull(3)) k[2] += (k[2].empty() ? "" : ", ") + Quoted(keys.Text(3));
      }
      for (const auto& [id, k] : foreign) {
        std::string fk = "ALTER TABLE " + Quoted(table) + " ADD FOREIGN KEY (" + k[1] + ") REFERENCES " + k[0];
        if (!k[2].empty()) fk += " (" + k[2] + ")";
        static const std::regex rule("NO ACTION|RESTRICT|CASCADE|SET NULL|SET DEFAULT", std::regex::icase);
        if (std::regex_match(k[3], rule)) fk += " ON UPDATE " + k[3];
        if (std::regex_match(k[4], rule)) fk += " ON DELETE " + k[4];
        afterRows.push_back(fk);
      }

      Statement indexes(db, "SELECT name, \"unique\" FROM pragma_index_list(?1) WHERE origin = 'c' ORDER BY name",
                        {table});
      while (indexes.Step()) {
        std::string cols;
        Statement parts(db, "SELECT name FROM pragma_index_info(?1) ORDER BY seqno", {indexes.Text(0)});
        while (parts.Step()) {
          if (parts.IsNull(0)) {  // an index on an expression: not ours to translate
            cols.clear();
            break;
          }
          cols += (cols.empty() ? "" : ", ") + Quoted(parts.Text(0));
        }
        if (!cols.empty())
          afterRows.push_back(std::string(indexes.Int(1) ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") +
                              Quoted(indexes.Text(0)) + " ON " + Quoted(table) + " (" + cols + ")");
      }
    }
    for (const std::string& statement : afterRows) server.Exec(statement);
    server.Exec("COMMIT");
  } catch (...) {
    PQclear(PQexec(connection, "ROLLBACK"));
    throw;
  }
  return tables;
}

const std::vector<std::string>& HostileNamesSql() {
  static const std::vector<std::string> statements = {
      R"(CREATE TABLE "Odd Table" ("Row Id" integer NOT NULL PRIMARY KEY, "Name With ""Quotes""" varchar(40), )"
      R"("MixedCase" varchar(20), "select" integer, "it's" varchar(20), "dotted.name" integer))",
      R"(INSERT INTO "Odd Table" VALUES (1, 'plain', 'Upper', 10, 'it''s', 1), )"
      R"((2, NULL, 'lower', NULL, 'Grüße, 東京', NULL), (3, 'semi;colon -- no comment', NULL, 30, '', 3))",
      R"(CREATE TABLE "order" ("group" integer NOT NULL PRIMARY KEY, )"
      R"("Odd Table Row" integer REFERENCES "Odd Table" ("Row Id"), "user" varchar(10)))",
      R"(INSERT INTO "order" VALUES (1, 1, 'a'), (2, 3, 'b'), (3, NULL, NULL))",
  };
  return statements;
}

PostgresServer& ChinookOnPostgres() {
  static std::mutex mutex;
  static bool loaded = false;
  static std::string failure;
  std::lock_guard<std::mutex> lock(mutex);
  PostgresServer& server = PostgresServer::Shared();
  if (!loaded && failure.empty()) {
    try {
      const std::string path = ChinookSqlitePath();
      if (path.empty()) throw std::runtime_error("Chinook_Sqlite.sqlite is not in the shared corpus");
      CopySqliteToPostgres(path, server);
      for (const std::string& statement : HostileNamesSql()) server.Exec(statement);
      loaded = true;
    } catch (const std::exception& e) {
      failure = std::string("loading Chinook into PostgreSQL: ") + e.what();
    }
  }
  if (!loaded) throw std::runtime_error(failure);
  return server;
}

std::string RowsDiffer(const SqlRows& expected, const SqlRows& actual) {
  const size_t common = std::min(expected.size(), actual.size());
  for (size_t r = 0; r < common; ++r) {
    const SqlRow& e = expected[r];
    const SqlRow& a = actual[r];
    bool same = e.size() == a.size();
    for (size_t c = 0; same && c < e.size(); ++c) {
      if (!e[c] || !a[c]) {
        same = !e[c] && !a[c];
      } else if (*e[c] != *a[c]) {
        double x = 0;
        double y = 0;
        same = ReadsAsNumber(*e[c], x) && ReadsAsNumber(*a[c], y) &&
               std::fabs(x - y) <= 1e-9 * std::max({1.0, std::fabs(x), std::fabs(y)});
      }
    }
    if (!same)
      return "row " + std::to_string(r + 1) + ": expected [" + RowText(e) + "], got [" + RowText(a) + "]";
  }
  if (expected.size() != actual.size()) {
    const bool more = actual.size() > expected.size();
    return std::to_string(expected.size()) + " rows expected, got " + std::to_string(actual.size()) + "; first " +
           (more ? "extra" : "missing") + " row: [" + RowText(more ? actual[common] : expected[common]) + "]";
  }
  return {};
}

}  // namespace mvtest
