#include "component/Layout.h"

#include <pugixml.hpp>

#include <algorithm>
#include <climits>
#include <sstream>
#include <string>

#include "component/QueryBuilder.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataXml.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "sqlgen/SQLBuilder.h"
#include "tree/SelectStatement.h"
#include "support/Exceptions.h"
#include "support/WideFormat.h"

namespace mv {

// --- The snapshot ---

namespace {

bool HasOwnItem(const TmvQueryBuilderControlOwner* object) {
  return TmvCast<TmvDatasource>(object) || TmvCast<TmvUnionSubQuery>(object) || TmvCast<TmvSubQuery>(object) ||
         TmvCast<TmvSelectList>(object);
}

TmvLayout::TmvItems ChildItems(const TmvLayoutItem& item) {
  TmvLayout::TmvItems items;
  items.reserve(item.Children.size());
  for (const auto& child : item.Children) items.push_back(child.get());
  return items;
}

}  // namespace

TmvLayoutItemType TmvLayout::GetItemType(const TmvQueryBuilderControlOwner* object) {
  if (TmvCast<TmvDatasource>(object)) return mvliDatasource;
  if (TmvCast<TmvUnionSubQuery>(object)) return mvliUnionSubQuery;
  if (TmvCast<TmvSelectList>(object)) return mvliSelectList;
  return mvliSubQuery;
}

void TmvLayout::CollectLayoutChildren(const TmvQueryBuilderControlOwner* object, TmvObjects& list) {
  for (int i = 0; i < object->GetChildCount(); ++i) {
    TmvQueryBuilderControlOwner* child = object->GetChild(i);
    if (HasOwnItem(child))
      list.push_back(child);
    else
      CollectLayoutChildren(child, list);
  }
}

std::unique_ptr<TmvLayoutItem> TmvLayout::GetLayout(TmvQueryBuilderControlOwner* object) {
  auto item = std::make_unique<TmvLayoutItem>();
  item->ItemType = GetItemType(object);
  switch (item->ItemType) {
    case mvliDatasource: {
      auto* datasource = static_cast<TmvDatasource*>(object);
      item->Top = datasource->Top();
      item->Left = datasource->Left();
      item->Height = datasource->Height();
      item->Width = datasource->Width();
      item->Name = datasource->GetNameInQuery();
      break;
    }
    case mvliSelectList: {
      auto* list = static_cast<TmvSelectList*>(object);
      if (list->GetControls(0)) {
        item->GeneralColumnsWidth = list->GeneralColumnsWidth();
        item->ConditionsColumnsWidth = list->ConditionsColumnsWidth();
      }
      break;
    }
    case mvliUnionSubQuery: {
      auto* member = static_cast<TmvUnionSubQuery*>(object);
      if (member->GetControls(0))
        item->Ratio = member->Ratio();
      else
        item->Height = -1;
      break;
    }
    case mvliSubQuery:
      break;
  }
  TmvObjects children;
  CollectLayoutChildren(object, children);
  for (TmvQueryBuilderControlOwner* child : children) item->Children.push_back(GetLayout(child));
  return item;
}

int TmvLayout::CompareLayout(TmvQueryBuilderControlOwner* object, const TmvLayoutItem& item) {
  if (GetItemType(object) != item.ItemType) return -1000;
  int score = 0;
  if (item.ItemType == mvliDatasource &&
      !WideSameText(static_cast<TmvDatasource*>(object)->GetNameInQuery(), item.Name))
    --score;
  score -= static_cast<int>(item.Children.size());
  TmvObjects children;
  CollectLayoutChildren(object, children);
  if (!children.empty()) {
    const TmvItems order = CalcLayoutOrder(children, ChildItems(item));
    score += static_cast<int>(std::count_if(order.begin(), order.end(), [](const TmvLayoutItem* i) { return i; }));
  }
  return score;
}

TmvLayout::TmvItems TmvLayout::CalcLayoutOrder(const TmvObjects& objects, const TmvItems& items) {
  TmvItems result(objects.size(), nullptr);
  // The items not yet taken; a taken entry is emptied and packed away after a pass.
  TmvItems waiting = items;
  std::erase(waiting, nullptr);
  auto pack = [&waiting] { std::erase(waiting, nullptr); };
  // Equal places first.
  for (size_t i = 0; i < waiting.size() && i < objects.size(); ++i)
    if (CompareLayout(objects[i], *waiting[i]) == 0) {
      result[i] = waiting[i];
      waiting[i] = nullptr;
    }
  pack();
  // Perfect matches anywhere: each is taken, so the last of several stays.
  if (!waiting.empty()) {
    for (size_t i = 0; i < objects.size(); ++i) {
      if (result[i]) continue;
      for (const TmvLayoutItem*& entry : waiting)
        if (entry && CompareLayout(objects[i], *entry) == 0) {
          result[i] = entry;
          entry = nullptr;
        }
    }
    pack();
  }
  // The best match left, the earliest on a tie; never one of another kind.
  for (size_t i = 0; i < objects.size() && !waiting.empty(); ++i) {
    if (result[i]) continue;
    size_t best = 0;
    int bestScore = INT_MIN;
    for (size_t j = 0; j < waiting.size(); ++j)
      if (int score = CompareLayout(objects[i], *waiting[j]); score > bestScore) {
        bestScore = score;
        best = j;
      }
    if (bestScore > -1000) {
      result[i] = waiting[best];
      waiting.erase(waiting.begin() + static_cast<std::ptrdiff_t>(best));
    }
  }
  return result;
}

void TmvLayout::SetLayout(TmvQueryBuilderControlOwner* object, const TmvLayoutItem& item) {
  if (auto* datasource = TmvCast<TmvDatasource>(object); datasource && item.ItemType == mvliDatasource) {
    // A box at a zero coordinate finds a new place when its control is made.
    if (item.Top != 0 && item.Left != 0 && item.Height != 0 && item.Width != 0) {
      datasource->SetTop(item.Top);
      datasource->SetLeft(item.Left);
      datasource->SetHeight(item.Height);
      datasource->SetWidth(item.Width);
    }
  } else if (auto* list = TmvCast<TmvSelectList>(object); list && item.ItemType == mvliSelectList) {
    if (list->GetControls(0)) {
      if (!item.GeneralColumnsWidth.empty()) list->SetGeneralColumnsWidth(item.GeneralColumnsWidth);
      list->SetConditionsColumnsWidth(item.ConditionsColumnsWidth);
    }
  } else if (auto* member = TmvCast<TmvUnionSubQuery>(object); member && item.ItemType == mvliUnionSubQuery) {
    if (item.Height != -1 && member->GetControls(0)) member->SetRatio(item.Ratio);
  }
  TmvObjects children;
  CollectLayoutChildren(object, children);
  const TmvItems order = CalcLayoutOrder(children, ChildItems(item));
  for (size_t i = 0; i < children.size(); ++i)
    if (order[i]) SetLayout(children[i], *order[i]);
}

// --- The document ---

std::unique_ptr<TSQLBuilderFast> CreateLayoutBuilder(TmvBaseSQLContext* context) {
  auto builder = std::make_unique<TSQLBuilderFast>();
  const TSQLBuilderFast& server = context->SQLBuilderExpressionForServer();
  builder->Assign(server);
  builder->SetOuterKeywordInLinks(server.OuterKeywordInLinks());
  builder->SetInnerKeywordInLinks(server.InnerKeywordInLinks());
  builder->SetAsKeywordInExpressionAlias(server.AsKeywordInExpressionAlias());
  builder->SetAsKeywordInObjectAlias(server.AsKeywordInObjectAlias());
  builder->SetExpandVirtualFields(false);
  builder->SetExpandVirtualObjects(false);
  return builder;
}

namespace {

void SetSqlAttribute(pugi::xml_node element, TmvQueryBuilderControlOwner* object, TSQLBuilder& builder) {
  element.append_attribute("SQL").set_value(UTF8Encode(object->GetResultSQL(builder)).c_str());
}

}  // namespace

int32_t LayoutIntAttribute(pugi::xml_node element, const char* name) {
  const pugi::xml_attribute attribute = element.attribute(name);
  int value = 0;
  if (!attribute)
    throw EConvertError(WideFormat(u"Layout XML, element <%s>: attribute \"%s\" is missing",
                                   {XMLElementPath(element), UTF8Decode(name)}));
  const WideString text = UTF8Decode(attribute.value());
  if (!TryStrToInt(text, value))
    throw EConvertError(WideFormat(u"Layout XML, element <%s>: attribute \"%s\": '%s' is not a valid integer value",
                                   {XMLElementPath(element), UTF8Decode(name), text}));
  return value;
}

void SaveLayout(TmvSubQuery* subQuery, pugi::xml_node parent, TSQLBuilder& builder) {
  pugi::xml_node element = CreateNodeParent(parent, "SubQuery");
  SetSqlAttribute(element, subQuery, builder);
  // As many SELECTs as the root group has members.
  const std::vector<TmvUnionSubQuery*>& members = subQuery->UnionSubQueries();
  for (int i = 0; i < subQuery->Count() && i < static_cast<int>(members.size()); ++i)
    SaveLayout(members[i], element, builder);
}

void SaveLayout(TmvUnionSubQuery* member, pugi::xml_node parent, TSQLBuilder& builder) {
  SaveLayout(member->Datasources(), CreateNodeParent(parent, "UnionSubQuery"), builder);
}

void SaveLayout(TmvDatasourceBase* datasource, pugi::xml_node parent, TSQLBuilder& builder) {
  if (auto* group = TmvCast<TmvDatasourceGroup>(datasource)) {
    for (int i = 0; i < group->Count(); ++i) SaveLayout(group->Items(i), parent, builder);
    return;
  }
  auto* box = TmvCast<TmvDatasource>(datasource);
  if (!box) return;
  pugi::xml_node element = CreateNodeParent(parent, "DataSource");
  SetSqlAttribute(element, box, builder);
  element.append_attribute("X").set_value(box->Left());
  element.append_attribute("Y").set_value(box->Top());
  element.append_attribute("Width").set_value(box->Width());
  element.append_attribute("Height").set_value(box->GetControls(0) && box->Collapsed() ? 0 : box->Height());
}

void LoadLayout(TmvSubQuery* subQuery, pugi::xml_node element, TSQLBuilder& builder) {
  const std::string sql = UTF8Encode(subQuery->GetResultSQL(builder));
  pugi::xml_node own = FindChildByNameAndAttribute("SubQuery", "SQL", sql.c_str(), element);
  if (!own) return;
  const std::vector<TmvUnionSubQuery*> members = subQuery->UnionSubQueries();
  pugi::xml_node child = own.first_child();
  for (int i = 0; child && i < subQuery->Count() && i < static_cast<int>(members.size());
       ++i, child = child.next_sibling())
    if (child.type() == pugi::node_element) LoadLayout(members[i], child, builder);
}

void LoadLayout(TmvUnionSubQuery* member, pugi::xml_node element, TSQLBuilder& builder) {
  LoadLayout(member->Datasources(), element, builder);
}

void LoadLayout(TmvDatasourceBase* datasource, pugi::xml_node element, TSQLBuilder& builder) {
  if (auto* group = TmvCast<TmvDatasourceGroup>(datasource)) {
    for (int i = 0; i < group->Count(); ++i) LoadLayout(group->Items(i), element, builder);
    return;
  }
  auto* box = TmvCast<TmvDatasource>(datasource);
  if (!box) return;
  const std::string sql = UTF8Encode(box->GetResultSQL(builder));
  pugi::xml_node own = FindChildByNameAndAttribute("DataSource", "SQL", sql.c_str(), element);
  if (!own) return;
  const int32_t left = LayoutIntAttribute(own, "X");
  const int32_t top = LayoutIntAttribute(own, "Y");
  const int32_t width = LayoutIntAttribute(own, "Width");
  const int32_t height = LayoutIntAttribute(own, "Height");
  box->SetLeft(left);
  box->SetTop(top);
  box->SetWidth(width);
  if (height == 0 && box->GetControls(0))
    box->Collapse();
  else
    box->SetHeight(height);
}

void CheckLayoutNumbers(pugi::xml_node subQueries) {
  for (pugi::xml_node subQuery : subQueries.children())
    for (pugi::xml_node member : subQuery.children())
      for (pugi::xml_node box : member.children("DataSource"))
        for (const char* name : {"X", "Y", "Width", "Height"}) LayoutIntAttribute(box, name);
}

// --- The query builder's document ---

namespace {

// Line ends and blanks in texts come back as they were written.
constexpr unsigned kLayoutParseOptions = pugi::parse_default & ~(pugi::parse_eol | pugi::parse_wconv_attribute);

}  // namespace

WideString TmvQueryBuilder::GetLayout() {
  pugi::xml_document document;
  pugi::xml_node root = document.append_child("MorvaneLayout");
  std::unique_ptr<TSQLBuilderFast> builder = CreateLayoutBuilder(SQLContext());
  // Sleeping text is kept as it is, as GetSql gives it.
  WideString text = SleepModeText();
  if (!SleepMode())
    if (TSQLSelectStatement* tree = GetResultQueryAST()) text = tree->SimpleSQL(*builder);
  root.append_child("SQL").append_child(pugi::node_pcdata).set_value(UTF8Encode(text).c_str());
  pugi::xml_node list = root.append_child("SubQueries");
  for (TmvSubQuery* subQuery : std::vector<TmvSubQuery*>(SubQueries())) SaveLayout(subQuery, list, *builder);
  std::ostringstream out;
  document.save(out, "  ", pugi::format_indent | pugi::format_no_declaration, pugi::encoding_utf8);
  return UTF8Decode(out.str());
}

void TmvQueryBuilder::SetLayout(const WideString& text) {
  pugi::xml_document document;
  const std::string utf8 = UTF8Encode(text);
  if (!document.load_buffer(utf8.data(), utf8.size(), kLayoutParseOptions, pugi::encoding_utf8)) return;
  pugi::xml_node root = document.document_element();
  if (!root) return;
  pugi::xml_node subQueries = FindChildElByName("SubQueries", root);
  CheckLayoutNumbers(subQueries);
  if (pugi::xml_node sql = FindChildElByName("SQL", root); sql && XMLNodeHasText(sql)) SetSql(XMLNodeText(sql));
  if (!subQueries) return;
  std::unique_ptr<TSQLBuilderFast> builder = CreateLayoutBuilder(SQLContext());
  for (TmvSubQuery* subQuery : std::vector<TmvSubQuery*>(SubQueries())) LoadLayout(subQuery, subQueries, *builder);
}

// --- The snapshot around a reload ---

void TmvQueryBuilder::BeforeReload(TmvQueryBuilderControlOwner* owner) {
  std::unique_ptr<TmvLayoutItem> item;
  if (owner && owner->HasControls() && !IsDestroying()) item = TmvLayout::GetLayout(owner);
  reloadSnapshots_.emplace_back(owner, std::move(item));
}

void TmvQueryBuilder::AfterReload(TmvQueryBuilderControlOwner* owner, bool loaded) {
  auto it = std::find_if(reloadSnapshots_.rbegin(), reloadSnapshots_.rend(),
                         [owner](const auto& entry) { return entry.first == owner; });
  if (it == reloadSnapshots_.rend()) return;
  std::unique_ptr<TmvLayoutItem> item = std::move(it->second);
  // Snapshots of reloads inside it that failed go with it.
  reloadSnapshots_.erase(std::prev(it.base()), reloadSnapshots_.end());
  if (loaded && item && owner->IsAlive() && !IsDestroying()) TmvLayout::SetLayout(owner, *item);
}

}  // namespace mv
