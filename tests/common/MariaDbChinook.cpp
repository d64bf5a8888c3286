#include "MariaDbChinook.h"

#include <mysql.h>

#include <algorithm>
#include <optional>
#include <map>
#include <mutex>
#include <regex>
#include <stdexcept>

namespace mvtest {

namespace {

std::string Quoted(const std::string& name) {
  std::string out = "`";
  for (char c : name) {
    if (c == '`') out += '`';
    out += c;
  }
  return out + "`";
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

// The MariaDB type of a column SQLite declares as `declared`; empty when
// there is none.
std::string MariaDbType(const std::string& declared) {
  static const std::regex shape(R"(^\s*([A-Z ]*[A-Z])\s*(?:\(\s*(\d+)\s*(?:,\s*(\d+)\s*)?\))?\s*$)");
  std::string text = declared;
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  std::smatch m;
  if (!std::regex_match(text, m, shape)) return {};
  const std::string base = m[1];
  const std::string args = m[2].matched ? "(" + m[2].str() + (m[3].matched ? "," + m[3].str() : "") + ")" : "";
  static const std::map<std::string, std::string> plain = {
      {"INTEGER", "int"},     {"INT", "int"},           {"SMALLINT", "smallint"}, {"BIGINT", "bigint"},
      {"TEXT", "longtext"},   {"CLOB", "longtext"},     {"REAL", "double"},       {"FLOAT", "double"},
      {"DOUBLE", "double"},   {"DOUBLE PRECISION", "double"},                     {"BLOB", "longblob"},
      {"BOOLEAN", "boolean"}, {"DATETIME", "datetime"}, {"TIMESTAMP", "datetime"}, {"DATE", "date"},
      {"TIME", "time"}};
  if (auto it = plain.find(base); it != plain.end() && args.empty()) return it->second;
  if (base == "NUMERIC" || base == "DECIMAL") return "decimal" + args;
  if (base == "NVARCHAR" || base == "VARCHAR" || base == "CHARACTER VARYING" || base == "NATIONAL VARCHAR")
    return "varchar" + args;
  if (base == "NCHAR" || base == "CHAR" || base == "CHARACTER") return "char" + args;
  return {};
}

std::string Literal(MYSQL* connection, const std::optional<std::string>& value) {
  if (!value) return "NULL";
  std::string out(value->size() * 2 + 3, '\0');
  out[0] = '\'';
  const unsigned long n = mysql_real_escape_string(connection, out.data() + 1, value->data(), value->size());
  out.resize(n + 1);
  return out + "'";
}

}  // namespace

std::vector<std::string> CopySqliteToMariaDb(const std::string& sqlitePath, MariaDbServer& server,
                                             const std::string& database) {
  SqliteDatabase source(sqlitePath);
  std::vector<std::string> tables;
  for (const SqlRow& row : source.Query("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE "
                                        "'sqlite\\_%' ESCAPE '\\' ORDER BY name"))
    tables.push_back(*row[0]);

  const std::string db = Quoted(database) + ".";
  std::vector<std::string> afterRows;  // indexes and foreign keys, made once every row is in
  for (const std::string& table : tables) {
    const SqlRows columns = source.Query("SELECT name, type, \"notnull\", pk FROM pragma_table_info(" +
                                         LiteQuoted(table) + ") ORDER BY cid");
    if (columns.empty()) throw std::runtime_error(sqlitePath + ": table \"" + table + "\" has no columns");
    std::string ddl = "CREATE TABLE " + db + Quoted(table) + " (";
    std::string list;
    std::vector<std::pair<int, std::string>> key;
    for (const SqlRow& c : columns) {
      const std::string type = MariaDbType(c[1].value_or(""));
      if (type.empty())
        throw std::runtime_error(sqlitePath + ": table \"" + table + "\" column \"" + *c[0] +
                                 "\": no MariaDB type for \"" + c[1].value_or("") + "\"");
      ddl += (list.empty() ? "" : ", ") + Quoted(*c[0]) + " " + type + (*c[2] != "0" ? " NOT NULL" : "");
      list += (list.empty() ? "" : ", ") + Quoted(*c[0]);
      if (const int pk = std::stoi(*c[3]); pk > 0) key.emplace_back(pk, Quoted(*c[0]));
    }
    if (!key.empty()) {
      std::sort(key.begin(), key.end());
      ddl += ", PRIMARY KEY (";
      for (size_t i = 0; i < key.size(); ++i) ddl += (i ? ", " : "") + key[i].second;
      ddl += ")";
    }
    // Texts compare by their bytes, as in the SQLite file: the server's
    // default collation ignores case and accents ("Lazão" = "Lazao").
    server.Exec(ddl + ") ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_bin");

    // The rows in multi-row INSERTs of about half a megabyte.
    const std::string insert = "INSERT INTO " + db + Quoted(table) + " (" + list + ") VALUES ";
    std::string statement;
    for (const SqlRow& row : source.Query("SELECT * FROM " + LiteQuoted(table))) {
      statement += statement.empty() ? insert + "(" : ", (";
      for (size_t c = 0; c < row.size(); ++c) statement += (c ? ", " : "") + Literal(server.Connection(), row[c]);
      statement += ")";
      if (statement.size() > (1 << 19)) {
        server.Exec(statement);
        statement.clear();
      }
    }
    if (!statement.empty()) server.Exec(statement);

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
                            Quoted(*index[0]) + " ON " + db + Quoted(table) + " (" + cols + ")");
    }
    std::map<int, std::vector<std::string>> foreign;  // id -> referenced table, from list, to list, rules
    for (const SqlRow& k : source.Query("SELECT id, \"table\", \"from\", \"to\", on_update, on_delete FROM "
                                        "pragma_foreign_key_list(" + LiteQuoted(table) + ") ORDER BY id, seq")) {
      auto& entry = foreign[std::stoi(*k[0])];
      if (entry.empty()) entry = {db + Quoted(*k[1]), "", "", k[4].value_or(""), k[5].value_or("")};
      entry[1] += (entry[1].empty() ? "" : ", ") + Quoted(*k[2]);
      if (k[3]) entry[2] += (entry[2].empty() ? "" : ", ") + Quoted(*k[3]);
    }
    for (const auto& [id, k] : foreign) {
      std::string fk = "ALTER TABLE " + db + Quoted(table) + " ADD FOREIGN KEY (" + k[1] + ") REFERENCES " + k[0];
      if (!k[2].empty()) fk += " (" + k[2] + ")";
      static const std::regex rule("NO ACTION|RESTRICT|CASCADE|SET NULL|SET DEFAULT", std::regex::icase);
      if (std::regex_match(k[3], rule)) fk += " ON UPDATE " + k[3];
      if (std::regex_match(k[4], rule)) fk += " ON DELETE " + k[4];
      afterRows.push_back(fk);
    }
  }
  for (const std::string& statement : afterRows) server.Exec(statement);
  return tables;
}

MariaDbServer& ChinookOnMariaDb() {
  static std::mutex mutex;
  static bool loaded = false;
  static std::string failure;
  std::lock_guard<std::mutex> lock(mutex);
  MariaDbServer& server = MariaDbServer::Shared();
  if (!loaded && failure.empty()) {
    try {
      const std::string path = ChinookSqlitePath();
      if (path.empty()) throw std::runtime_error("Chinook_Sqlite.sqlite is not in the shared corpus");
      const std::string database = Quoted(kMariaDbChinookDatabase);
      server.Exec("CREATE DATABASE " + database + " CHARACTER SET utf8mb4 COLLATE utf8mb4_bin");
      CopySqliteToMariaDb(path, server, kMariaDbChinookDatabase);
      // The awkward names are written in double quotes: names under ANSI_QUOTES.
      server.Exec("USE " + database + "; SET SESSION sql_mode = CONCAT(@@sql_mode, ',ANSI_QUOTES')");
      try {
        for (const std::string& statement : HostileNamesSql()) server.Exec(statement);
      } catch (...) {
        server.Exec("SET SESSION sql_mode = DEFAULT; USE test");
        throw;
      }
      server.Exec("SET SESSION sql_mode = DEFAULT; USE test");
      loaded = true;
    } catch (const std::exception& e) {
      failure = std::string("loading Chinook into MariaDB: ") + e.what();
    }
  }
  if (!loaded) throw std::runtime_error(failure);
  return server;
}

}  // namespace mvtest
