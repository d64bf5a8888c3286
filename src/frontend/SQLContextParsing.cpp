// The text road of the SQL context: the parse entries, the statement test,
// FROM sources made from names, and names taken apart as text.
#include "frontend/SyntaxProvider.h"
#include "frontend/Parser.h"
#include "frontend/SQLContext.h"
#include "frontend/Scanner.h"
#include "support/MessageCatalog.h"
#include "tree/Expressions.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"
#include "tree/Tokens.h"

namespace mv {

namespace {

// One parse of a text through the provider's scanner and parser. Both are
// released however the parse ends, by an exception too.
class ParseRun {
 public:
  ParseRun(TmvBaseSQLContext* context, const WideString& text, bool bareToken = false)
      : provider_(context->SyntaxProvider()), scanner_(context->SyntaxProvider()->CreateScanner()) {
    if (bareToken) {
      // Spaces or comments around the text make it fail.
      scanner_->SkipComments = false;
      scanner_->SkipSpaces = false;
    }
    scanner_->Init(text);
    parser_ = context->SyntaxProvider()->CreateParser(scanner_.get(), context);
  }

  TmvBaseScanner& Scanner() { return *scanner_; }
  const TmvBaseSyntaxProvider* Provider() const { return provider_; }
  TmvBaseParser& Parser() { return *parser_; }
  // The first pass; true when a way reads the whole text.
  bool Find(TmvParserEntry entry) { return parser_->FindWay(entry); }
  // After a failed first pass: the first token no way could read.
  const TmvToken& BadToken() const { return scanner_->GetToken(parser_->GetBadToken()); }
  // ... and the key of the line that names it: a budget of the parser, or
  // the ordinary syntax error.
  const char16_t* FailureKey() const {
    return parser_->TooComplex() ? mvQBStatementTooComplex : mvQBUnexpectedTokenAt;
  }
  WideString FailureLine() const {
    return parser_->TooComplex() ? TooComplexMessage(BadToken()) : UnexpectedTokenMessage(BadToken());
  }

 private:
  const TmvBaseSyntaxProvider* provider_;
  TmvOwned<TmvBaseScanner> scanner_;
  TmvOwned<TmvBaseParser> parser_;
};

template <class T>
TmvOwned<T> Adopt(T* node) {
  return TmvOwned<T>(node);
}

// Raises "Not a SELECT SQL statement." unless the scanned text is one.
void RequireSelectStatement(ParseRun& run) {
  const TmvToken* token = nullptr;
  if (!TmvBaseSQLContext::IsSelectStatement(run.Scanner(), token, run.Provider()))
    throw EmvSQLError(MessageText(mvQBNotSelectStatement), ekNotSelectStatement, token);
}

[[noreturn]] void RaiseInvalidSelect(const ParseRun& run) {
  throw EmvSQLError(MessageText(mvQBBadSelectStatement), ekInvalidSelectStatement, &run.BadToken(), run.FailureKey());
}

}  // namespace

// --- Statements ---

bool TmvBaseSQLContext::IsSelectStatement(const TmvBaseScanner& scanner, const TmvToken*& token,
                                          const TmvBaseSyntaxProvider* provider) {
  const int32_t count = scanner.GetCount();
  int32_t i = 0;
  // Leading brackets and comments are stepped over.
  while (i < count && (scanner.GetToken(i).IsHidden() || scanner.GetToken(i).Text == u"(")) ++i;
  const TmvToken& first = scanner.GetToken(i);
  const WideString word = WideUpperCase(first.Text);
  if (provider ? provider->IsSelectKeyword(word) : word == u"SELECT") {
    token = nullptr;
    return true;
  }
  if (word != u"WITH") {
    token = &first;
    return false;
  }
  // Every later token counts, whatever its kind.
  for (int32_t j = i + 1; j < count; ++j) {
    const WideString later = WideUpperCase(scanner.GetToken(j).Text);
    if (later == u"INSERT" || later == u"UPDATE") {
      token = &scanner.GetToken(j);
      return false;
    }
  }
  return true;
}

bool TmvBaseSQLContext::IsSelectStatement(const WideString& text) {
  RequireSyntaxProvider();
  TmvOwned<TmvBaseScanner> scanner = syntaxProvider_->CreateScanner();
  scanner->Init(text);
  const TmvToken* token = nullptr;
  return IsSelectStatement(*scanner, token, syntaxProvider_);
}

TmvOwned<TSQLSelectStatement> TmvBaseSQLContext::ParseSelect(const WideString& text) {
  RequireSyntaxProvider();
  ParseRun run(this, text);
  RequireSelectStatement(run);
  if (!run.Find(TmvParserEntry::peSelect)) RaiseInvalidSelect(run);
  return Adopt(run.Parser().ParseSelect());
}

TmvOwned<TSQLSubSelectStatement> TmvBaseSQLContext::ParseWholeSubQuery(const WideString& text) {
  RequireSyntaxProvider();
  ParseRun run(this, text);
  RequireSelectStatement(run);
  if (!run.Find(TmvParserEntry::peSubQuery)) RaiseInvalidSelect(run);
  return Adopt(run.Parser().ParseSubQuery());
}

TmvOwned<TSQLSubSelectStatement> TmvBaseSQLContext::ParseSubQuery(const WideString& text) {
  return ParseWholeSubQuery(text);
}

TmvOwned<TSQLSubQuerySelectExpression> TmvBaseSQLContext::ParseUnionSubQuery(const WideString& text) {
  TmvOwned<TSQLSubSelectStatement> statement = ParseWholeSubQuery(text);
  if (!statement->With && statement->GetCount() == 1) {
    if (auto* member = TmvCast<TSQLSubQuerySelectExpression>(statement->GetItems(0))) {
      TmvOwned<TSQLSubQueryExpression> extracted = statement->Extract(0);
      if (!member->OrderBy && statement->OrderBy) member->OrderBy.Set(statement->OrderBy.Release());
      return TmvOwned<TSQLSubQuerySelectExpression>(static_cast<TSQLSubQuerySelectExpression*>(extracted.release()));
    }
  }
  throw EmvSQLError(MessageText(mvQBSqlMustBeSimpleSelect), ekNotASingleSelectStatement, nullptr);
}

TmvOwned<TSQLFromSource> TmvBaseSQLContext::ParseDatasource(const WideString& text) {
  RequireSyntaxProvider();
  ParseRun run(this, text);
  if (!run.Find(TmvParserEntry::peFromSource))
    throw EmvSQLError(MessageText(mvQBBadFromObjectExpression), ekInvalidSelectStatement, &run.BadToken(),
                      run.FailureKey());
  return Adopt(run.Parser().ParseFromSource());
}

// --- Fragments ---

TmvOwned<TSQLExpressionItem> TmvBaseSQLContext::ParseExpression(const WideString& text, TmvErrorList* errors) {
  RequireSyntaxProvider();
  ParseRun run(this, text);
  if (!run.Find(TmvParserEntry::peExpression)) {
    if (errors) errors->push_back(run.FailureLine());
    return nullptr;
  }
  return Adopt(run.Parser().ParseExpression());
}

TmvOwned<TSQLExpressionItem> TmvBaseSQLContext::ParseLogicalExpression(const WideString& text, bool requireLeftOperand,
                                                                       bool leftIsLogical, TmvErrorList* errors) {
  RequireSyntaxProvider();
  ParseRun run(this, text);
  run.Parser().RequireLeftOperand = requireLeftOperand;
  run.Parser().LeftIsLogical = leftIsLogical;
  if (!run.Find(TmvParserEntry::peLogicalExpression)) {
    if (errors) errors->push_back(run.FailureLine());
    return nullptr;
  }
  return Adopt(run.Parser().ParseLogicalExpression());
}

TmvOwned<TSQLSelectItem> TmvBaseSQLContext::ParseSelectItem(const WideString& text) {
  RequireSyntaxProvider();
  ParseRun run(this, text);
  if (!run.Find(TmvParserEntry::peSelectItem)) return nullptr;
  return Adopt(run.Parser().ParseSelectItem());
}

TmvOwned<TastTokenIdentifier> TmvBaseSQLContext::ParseIdentifier(const WideString& text) {
  if (!syntaxProvider_) return TastCreate<TastTokenIdentifier>(this, WideStringView(text), false);
  if (text.empty()) return nullptr;
  ParseRun run(this, text, true);
  if (!run.Find(TmvParserEntry::peIdentifier)) return nullptr;
  return Adopt(run.Parser().ParseIdentifier());
}

TmvOwned<TSQLDatabaseObject> TmvBaseSQLContext::ParseObjectName(const WideString& text) {
  if (!syntaxProvider_) {
    TmvOwned<TSQLDatabaseObject> object = TastCreate<TSQLDatabaseObject>(this);
    object->AddName(WideStringView(text), false);
    return object;
  }
  ParseRun run(this, text);
  if (!run.Find(TmvParserEntry::peObjectName)) return nullptr;
  return Adopt(run.Parser().ParseObjectName());
}

TmvOwned<TSQLQualifiedName> TmvBaseSQLContext::ParseQualifiedName(const WideString& text) {
  if (!syntaxProvider_) {
    TmvOwned<TSQLQualifiedName> name = TastCreate<TSQLQualifiedName>(this);
    name->AddName(WideStringView(text), false);
    return name;
  }
  if (text.empty()) return nullptr;
  return ParseObjectName(text);
}

// --- Plain names ---

TmvOwned<TastTokenIdentifier> TmvBaseSQLContext::ParseIdentifierQuoteIfNeed(const WideString& text) {
  if (TmvOwned<TastTokenIdentifier> id = ParseIdentifier(text)) return id;
  const WideString begin = syntaxProvider_->GetQuoteBegin();
  const WideString end = syntaxProvider_->GetQuoteEnd();
  if (TmvOwned<TastTokenIdentifier> id = ParseIdentifier(begin + text + end)) return id;
  return ParseIdentifier(CreateQuotedIdentifier(text, begin, end));
}

TmvOwned<TSQLDatabaseObject> TmvBaseSQLContext::ParseObjectNameQuoteIfNeed(const WideString& text) {
  if (text.empty()) return nullptr;
  if (TmvOwned<TSQLDatabaseObject> object = ParseObjectName(text)) return object;
  return ParseObjectName(syntaxProvider_->GetQuoteBegin() + text + syntaxProvider_->GetQuoteEnd());
}

TmvOwned<TSQLQualifiedName> TmvBaseSQLContext::ParseQualifiedNameQuoteIfNeed(const WideString& text) {
  if (text.empty()) return nullptr;
  if (TmvOwned<TSQLQualifiedName> name = ParseQualifiedName(text)) return name;
  return ParseQualifiedName(syntaxProvider_->GetQuoteBegin() + text + syntaxProvider_->GetQuoteEnd());
}

// --- FROM sources made from names ---

namespace {

TmvOwned<TSQLFromObject> MakeFromObject(TmvBaseSQLContext* context, TmvOwned<TSQLDatabaseObject> object,
                                        TmvOwned<TastTokenIdentifier> alias) {
  TmvOwned<TSQLFromObject> source = TastCreate<TSQLFromObject>(context);
  // The name knows the source it names.
  object->FromSource = source.get();
  source->Object.Set(std::move(object));
  if (alias) {
    TmvOwned<TSQLAliasObjectAlias> sourceAlias = TastCreate<TSQLAliasObjectAlias>(context);
    sourceAlias->Name.Set(std::move(alias));
    source->Alias.Set(std::move(sourceAlias));
  }
  return source;
}

}  // namespace

TmvOwned<TSQLFromObject> TmvBaseSQLContext::CreateSQLFromObject(const WideString& objectName, const WideString& alias) {
  TmvOwned<TSQLDatabaseObject> object = ParseObjectNameQuoteIfNeed(objectName);
  if (!object) throw EmvQueryBuilderError(objectName, MessageText(mvQBBadObjectName));
  TmvOwned<TastTokenIdentifier> aliasToken = alias.empty() ? nullptr : ParseIdentifierQuoteIfNeed(alias);
  return MakeFromObject(this, std::move(object), std::move(aliasToken));
}

TmvOwned<TSQLFromObject> TmvBaseSQLContext::CreateSQLFromObject(const TSQLQualifiedName* name,
                                                                const TastTokenIdentifier* alias) {
  TmvOwned<TSQLDatabaseObject> object = TastCreate<TSQLDatabaseObject>(this);
  if (name) object->Assign(*name);
  return MakeFromObject(this, std::move(object), alias ? alias->CloneAs<TastTokenIdentifier>(this) : nullptr);
}

// --- Names taken apart as text ---

WideString TmvBaseSQLContext::ExtractNameFromFullName(const WideString& text) {
  TmvOwned<TSQLQualifiedName> name = ParseQualifiedNameQuoteIfNeed(text);
  TmvOwned<TastToken> part = ExtractNameFromFullName(name.get());
  return part ? part->SimpleSQL(SQLBuilderExpression()) : WideString();
}

WideString TmvBaseSQLContext::ExtractSchemaFromFullName(const WideString& text) {
  TmvOwned<TSQLQualifiedName> name = ParseQualifiedNameQuoteIfNeed(text);
  TmvOwned<TastToken> part = ExtractSchemaFromFullName(name.get());
  return part ? part->SimpleSQL(SQLBuilderExpression()) : WideString();
}

WideString TmvBaseSQLContext::ExtractDatabaseFromFullName(const WideString& text) {
  TmvOwned<TSQLQualifiedName> name = ParseQualifiedNameQuoteIfNeed(text);
  TmvOwned<TSQLQualifiedName> part = ExtractDatabaseFromFullName(name.get());
  return part ? part->GetQualifiedName() : WideString();
}

WideString ExtractQuotedIdentifier(WideStringView text, WideStringView begin, WideStringView end) {
  if (text.size() <= begin.size() + end.size() || !WideStartsText(begin, text)) return WideString(text);
  WideString out;
  out.reserve(text.size());
  const size_t last = text.size() - 1;
  for (size_t i = begin.size(); i < last; ++i) {
    out += text[i];
    // A doubled closing quote stands for one.
    if (!end.empty() && text[i] == end[0] && i + 1 < last && text[i + 1] == end[0]) ++i;
  }
  return out;
}

}  // namespace mv
