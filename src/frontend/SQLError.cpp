#include "frontend/SQLError.h"

#include <mutex>

#include "support/MessageCatalog.h"

namespace mv {

void RegisterFrontendMessages() {
  static std::once_flag once;
  std::call_once(once, [] {
    MessageCatalog().Register({
        {mvQBNoSyntaxProvider, u"Syntax provider is not specified"},
        {mvQBNotSelectStatement, u"Not a SELECT SQL statement."},
        {mvQBBadSelectStatement, u"Invalid SELECT statement."},
        {mvQBBadFromObjectExpression, u"Invalid FROM object expression"},
        {mvQBUnexpectedToken, u" Unexpected token \"%s\""},
        {mvQBUnexpectedTokenAt, u" Unexpected token \"%0:s\" at line %1:d, pos %2:d"},
        {mvQBStatementTooComplex,
         u" The statement is too complex to parse: a limit was met before \"%0:s\" at line %1:d, pos %2:d"},
        {mvQBSqlMustBeSimpleSelect, u"SQL query must be single SELECT statement"},
        {mvQBBadObjectName, u"Invalid object name"},
        {mvQBUnknownObjectName, u"Unknown object name: \"%s\""},
    });
  });
}

WideString UnexpectedTokenMessage(const TmvToken& token) {
  RegisterFrontendMessages();
  return WideFormat(MessageText(mvQBUnexpectedTokenAt), {token.Text, token.Line, token.Col});
}

EmvSQLError::EmvSQLError(WideStringView message, const TmvToken* token)
    : EmvSQLError(message, ekInvalidSelectStatement, token) {}

WideString TooComplexMessage(const TmvToken& token) {
  RegisterFrontendMessages();
  return WideFormat(MessageText(mvQBStatementTooComplex), {token.Text, token.Line, token.Col});
}

EmvSQLError::EmvSQLError(WideStringView message, TmvParseErrorKind kind, const TmvToken* token)
    : EmvSQLError(message, kind, token, mvQBUnexpectedTokenAt) {}

EmvSQLError::EmvSQLError(WideStringView message, TmvParseErrorKind kind, const TmvToken* token,
                         const char16_t* tokenLineKey)
    : Exception(WideString(message)), Kind(kind) {
  if (!token) return;
  RegisterFrontendMessages();
  // The format runs over the joined text, as the message catalog's texts expect.
  SetMessage(WideFormat(WideString(message) + u"\r\n" + MessageText(tokenLineKey),
                        {token->Text, token->Line, token->Col}));
  Pos = token->Pos;
  Col = token->Col;
  Line = token->Line;
  TokenText = token->Text;
}

EmvSQLError::EmvSQLError(WideStringView message, WideStringView tokenText)
    : Exception(WideString(message)), TokenText(tokenText) {
  RegisterFrontendMessages();
  SetMessage(WideFormat(WideString(message) + u"\r\n" + MessageText(mvQBUnexpectedToken), {WideString(tokenText)}));
}

}  // namespace mv
