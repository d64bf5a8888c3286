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

#include <string>

namespace mv {

class TastNodeBase;

// Lines end with "\n"; the text is UTF-8. Layout nodes (blank requests)
// are left out.
std::string DumpParseTree(const TastNodeBase* node);

}  // namespace mv
