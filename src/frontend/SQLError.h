// The exception of a failed parse, and the messages of the SQL front end.
//
// A message made with a token reads, in two lines (CR LF between them):
//   Invalid SELECT statement.
//    Unexpected token "FROM" at line 1, pos 8
// where pos is the token's column. Message texts come from the message
// catalog by key, so a language can replace them.
#pragma once

#include <cstdint>

#include "frontend/Token.h"
#include "support/Exceptions.h"

namespace mv {

enum TmvParseErrorKind : uint8_t {
  ekNotSelectStatement,
  ekInvalidSelectStatement,
  ekNotASingleSelectStatement,
};

class EmvSQLError : public Exception {
 public:
  // The message, a line break and " Unexpected token ... at line L, pos C"
  // about `token` (the message alone without a token). Kind
  // ekInvalidSelectStatement.
  EmvSQLError(WideStringView message, const TmvToken* token);
  EmvSQLError(WideStringView message, TmvParseErrorKind kind, const TmvToken* token);
  // The same with the second line from message key `tokenLineKey`, formatted
  // with the token's text, line and column.
  EmvSQLError(WideStringView message, TmvParseErrorKind kind, const TmvToken* token, const char16_t* tokenLineKey);
  // The message, a line break and " Unexpected token "text"".
  EmvSQLError(WideStringView message, WideStringView tokenText);
  const char* ClassName() const override { return "EmvSQLError"; }

  int32_t Pos = -1;   // the token's Pos; -1 with no token
  int32_t Col = -1;   // the token's Col; -1 with no token
  int32_t Line = 0;   // the token's Line; 0 with no token
  WideString TokenText;
  TmvParseErrorKind Kind = ekInvalidSelectStatement;
};

// The line that names a token: " Unexpected token "%0:s" at line %1:d, pos %2:d".
WideString UnexpectedTokenMessage(const TmvToken& token);
// The line of a parse that met a budget of the parser before `token`:
// " The statement is too complex to parse: a limit was met before "%0:s" at line %1:d, pos %2:d".
WideString TooComplexMessage(const TmvToken& token);

// Registers the front end's message keys with their English defaults
// (done once; later calls change nothing).
void RegisterFrontendMessages();

// Message keys of the front end.
inline constexpr const char16_t* mvQBNoSyntaxProvider = u"mvQBNoSyntaxProvider";
inline constexpr const char16_t* mvQBNotSelectStatement = u"mvQBNotSelectStatement";
inline constexpr const char16_t* mvQBBadSelectStatement = u"mvQBBadSelectStatement";
inline constexpr const char16_t* mvQBBadFromObjectExpression = u"mvQBBadFromObjectExpression";
inline constexpr const char16_t* mvQBUnexpectedToken = u"mvQBUnexpectedToken";
inline constexpr const char16_t* mvQBUnexpectedTokenAt = u"mvQBUnexpectedTokenAt";
inline constexpr const char16_t* mvQBStatementTooComplex = u"mvQBStatementTooComplex";
inline constexpr const char16_t* mvQBSqlMustBeSimpleSelect = u"mvQBSqlMustBeSimpleSelect";
inline constexpr const char16_t* mvQBBadObjectName = u"mvQBBadObjectName";
inline constexpr const char16_t* mvQBUnknownObjectName = u"mvQBUnknownObjectName";

}  // namespace mv
