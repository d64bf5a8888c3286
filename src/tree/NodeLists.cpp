#include "tree/NodeLists.h"

#include "sqlgen/SQLBuilder.h"
#include "tree/Tokens.h"

namespace mv {

void TastNodeSpace::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.Space(Count); }

void TastNodeNewLine::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat&) { builder.NewLine(); }

namespace {

TmvOwned<TastNode> MakeToken(TmvBaseSQLContext* context, TastListTokenKind kind, WideStringView text) {
  switch (kind) {
    case TastListTokenKind::Keyword: return TastCreate<TastTokenKeyword>(context, text);
    case TastListTokenKind::Builtin: return TastCreate<TastTokenBuiltin>(context, text);
    case TastListTokenKind::Identifier: return TastCreate<TastTokenIdentifier>(context, text, false);
    case TastListTokenKind::Number: return TastCreate<TastTokenNumber>(context, text);
    case TastListTokenKind::String: return TastCreate<TastTokenString>(context, text);
    case TastListTokenKind::Symbol: return TastCreate<TastTokenSymbol>(context, text);
  }
  return nullptr;
}

int EndIndex(const TastNodeList& list, int index) { return index < 0 ? list.Count() : index; }

}  // namespace

TastNode* TastListInsertNode(TastNodeList& list, TmvBaseSQLContext* context, int index, TmvOwned<TastNode> node,
                             bool withSpace, int spaceCount) {
  index = EndIndex(list, index);
  if (withSpace) list.Insert(index++, TastCreate<TastNodeSpace>(context, spaceCount));
  TastNode* raw = node.get();
  list.Insert(index, std::move(node));
  return raw;
}

TastNode* TastListInsertToken(TastNodeList& list, TmvBaseSQLContext* context, int index, TastListTokenKind kind,
                              WideStringView text, bool withSpace, int spaceCount) {
  return TastListInsertNode(list, context, index, MakeToken(context, kind, text), withSpace, spaceCount);
}

void TastListInsertSpace(TastNodeList& list, TmvBaseSQLContext* context, int index, int count) {
  list.Insert(EndIndex(list, index), TastCreate<TastNodeSpace>(context, count));
}

void TastListInsertNewLine(TastNodeList& list, TmvBaseSQLContext* context, int index) {
  list.Insert(EndIndex(list, index), TastCreate<TastNodeNewLine>(context));
}

void TastBuildList(const TastNodeList& items, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                   TastNode* separator) {
  for (int i = 0; i < items.Count(); ++i) {
    if (i > 0 && separator) separator->BuildSQL(builder, format);
    items.Item(i)->BuildSQL(builder, format);
  }
}

void TastBuildSQLList(const TastNodeList& items, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format,
                      WideStringView separator, const TSQLBuilderItemsListFormat* listFormat) {
  for (int i = 0; i < items.Count(); ++i) {
    items.Item(i)->BuildSQL(builder, format);
    if (i + 1 == items.Count()) break;
    if (listFormat && listFormat->NewLineBeforeComma()) builder.NewLine();
    if (!separator.empty()) builder.WriteSymbol(separator);
    if (listFormat)
      builder.NewLineOrSpace(listFormat->NewLineAfterItem(), 1);
    else
      builder.Space(2);
  }
}

void TastBuildCommaList(const TastNodeList& items, TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TastBuildSQLList(items, builder, format, u",", nullptr);
}

void TastNodeWithList::BuildSQLDirect(TSQLBuilder& builder, const TSQLBuilderSelectFormat& format) {
  TastBuildList(Items, builder, format, nullptr);
}

// --- TastNodeWithCollection ---

TastNode* TastNodeWithCollection::Add() { return Insert(Items.Count()); }

TastNode* TastNodeWithCollection::Insert(int index) {
  if (!ItemClass) return nullptr;
  TmvOwned<TastNode> item = TastCreateOfClass<TastNode>(*ItemClass, SQLContext());
  TastNode* raw = item.get();
  if (raw) Items.Insert(index, std::move(item));
  return raw;
}

void TastNodeWithCollection::SetItemClass(TastNodeClassRef itemClass) {
  if (itemClass == ItemClass) return;
  ItemClass = itemClass;
  if (!itemClass) return;
  for (int i = 0; i < Items.Count(); ++i) {
    TmvOwned<TastNode> item = TastCreateOfClass<TastNode>(*itemClass, SQLContext());
    if (!item) continue;
    item->Assign(*Items.Item(i));
    Items.Set(i, std::move(item));
  }
}

}  // namespace mv
