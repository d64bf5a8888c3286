// Adversarial statement shapes: one statement each, grown along one axis
// (bracket depth, terms of an AND chain, items of an IN list, depth of nested
// sub-queries), so that time per byte across the sizes of one kind shows any
// growth worse than linear. The statements are plain ASCII SQL that any
// SELECT parser should accept.
#pragma once

#include <string>
#include <vector>

namespace mv {

struct TmvBenchShape {
  std::string Kind;          // "brackets", "and", "in", "subquery" or "<where>-brackets"
  int Size = 0;              // depth, terms or items
  std::string Description;   // one line for tables and listings

  std::string Name() const { return Kind + "-" + std::to_string(Size); }
};

// The fixed list of shapes the benchmarks run, smallest first within a kind.
const std::vector<TmvBenchShape>& BenchShapes();

// The statement of one shape. Raises std::invalid_argument for an unknown kind
// or a size below one.
//   brackets N:  SELECT a FROM t WHERE ((...(a = 1)...))   with N bracket pairs
//   and N:       SELECT a FROM t WHERE c1 = 1 AND ... AND cN = N
//   in N:        SELECT a FROM t WHERE a IN (1, 2, ..., N)
//   subquery N:  SELECT a FROM t0 WHERE a IN (SELECT a FROM t1 WHERE a IN (... SELECT a FROM tN))
//   select-brackets N:  SELECT ((SELECT ((... SELECT a FROM t ...)) FROM t)) FROM t
//   in-brackets N:      SELECT a FROM t WHERE a IN ((SELECT a FROM t WHERE a IN ((... SELECT a FROM t))))
//   from-brackets N:    SELECT a FROM ((SELECT a FROM ((... SELECT a FROM t)) q)) q
std::string MakeShapeSql(const std::string& kind, int size);

}  // namespace mv
