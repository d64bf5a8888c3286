#include "FirebirdChinook.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <regex>
#include <stdexcept>

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

// A SQLite string literal, for the pragma functions' arguments.
std::string LiteQuoted(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += '\'';
    out += c;
  }
  return out + "'";
}

// The Firebird type of a column SQLite declares as `declared`; empty when
// there is none.
std::string FirebirdType(const std::string& declared) {
  static const std::regex shape(R"(^\s*([A-Z ]*[A-Z])\s*(?:\(\s*(\d+)\s*(?:,\s*(\d+)\s*)?\))?\s*$)");
  std::string text = declared;
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  std::smatch m;
  if (!std::regex_match(text, m, shape)) return {};
  const std::string base = m[1];
  const std::string args = m[2].matched ? "(" + m[2].str() + (m[3].matched ? "," + m[3].str() : "") + ")" : "";
  static const std::map<std::string, std::string> plain = {
      {"INTEGER", "INTEGER"},  {"INT", "INTEGER"},     {"SMALLINT", "SMALLINT"},   {"BIGINT", "BIGINT"},
      {"TEXT", "BLOB SUB_TYPE TEXT"},                  {"CLOB", "BLOB SUB_TYPE TEXT"},
      {"REAL", "DOUBLE PRECISION"},                    {"FLOAT", "DOUBLE PRECISION"},
      {"DOUBLE", "DOUBLE PRECISION"},                  {"DOUBLE PRECISION", "DOUBLE PRECISION"},
      {"BLOB", "BLOB"},        {"BOOLEAN", "BOOLEAN"}, {"DATETIME", "TIMESTAMP"},  {"TIMESTAMP", "TIMESTAMP"},
      {"DATE", "DATE"},        {"TIME", "TIME"}};
  if (auto it = plain.find(base); it != plain.end() && args.empty()) return it->second;
  if (base == "NUMERIC" || base == "DECIMAL") return base + args;
  if (base == "NVARCHAR" || base == "VARCHAR" || base == "CHARACTER VARYING" || base == "NATIONAL VARCHAR")
    return args.empty() ? "" : "VARCHAR" + args;
  if (base == "NCHAR" || base == "CHAR" || base == "CHARACTER") return "CHAR" + args;
  return {};
}

// The rows of an INSERT ... VALUES (...), (...) as one INSERT each; any other
// statement as it is. Quotes of both kinds are respected.
std::vector<std::string> SplitRows(const std::string& statement) {
  static const std::regex head(R"(^\s*INSERT\s+INTO\s+.*?\s+VALUES\s*)", std::regex::icase);
  std::smatch m;
  if (!std::regex_search(statement, m, head)) return {statement};
  const std::string prefix = m[0];
  std::vector<std::string> out;
  int depth = 0;
  char quote = 0;
  size_t start = std::string::npos;
  for (size_t i = prefix.size(); i < statement.size(); ++i) {
    const char c = statement[i];
    if (quote) {
      if (c == quote) quote = 0;  // a doubled quote closes and opens again
    } else if (c == '\'' || c == '"') {
      quote = c;
    } else if (c == '(') {
      if (depth++ == 0) start = i;
    } else if (c == ')' && --depth == 0) {
      out.push_back(prefix + statement.substr(start, i + 1 - start));
    }
  }
  return out;
}

// An EXECUTE BLOCK is kept well below the server's limits on the length of
// a statement and on the tables one statement names (256).
constexpr size_t kBlockText = 24000;
constexpr int kBlockRows = 200;

}  // namespace

std::vector<std::string> CopySqliteToFirebird(const std::string& sqlitePath, FirebirdServer& server,
                                              const std::string& database) {
  SqliteDatabase source(sqlitePath);
  std::vector<std::string> tables;
  for (const SqlRow& row : source.Query("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE "
                                        "'sqlite\\_%' ESCAPE '\\' ORDER BY name"))
    tables.push_back(*row[0]);

  std::vector<std::string> afterRows;  // indexes and foreign keys, made once every row is in
  for (const std::string& table : tables) {
    const SqlRows columns = source.Query("SELECT name, type, \"notnull\", pk FROM pragma_table_info(" +
                                         LiteQuoted(table) + ") ORDER BY cid");
    if (columns.empty()) throw std::runtime_error(sqlitePath + ": table \"" + table + "\" has no columns");
    std::string ddl = "CREATE TABLE " + Quoted(table) + " (";
    std::string list;
    std::string literals;  // SQLite's quote() of each column: SQL literals Firebird reads too
    std::vector<std::pair<int, std::string>> key;
    for (const SqlRow& c : columns) {
      const std::string type = FirebirdType(c[1].value_or(""));
      if (type.empty())
        throw std::runtime_error(sqlitePath + ": table \"" + table + "\" column \"" + *c[0] +
                                 "\": no Firebird type for \"" + c[1].value_or("") + "\"");
      const bool inKey = std::stoi(*c[3]) > 0;
      // Firebird's primary key columns must be declared NOT NULL.
      ddl += (list.empty() ? "" : ", ") + Quoted(*c[0]) + " " + type + (*c[2] != "0" || inKey ? " NOT NULL" : "");
      list += (list.empty() ? "" : ", ") + Quoted(*c[0]);
      literals += (literals.empty() ? "" : ", ") + std::string("quote(") + Quoted(*c[0]) + ")";
      if (inKey) key.emplace_back(std::stoi(*c[3]), Quoted(*c[0]));
    }
    if (!key.empty()) {
      std::sort(key.begin(), key.end());
      ddl += ", PRIMARY KEY (";
      for (size_t i = 0; i < key.size(); ++i) ddl += (i ? ", " : "") + key[i].second;
      ddl += ")";
    }
    server.Exec(ddl + ")", database);

    // The rows as INSERTs in EXECUTE BLOCKs, one round trip for many rows.
    const std::string insert = "INSERT INTO " + Quoted(table) + " (" + list + ") VALUES (";
    std::string block;
    int rows = 0;
    for (const SqlRow& row : source.Query("SELECT " + literals + " FROM " + Quoted(table))) {
      block += block.empty() ? "EXECUTE BLOCK AS BEGIN\n" : "";
      block += insert;
      for (size_t c = 0; c < row.size(); ++c) block += (c ? ", " : "") + *row[c];
      block += ");\n";
      if (++rows == kBlockRows || block.size() > kBlockText) {
        server.Exec(block + "END", database);
        block.clear();
        rows = 0;
      }
    }
    if (!block.empty()) server.Exec(block + "END", database);

    for (const SqlRow& index : source.Query("SELECT name, \"unique\" FROM pragma_index_list(" + LiteQuoted(table) +
                                            ") WHERE origin = 'c' ORDER BY name")) {
      std::string cols;
      for (const SqlRow& part :
           source.Query("SELECT name FROM pragma_index_info(" + LiteQuoted(*index[0]) + ") ORDER BY seqno")) {
        if (!part[0]) {  // an index on an expression: not ours to translate
          cols.clear();
          break;
        }
        cols += (cols.empty() ? "" : ", ") + Quoted(*part[0]);
      }
      if (!cols.empty())
        afterRows.push_back(std::string(*index[1] != "0" ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") +
                            Quoted(*index[0]) + " ON " + Quoted(table) + " (" + cols + ")");
    }
    std::map<int, std::vector<std::string>> foreign;  // id -> referenced table, from list, to list, rules
    for (const SqlRow& k : source.Query("SELECT id, \"table\", \"from\", \"to\", on_update, on_delete FROM "
                                        "pragma_foreign_key_list(" + LiteQuoted(table) + ") ORDER BY id, seq")) {
      auto& entry = foreign[std::stoi(*k[0])];
      if (entry.empty()) entry = {Quoted(*k[1]), "", "", k[4].value_or(""), k[5].value_or("")};
      entry[1] += (entry[1].empty() ? "" : ", ") + Quoted(*k[2]);
      if (k[3]) entry[2] += (entry[2].empty() ? "" : ", ") + Quoted(*k[3]);
    }
    for (const auto& [id, k] : foreign) {
      std::string fk = "ALTER TABLE " + Quoted(table) + " ADD FOREIGN KEY (" + k[1] + ") REFERENCES " + k[0];
      if (!k[2].empty()) fk += " (" + k[2] + ")";
      static const std::regex rule("NO ACTION|CASCADE|SET NULL|SET DEFAULT", std::regex::icase);
      if (std::regex_match(k[3], rule)) fk += " ON UPDATE " + k[3];
      if (std::regex_match(k[4], rule)) fk += " ON DELETE " + k[4];
      afterRows.push_back(fk);
    }
  }
  for (const std::string& statement : afterRows) server.Exec(statement, database);
  return tables;
}

std::vector<std::string> FirebirdHostileNamesSql() {
  std::vector<std::string> out;
  for (const std::string& statement : HostileNamesSql())
    for (std::string& single : SplitRows(statement)) out.push_back(std::move(single));
  return out;
}

FirebirdServer& ChinookOnFirebird() {
  static std::mutex mutex;
  static bool loaded = false;
  static std::string failure;
  std::lock_guard<std::mutex> lock(mutex);
  FirebirdServer& server = FirebirdServer::Shared();
  if (!loaded && failure.empty()) {
    try {
      const std::string path = ChinookSqlitePath();
      if (path.empty()) throw std::runtime_error("Chinook_Sqlite.sqlite is not in the shared corpus");
      CopySqliteToFirebird(path, server, kFirebirdChinookDatabase);
      for (const std::string& statement : FirebirdHostileNamesSql()) server.Exec(statement, kFirebirdChinookDatabase);
      loaded = true;
    } catch (const std::exception& e) {
      failure = std::string("loading Chinook into Firebird: ") + e.what();
    }
  }
  if (!loaded) throw std::runtime_error(failure);
  return server;
}

}  // namespace mvtest
