// The leaves of the tree: one node per word, name, number, string or symbol
// of a statement, each printing through the matching builder write. An
// identifier keeps its text without quotes and knows whether it had them and
// whether it can stand without them in the dialect; printing decides the
// quotes from those two facts and the builder's quoting mode.
#pragma once

#include "sqlgen/SQLOptions.h"
#include "tree/NodeLists.h"

namespace pugi {
class xml_node;
}

namespace mv {

class TastToken : public TastNode {
  MV_AST_NODE(TastToken);

 public:
  TastToken(TmvBaseSQLContext* context, WideStringView text) : TastToken(context) { Token = WideString(text); }
  virtual void SetToken(WideStringView text) { Token = WideString(text); }
  bool IsEmpty() const { return Token.empty(); }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastTokenSymbol : public TastToken {
  MV_AST_NODE(TastTokenSymbol);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastTokenKeyword : public TastToken {
  MV_AST_NODE(TastTokenKeyword);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastTokenBuiltin : public TastToken {
  MV_AST_NODE(TastTokenBuiltin);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastTokenNumber : public TastToken {
  MV_AST_NODE(TastTokenNumber);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastTokenString : public TastToken {
  MV_AST_NODE(TastTokenString);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// A Unicode string literal with an optional escape character clause.
class TastTokenUnicodeString : public TastTokenString {
  MV_AST_NODE(TastTokenUnicodeString);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastTokenIdentifier : public TastToken {
  MV_AST_NODE(TastTokenIdentifier);

 public:
  // Takes the text as it stands (without quotes), and whether it had quotes.
  TastTokenIdentifier(TmvBaseSQLContext* context, WideStringView text, bool quoted);
  // From SQL text, which may carry the dialect's quotes (SetTokenStr).
  TastTokenIdentifier(TmvBaseSQLContext* context, WideStringView sqlText);

  // Also recomputes ValidIdentifier.
  void SetToken(WideStringView text) override;
  // From SQL text: empty clears the token; otherwise the text is read as an
  // identifier of the dialect, quoted where it has to be
  // (ParseIdentifierQuoteIfNeed), so quotes in it are understood.
  void SetTokenStr(WideStringView sqlText);
  void Clear();
  // Assign (by hand): within one context the validity is copied; from another it is recomputed.
  void SyntaxProviderChanged() override;

  // Writes the text, with quotes where `quotation` and the dialect want them.
  void BuildIdentifier(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, TmvIdentQuotation quotation);
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;

  // An element `tag` with the attributes "name" (the text) and "case_sens"
  // (whether it is quoted), appended to `parent`.
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* tag) const;
  // Reads the same; false (and nothing changed) when "name" is missing.
  bool LoadFromXMLNode(pugi::xml_node element);

 private:
  void RecalcValidIdentifier();
};

using TastTokenRefs = std::vector<const TastToken*>;

// A list whose items are tokens.
class TastTokenList : public TastNodeWithList {
  MV_AST_NODE(TastTokenList);

 public:
  TastToken* Token(int index) const { return TmvCast<TastToken>(Items.Item(index)); }
  TastToken* Add(TmvOwned<TastToken> token);
  void Insert(int index, TmvOwned<TastToken> token);
  TmvOwned<TastToken> ExtractToken(const TastToken* token);
  TmvOwned<TastToken> ExtractToken(int index);
  // The first token equal to text without regard to case; -1 if none.
  int FindByString(WideStringView text) const;
  // The first token that the context's CompareTokens finds equal; -1 if none.
  int FindByToken(const TastToken* token) const;
};

// A list whose items are identifiers.
class TastIdentifiersList : public TastTokenList {
  MV_AST_NODE(TastIdentifiersList);

 public:
  TastTokenIdentifier* Identifier(int index) const { return TmvCast<TastTokenIdentifier>(Items.Item(index)); }
  // The first identifier that the context's CompareIdentifiers finds equal; -1 if none.
  int FindByIdToken(const TastTokenIdentifier* token) const;
};

// A collection of identifiers (column lists of aliases and with items). Prints nothing.
class TSQLIdentifiersCollection : public TastNodeWithCollection {
  MV_AST_NODE(TSQLIdentifiersCollection);

 public:
  void AfterConstruction() override;
  TastTokenIdentifier* Identifier(int index) const { return TmvCast<TastTokenIdentifier>(Items.Item(index)); }
  // A new unquoted identifier of that text.
  TastTokenIdentifier* AddIdentifier(WideStringView text);
  TastTokenIdentifier* InsertIdentifier(int index, WideStringView text);
  bool ContainsSameId(const TastTokenIdentifier* token) const { return IndexOf(token) >= 0; }
  // The same for an identifier given as SQL text.
  bool ContainsSameIdStr(WideStringView sqlText) const;
  // By IsIdentifiersEqual; -1 if none.
  int IndexOf(const TastTokenIdentifier* token) const;
  // An element `tag` with one "item" token element per identifier.
  pugi::xml_node GetXMLNode(pugi::xml_node parent, const char* tag) const;
  // Reads "item" children; other children are skipped.
  void LoadFromXMLNode(pugi::xml_node element);
};

// begin + name + end, with every occurrence of `end` in the name doubled.
WideString CreateQuotedIdentifier(WideStringView name, WideStringView quoteBegin, WideStringView quoteEnd);

// Text of a boolean as the XML files write it, and the reading that accepts
// 1/0, -1 and true/false in any case.
const char* XmlBoolText(bool value);
bool XmlBoolValue(const char* text, bool& value);

}  // namespace mv
