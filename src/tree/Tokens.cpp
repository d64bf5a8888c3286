#include "tree/Tokens.h"

#include <pugixml.hpp>

#include "frontend/SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "sqlgen/SQLBuilder.h"

namespace mv {

void TastToken::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.WriteIdentifier(Token); }
void TastTokenSymbol::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.WriteSymbol(Token); }
void TastTokenKeyword::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.WriteKeyword(Token); }
void TastTokenBuiltin::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.WriteBuiltin(Token); }
void TastTokenNumber::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.WriteNumber(Token); }
void TastTokenString::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.WriteString(Token); }

void TastTokenUnicodeString::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TastTokenString::BuildSQLDirect(builder, format);
  if (!UEscape) return;
  builder.Space(3);
  builder.WriteKeyword(u"UEscape");
  builder.Space(3);
  UEscape->BuildSQL(builder, format);
}

// --- TastTokenIdentifier ---

TastTokenIdentifier::TastTokenIdentifier(TmvBaseSQLContext* context, WideStringView text, bool quoted)
    : TastTokenIdentifier(context) {
  Token = WideString(text);
  Quoted = quoted;
  RecalcValidIdentifier();
}

TastTokenIdentifier::TastTokenIdentifier(TmvBaseSQLContext* context, WideStringView sqlText)
    : TastTokenIdentifier(context) {
  SetTokenStr(sqlText);
}

void TastTokenIdentifier::SetTokenStr(WideStringView sqlText) {
  if (sqlText.empty()) {
    Clear();
    return;
  }
  TmvBaseSQLContext* context = SQLContext();
  TmvOwned<TastTokenIdentifier> parsed =
      context ? context->ParseIdentifierQuoteIfNeed(WideString(sqlText)) : nullptr;
  if (!parsed) {
    // Without a context nothing can read quotes: the text stands as it is.
    Quoted = false;
    SetToken(sqlText);
    return;
  }
  Assign(*parsed);
}

void TastTokenIdentifier::RecalcValidIdentifier() {
  TmvBaseSQLContext* context = SQLContext();
  ValidIdentifier = context && context->IsValidIdent(Token);
}

void TastTokenIdentifier::SetToken(WideStringView text) {
  TastToken::SetToken(text);
  RecalcValidIdentifier();
}

void TastTokenIdentifier::Clear() {
  SetToken(u"");
  Quoted = false;
}

void TastTokenIdentifier::Assign(const TastNodeBase& source) {
  TastToken::Assign(source);
  const auto* other = TmvCast<TastTokenIdentifier>(&source);
  if (other) AssignOwnFields(*other);
  if (!other || other->SQLContext() != SQLContext()) RecalcValidIdentifier();
}

void TastTokenIdentifier::SyntaxProviderChanged() {
  TastToken::SyntaxProviderChanged();
  RecalcValidIdentifier();
}

void TastTokenIdentifier::BuildIdentifier(TSQLBuilder& builder, const TSQLBuilderSelectFormat&,
                                          TmvIdentQuotation quotation) {
  TmvBaseSQLContext* context = SQLContext();
  TmvBaseSyntaxProvider* provider = context ? context->SyntaxProvider() : nullptr;
  if (Token.empty()) {
    // Whatever the mode: an empty name can only be written in quotes.
    if (provider)
      builder.WriteIdentifier(provider->GetQuoteBegin() + provider->GetQuoteEnd());
    else
      builder.WriteIdentifier(u"\"\"");
    return;
  }
  if (!provider) {
    builder.WriteIdentifier(Token);
    return;
  }
  const bool caseSensitive = provider->IsIdentifiersCaseSensitive();
  auto fold = [provider](const WideString& text) {
    return provider->IsNonQuotedIdentifiersToUpperCase() ? WideUpperCase(text) : WideLowerCase(text);
  };
  bool needQuotes = false;
  switch (quotation) {
    case icNone: needQuotes = false; break;
    case icAll: needQuotes = true; break;
    case icIfNeed:
      // Source quotes survive only where they keep the case of a name the
      // server would otherwise fold, or where the name is not valid bare.
      needQuotes = !ValidIdentifier || (Quoted && caseSensitive && fold(Token) != Token);
      break;
  }
  if (!needQuotes) {
    builder.WriteIdentifier(Token);
    return;
  }
  // Quotes added to a bare name keep the name the server sees: fold it first.
  WideString text = !Quoted && caseSensitive ? fold(Token) : Token;
  const WideString quoteEnd = provider->GetQuoteEnd();
  if (!ValidIdentifier && quoteEnd.size() == 1)
    text = WideStringReplace(text, quoteEnd, quoteEnd + quoteEnd, rfReplaceAll);
  builder.WriteIdentifier(provider->GetQuoteBegin() + text + quoteEnd);
}

void TastTokenIdentifier::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  BuildIdentifier(builder, format, builder.QuoteIdentifiers());
}

WideString CreateQuotedIdentifier(WideStringView name, WideStringView quoteBegin, WideStringView quoteEnd) {
  WideString text(name);
  if (!quoteEnd.empty()) text = WideStringReplace(text, quoteEnd, WideString(quoteEnd) + WideString(quoteEnd), rfReplaceAll);
  return WideString(quoteBegin) + text + WideString(quoteEnd);
}

const char* XmlBoolText(bool value) { return value ? "1" : "0"; }

bool XmlBoolValue(const char* text, bool& value) {
  std::string_view t(text ? text : "");
  if (t == "1" || t == "-1" || AnsiSameText(t, "true")) {
    value = true;
    return true;
  }
  if (t == "0" || AnsiSameText(t, "false")) {
    value = false;
    return true;
  }
  return false;
}

pugi::xml_node TastTokenIdentifier::GetXMLNode(pugi::xml_node parent, const char* tag) const {
  pugi::xml_node element = parent.append_child(tag);
  element.append_attribute("name").set_value(UTF8Encode(Token).c_str());
  element.append_attribute("case_sens").set_value(XmlBoolText(Quoted));
  return element;
}

bool TastTokenIdentifier::LoadFromXMLNode(pugi::xml_node element) {
  pugi::xml_attribute name = element.attribute("name");
  if (!name) return false;
  SetToken(UTF8Decode(name.value()));
  bool quoted = false;
  if (XmlBoolValue(element.attribute("case_sens").value(), quoted)) Quoted = quoted;
  return true;
}

// --- Token lists ---

TastToken* TastTokenList::Add(TmvOwned<TastToken> token) {
  TastToken* raw = token.get();
  Items.Add(std::move(token));
  return raw;
}

void TastTokenList::Insert(int index, TmvOwned<TastToken> token) { Items.Insert(index, std::move(token)); }

TmvOwned<TastToken> TastTokenList::ExtractToken(const TastToken* token) {
  return TmvOwned<TastToken>(static_cast<TastToken*>(Items.Extract(token).release()));
}

TmvOwned<TastToken> TastTokenList::ExtractToken(int index) {
  return TmvOwned<TastToken>(static_cast<TastToken*>(Items.Extract(index).release()));
}

int TastTokenList::FindByString(WideStringView text) const {
  for (int i = 0; i < Items.Count(); ++i)
    if (const TastToken* t = Token(i); t && WideSameText(t->Token, text)) return i;
  return -1;
}

int TastTokenList::FindByToken(const TastToken* token) const {
  for (int i = 0; i < Items.Count(); ++i)
    if (const TastToken* t = Token(i); t && SQLContext()->CompareTokens(t, token) == 0) return i;
  return -1;
}

int TastIdentifiersList::FindByIdToken(const TastTokenIdentifier* token) const {
  for (int i = 0; i < Items.Count(); ++i)
    if (const TastTokenIdentifier* t = Identifier(i); t && SQLContext()->CompareIdentifiers(t, token) == 0)
      return i;
  return -1;
}

// --- TSQLIdentifiersCollection ---

void TSQLIdentifiersCollection::AfterConstruction() {
  ItemClass = &TastTokenIdentifier::StaticClass();
  TastNodeWithCollection::AfterConstruction();
}

TastTokenIdentifier* TSQLIdentifiersCollection::AddIdentifier(WideStringView text) {
  return InsertIdentifier(Items.Count(), text);
}

TastTokenIdentifier* TSQLIdentifiersCollection::InsertIdentifier(int index, WideStringView text) {
  auto* id = TmvCast<TastTokenIdentifier>(Insert(index));
  if (id) id->SetToken(text);
  return id;
}

int TSQLIdentifiersCollection::IndexOf(const TastTokenIdentifier* token) const {
  for (int i = 0; i < Items.Count(); ++i)
    if (SQLContext()->IsIdentifiersEqual(Identifier(i), token)) return i;
  return -1;
}

bool TSQLIdentifiersCollection::ContainsSameIdStr(WideStringView sqlText) const {
  TmvOwned<TastTokenIdentifier> token = TastCreate<TastTokenIdentifier>(SQLContext(), sqlText);
  return ContainsSameId(token.get());
}

pugi::xml_node TSQLIdentifiersCollection::GetXMLNode(pugi::xml_node parent, const char* tag) const {
  pugi::xml_node element = parent.append_child(tag);
  for (int i = 0; i < Items.Count(); ++i)
    if (const TastTokenIdentifier* id = Identifier(i)) id->GetXMLNode(element, "item");
  return element;
}

void TSQLIdentifiersCollection::LoadFromXMLNode(pugi::xml_node element) {
  Clear();
  for (pugi::xml_node child : element.children("item")) {
    TmvOwned<TastTokenIdentifier> id = TastCreate<TastTokenIdentifier>(SQLContext());
    if (id->LoadFromXMLNode(child)) Items.Add(std::move(id));
  }
}

}  // namespace mv
