#include "ShapeGenerator.h"

#include <stdexcept>

namespace mv {

const std::vector<TmvBenchShape>& BenchShapes() {
  // Pairs and triples of one kind show the growth; the larger sizes are the
  // ones a parser must survive quickly and without running out of stack.
  static const std::vector<TmvBenchShape> shapes = {
      {"brackets", 30, "brackets nested 30 deep inside WHERE"},
      {"brackets", 100, "brackets nested 100 deep inside WHERE"},
      {"brackets", 200, "brackets nested 200 deep inside WHERE"},
      {"and", 1000, "AND chain of 1,000 comparisons"},
      {"and", 10000, "AND chain of 10,000 comparisons"},
      {"in", 10000, "IN list of 10,000 numbers"},
      {"in", 20000, "IN list of 20,000 numbers"},
      {"subquery", 10, "IN sub-queries nested 10 deep"},
      {"subquery", 50, "IN sub-queries nested 50 deep"},
      {"select-brackets", 10, "sub-queries in doubled brackets in the select list, 10 deep"},
      {"select-brackets", 50, "sub-queries in doubled brackets in the select list, 50 deep"},
      {"in-brackets", 10, "IN sub-queries in doubled brackets, 10 deep"},
      {"in-brackets", 50, "IN sub-queries in doubled brackets, 50 deep"},
      {"from-brackets", 10, "FROM sub-queries in doubled brackets, 10 deep"},
      {"from-brackets", 50, "FROM sub-queries in doubled brackets, 50 deep"},
  };
  return shapes;
}

std::string MakeShapeSql(const std::string& kind, int size) {
  if (size < 1) throw std::invalid_argument("shape size must be at least 1, not " + std::to_string(size));
  std::string sql;
  if (kind == "brackets") {
    sql = "SELECT a FROM t WHERE ";
    sql.append(static_cast<size_t>(size), '(');
    sql += "a = 1";
    sql.append(static_cast<size_t>(size), ')');
  } else if (kind == "and") {
    sql = "SELECT a FROM t WHERE ";
    for (int i = 1; i <= size; ++i) {
      if (i > 1) sql += " AND ";
      const std::string number = std::to_string(i);
      sql.append("c").append(number).append(" = ").append(number);
    }
  } else if (kind == "in") {
    sql = "SELECT a FROM t WHERE a IN (";
    for (int i = 1; i <= size; ++i) {
      if (i > 1) sql += ", ";
      sql += std::to_string(i);
    }
    sql += ")";
  } else if (kind == "subquery") {
    for (int level = 0; level < size; ++level)
      sql.append("SELECT a FROM t").append(std::to_string(level)).append(" WHERE a IN (");
    sql.append("SELECT a FROM t").append(std::to_string(size));
    sql.append(static_cast<size_t>(size), ')');
  } else if (kind == "select-brackets" || kind == "in-brackets" || kind == "from-brackets") {
    // Each level's brackets may be read as those of a sub-query or as those
    // of an expression (a source) holding one.
    const std::string open = kind == "select-brackets" ? "SELECT ((" : kind == "in-brackets" ? "SELECT a FROM t WHERE a IN ((" : "SELECT a FROM ((";
    const std::string close = kind == "select-brackets" ? ")) FROM t" : kind == "in-brackets" ? "))" : ")) q";
    for (int level = 0; level < size; ++level) sql += open;
    sql += "SELECT a FROM t";
    for (int level = 0; level < size; ++level) sql += close;
  } else {
    throw std::invalid_argument("unknown shape kind '" + kind + "'");
  }
  return sql;
}

}  // namespace mv
