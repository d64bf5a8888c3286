// Layout nodes and nodes that hold a list of children.
//
//   TastNodeSpace           a blank request: Space(Count) on the builder
//   TastNodeNewLine         a line break request
//   TastNodeWithList        an owned list of nodes, with a small language for
//                           composing what it prints (keywords, names, symbols...)
//   TastNodeWithCollection  an owned list of items of one class
#pragma once

#include "tree/AstNode.h"

namespace mv {

class TSQLBuilderItemsListFormat;

class TastNodeSpace : public TastNode {
  MV_AST_NODE(TastNodeSpace);

 public:
  TastNodeSpace(TmvBaseSQLContext* context, int32_t count) : TastNodeSpace(context) { Count = count; }
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastNodeNewLine : public TastNode {
  MV_AST_NODE(TastNodeNewLine);

 public:
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

// Kinds of token a list can compose.
enum class TastListTokenKind : uint8_t { Keyword, Builtin, Identifier, Number, String, Symbol };

// Adds a token of `kind` at `index` (-1: at the end), with a TastNodeSpace of
// spaceCount in front of it when withSpace is set. Returns the token.
TastNode* TastListInsertToken(TastNodeList& list, TmvBaseSQLContext* context, int index, TastListTokenKind kind,
                              WideStringView text, bool withSpace, int spaceCount);
TastNode* TastListInsertNode(TastNodeList& list, TmvBaseSQLContext* context, int index, TmvOwned<TastNode> node,
                             bool withSpace, int spaceCount);
void TastListInsertSpace(TastNodeList& list, TmvBaseSQLContext* context, int index, int count);
void TastListInsertNewLine(TastNodeList& list, TmvBaseSQLContext* context, int index);

// The composing language of a node whose `Items` is a list, in four forms:
// Add (text, withSpace, spaceCount), a short alias of it, a chained form that
// returns the list (no blank in front), and Insert (index, ...).
template <class Self>
class TastListOps {
 public:
  TastNode* AddKeyword(WideStringView text, bool withSpace = false, int spaceCount = 3) { return Add(TastListTokenKind::Keyword, text, withSpace, spaceCount); }
  TastNode* AddBuiltin(WideStringView text, bool withSpace = false, int spaceCount = 3) { return Add(TastListTokenKind::Builtin, text, withSpace, spaceCount); }
  TastNode* AddIdentifier(WideStringView text, bool withSpace = false, int spaceCount = 3) { return Add(TastListTokenKind::Identifier, text, withSpace, spaceCount); }
  TastNode* AddNumber(WideStringView text, bool withSpace = false, int spaceCount = 3) { return Add(TastListTokenKind::Number, text, withSpace, spaceCount); }
  TastNode* AddString(WideStringView text, bool withSpace = false, int spaceCount = 3) { return Add(TastListTokenKind::String, text, withSpace, spaceCount); }
  TastNode* AddSymbol(WideStringView text, bool withSpace = false, int spaceCount = 3) { return Add(TastListTokenKind::Symbol, text, withSpace, spaceCount); }
  TastNode* AddNode(TmvOwned<TastNode> node, bool withSpace = false, int spaceCount = 3) { return TastListInsertNode(List(), Context(), -1, std::move(node), withSpace, spaceCount); }
  void AddSpace(int count = 3) { TastListInsertSpace(List(), Context(), -1, count); }
  void AddNewLine() { TastListInsertNewLine(List(), Context(), -1); }

  TastNode* AK(WideStringView text, bool withSpace = false, int spaceCount = 3) { return AddKeyword(text, withSpace, spaceCount); }
  TastNode* AB(WideStringView text, bool withSpace = false, int spaceCount = 3) { return AddBuiltin(text, withSpace, spaceCount); }
  TastNode* AI(WideStringView text, bool withSpace = false, int spaceCount = 3) { return AddIdentifier(text, withSpace, spaceCount); }
  TastNode* AN(WideStringView text, bool withSpace = false, int spaceCount = 3) { return AddNumber(text, withSpace, spaceCount); }
  TastNode* ASt(WideStringView text, bool withSpace = false, int spaceCount = 3) { return AddString(text, withSpace, spaceCount); }
  TastNode* ASy(WideStringView text, bool withSpace = false, int spaceCount = 3) { return AddSymbol(text, withSpace, spaceCount); }
  void ASp(int count = 3) { AddSpace(count); }
  void ANL() { AddNewLine(); }

  Self& Keyword(WideStringView text) { return Chain(TastListTokenKind::Keyword, text); }
  Self& Builtin(WideStringView text) { return Chain(TastListTokenKind::Builtin, text); }
  Self& Identifier(WideStringView text) { return Chain(TastListTokenKind::Identifier, text); }
  Self& Number(WideStringView text) { return Chain(TastListTokenKind::Number, text); }
  Self& String_(WideStringView text) { return Chain(TastListTokenKind::String, text); }
  Self& Symbol(WideStringView text) { return Chain(TastListTokenKind::Symbol, text); }
  Self& Node(TmvOwned<TastNode> node) {
    TastListInsertNode(List(), Context(), -1, std::move(node), false, 2);
    return static_cast<Self&>(*this);
  }
  Self& Space(int count = 3) {
    AddSpace(count);
    return static_cast<Self&>(*this);
  }
  Self& NewLine() {
    AddNewLine();
    return static_cast<Self&>(*this);
  }

  TastNode* InsertKeyword(int index, WideStringView text, bool withSpace = false, int spaceCount = 3) { return Insert(index, TastListTokenKind::Keyword, text, withSpace, spaceCount); }
  TastNode* InsertIdentifier(int index, WideStringView text, bool withSpace = false, int spaceCount = 3) { return Insert(index, TastListTokenKind::Identifier, text, withSpace, spaceCount); }
  TastNode* InsertNumber(int index, WideStringView text, bool withSpace = false, int spaceCount = 3) { return Insert(index, TastListTokenKind::Number, text, withSpace, spaceCount); }
  TastNode* InsertString(int index, WideStringView text, bool withSpace = false, int spaceCount = 3) { return Insert(index, TastListTokenKind::String, text, withSpace, spaceCount); }
  TastNode* InsertSymbol(int index, WideStringView text, bool withSpace = false, int spaceCount = 3) { return Insert(index, TastListTokenKind::Symbol, text, withSpace, spaceCount); }
  TastNode* InsertNode(int index, TmvOwned<TastNode> node, bool withSpace = false, int spaceCount = 3) { return TastListInsertNode(List(), Context(), index, std::move(node), withSpace, spaceCount); }
  void InsertSpace(int index, int count = 3) { TastListInsertSpace(List(), Context(), index, count); }
  void InsertNewLine(int index) { TastListInsertNewLine(List(), Context(), index); }

 private:
  TastNodeList& List() { return static_cast<Self&>(*this).Items; }
  TmvBaseSQLContext* Context() { return static_cast<Self&>(*this).SQLContext(); }
  TastNode* Add(TastListTokenKind kind, WideStringView text, bool withSpace, int spaceCount) {
    return TastListInsertToken(List(), Context(), -1, kind, text, withSpace, spaceCount);
  }
  TastNode* Insert(int index, TastListTokenKind kind, WideStringView text, bool withSpace, int spaceCount) {
    return TastListInsertToken(List(), Context(), index, kind, text, withSpace, spaceCount);
  }
  Self& Chain(TastListTokenKind kind, WideStringView text) {
    Add(kind, text, false, 2);
    return static_cast<Self&>(*this);
  }
};

// Prints `items` one after the other, with `separator` (printed by BuildSQL) between them.
void TastBuildList(const TastNodeList& items, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                   TastNode* separator);
// Prints `items` under a list format: after each item but the last, a line
// break if NewLineBeforeComma, the separator symbol if not empty, then a line
// break or a blank of priority 1 as NewLineAfterItem says. Without a list
// format: the separator and a blank of priority 2.
void TastBuildSQLList(const TastNodeList& items, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                      WideStringView separator, const TSQLBuilderItemsListFormat* listFormat);
// Prints `items` joined by "," and a blank of priority 2.
void TastBuildCommaList(const TastNodeList& items, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format);

class TastNodeWithList : public TastNode, public TastListOps<TastNodeWithList> {
  MV_AST_NODE(TastNodeWithList);

 public:
  int GetCount() const { return Items.Count(); }
  TastNode* GetItems(int index) const { return Items.Item(index); }
  void SetItems(int index, TmvOwned<TastNode> node) { Items.Set(index, std::move(node)); }
  TastNode* Add(TmvOwned<TastNode> node) {
    TastNode* raw = node.get();
    Items.Add(std::move(node));
    return raw;
  }
  void Insert(int index, TmvOwned<TastNode> node) { Items.Insert(index, std::move(node)); }
  void Delete(int index) { Items.Delete(index); }
  int Remove(const TastNode* node) { return Items.Remove(node); }
  void Clear() { Items.Clear(); }
  int IndexOf(const TastNode* node) const { return Items.IndexOf(node); }
  TmvOwned<TastNode> Extract(const TastNode* node) { return Items.Extract(node); }
  TmvOwned<TastNode> Extract(int index) { return Items.Extract(index); }

  void BuildList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, TastNode* separator) {
    TastBuildList(Items, builder, format, separator);
  }
  void BuildSQLList(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format, WideStringView separator,
                    const TSQLBuilderItemsListFormat* listFormat) {
    TastBuildSQLList(Items, builder, format, separator, listFormat);
  }

  // The items, one after the other.
  void BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) override;
};

class TastNodeWithCollection : public TastNode {
  MV_AST_NODE(TastNodeWithCollection);

 public:
  // A new item of ItemClass at the end (or at index), for the caller to fill.
  TastNode* Add();
  TastNode* Insert(int index);
  // Rebuilds each item as one of the new class, assigned from the old one.
  void SetItemClass(TastNodeClassRef itemClass);
  int GetCount() const { return Items.Count(); }
  TastNode* GetItems(int index) const { return Items.Item(index); }
  void Delete(int index) { Items.Delete(index); }
  int Remove(const TastNode* node) { return Items.Remove(node); }
  void Clear() { Items.Clear(); }
  int IndexOf(const TastNode* node) const { return Items.IndexOf(node); }
  TmvOwned<TastNode> Extract(int index) { return Items.Extract(index); }
};

}  // namespace mv
