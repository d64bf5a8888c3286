// A readable dump of a syntax tree, one node a line, indented by depth: the
// class name and the node's key fields (texts in double quotes, flags that
// are set). For mvsql's --tree and for tests that check a tree's shape.
//
//   TSQLExpressionOperatorBinary
//     TSQLExpressionColumn
//       TSQLObjectColumn
//         TastTokenIdentifier "a"
//     TSQLOperator "="
//     TSQLExpressionConstant
//       TastTokenNumber "1"
#pragma once

#include <functional>
#include <string>

namespace mv {

class TastNodeBase;

// Text added at the end of a node's line (empty for none), e.g. what a name
// is bound to.
using TastDumpAnnotation = std::function<std::string(const TastNodeBase* node)>;

// Lines end with "\n"; the text is UTF-8. Layout nodes (blank requests)
// are left out.
std::string DumpParseTree(const TastNodeBase* node, const TastDumpAnnotation& annotate = {});

}  // namespace mv
