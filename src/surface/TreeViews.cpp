#include "surface/TreeViews.h"

#include <QHeaderView>
#include <map>
#include <utility>

#include "component/QueryBuilder.h"
#include "component/TreeNodes.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "support/Exceptions.h"
#include "surface/DragData.h"
#include "surface/QtText.h"
#include "surface/SurfaceMessages.h"

namespace mv {

namespace {

void AddItems(QTreeWidget& tree, QTreeWidgetItem* parent, const TmvTreeNodes& nodes) {
  for (const auto& node : nodes) {
    auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(&tree);
    item->setText(0, ToQString(node->Text));
    item->setData(0, Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(node->Data)));
    AddItems(tree, item, node->Children);
    item->setExpanded(node->Expanded);
  }
}

void FillTree(QTreeWidget& tree, const TmvTreeNodes& nodes) {
  tree.clear();
  AddItems(tree, nullptr, nodes);
}

template <class Visit>
void ForEachItem(QTreeWidgetItem* item, const Visit& visit) {
  visit(item);
  for (int i = 0; i < item->childCount(); ++i) ForEachItem(item->child(i), visit);
}

template <class Visit>
void ForEachItem(QTreeWidget& tree, const Visit& visit) {
  for (int i = 0; i < tree.topLevelItemCount(); ++i) ForEachItem(tree.topLevelItem(i), visit);
}

}  // namespace

TmvObject* TreeItemObject(const QTreeWidgetItem* item) {
  return item ? reinterpret_cast<TmvObject*>(item->data(0, Qt::UserRole).value<quintptr>()) : nullptr;
}

// --- TmvTreeViewMetadata ---

TmvTreeViewMetadata::TmvTreeViewMetadata(TmvQueryBuilder* builder, QWidget* parent)
    : QTreeWidget(parent), builder_(builder) {
  setObjectName(QStringLiteral("MetadataTree"));
  setHeaderHidden(true);
  setDragEnabled(true);
  setDragDropMode(QAbstractItemView::DragOnly);
  connect(this, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
    auto* object = TmvCast<TmvMetadataObject>(TreeItemObject(item));
    if (!object || item->childCount() > 0) return;
    try {
      AddMetadataObject(*builder_, nullptr, object, {});
    } catch (const Exception&) {
      // The model refused the object (the dialect or the host): nothing added.
    }
  });
  builder_->AsyncLoadingStartedNotification.AddHandler(TmvHandlerId(this, 0),
                                                       [this](TmvObject*) { NotifyAsyncLoadingStarted(); });
  builder_->AsyncLoadingCompletedNotification.AddHandler(TmvHandlerId(this, 1),
                                                         [this](TmvObject*) { NotifyAsyncLoadingCompleted(); });
  builder_->MetadataLoadedNotification.AddHandler(TmvHandlerId(this, 2), [this](TmvObject*) { ReloadNodes(); });
}

TmvTreeViewMetadata::~TmvTreeViewMetadata() {
  builder_->AsyncLoadingStartedNotification.RemoveHandler(TmvHandlerId(this, 0));
  builder_->AsyncLoadingCompletedNotification.RemoveHandler(TmvHandlerId(this, 1));
  builder_->MetadataLoadedNotification.RemoveHandler(TmvHandlerId(this, 2));
}

void TmvTreeViewMetadata::NotifyAsyncLoadingStarted() {
  if (topLevelItemCount() > 0 || loadingNode_) return;
  loadingNode_ = new QTreeWidgetItem(this, {SurfaceText(u"mvQBMetadataTreeLoading")});
}

void TmvTreeViewMetadata::NotifyAsyncLoadingCompleted() {
  if (!loadingNode_) return;
  clear();
  loadingNode_ = nullptr;
}

void TmvTreeViewMetadata::ReloadNodes() {
  loadingNode_ = nullptr;
  FillTree(*this, BuildMetadataTree(*builder_));
  if (topLevelItemCount() > 0) setCurrentItem(topLevelItem(0));
}

QMimeData* TmvTreeViewMetadata::mimeData(const QList<QTreeWidgetItem*>& items) const {
  auto* object = items.isEmpty() ? nullptr : TmvCast<TmvMetadataObject>(TreeItemObject(items.first()));
  return object ? NewMetadataObjectDrag(object) : nullptr;
}

// --- TmvTreeViewQueryStructure ---

TmvTreeViewQueryStructure::TmvTreeViewQueryStructure(TmvQueryBuilder* builder, QWidget* parent)
    : QTreeWidget(parent), builder_(builder) {
  setObjectName(QStringLiteral("QueryStructureTree"));
  setHeaderHidden(true);
  connect(this, &QTreeWidget::itemSelectionChanged, this, &TmvTreeViewQueryStructure::SelectionChanged);
}

void TmvTreeViewQueryStructure::UpdateQueryStructure() {
  ++updating_;
  // What was open and selected, by object (the fields node apart from its
  // sub-query's other nodes of the same object).
  const QString fieldsText = ToQString(builder_->TreeOptions().FieldsNodeText());
  std::map<std::pair<TmvObject*, bool>, std::pair<bool, bool>> state;
  ForEachItem(*this, [&](QTreeWidgetItem* item) {
    state.emplace(std::make_pair(TreeItemObject(item), item->text(0) == fieldsText),
                  std::make_pair(item->childCount() == 0 || item->isExpanded(), item->isSelected()));
  });
  const bool rebuilt = topLevelItemCount() > 0;
  FillTree(*this, BuildQueryStructureTree(*builder_));
  if (rebuilt)
    ForEachItem(*this, [&](QTreeWidgetItem* item) {
      auto found = state.find({TreeItemObject(item), item->text(0) == fieldsText});
      if (found == state.end()) return;
      item->setExpanded(found->second.first);
      if (found->second.second) setCurrentItem(item);
    });
  if (topLevelItemCount() > 0) topLevelItem(0)->setExpanded(true);
  --updating_;
}

void TmvTreeViewQueryStructure::SelectionChanged() {
  if (updating_) return;
  TmvObject* object = TreeItemObject(currentItem());
  // The sub-query and SELECT the node belongs to become the active ones.
  TmvUnionSubQuery* member = TmvCast<TmvUnionSubQuery>(object);
  if (auto* datasource = TmvCast<TmvDatasource>(object)) member = datasource->UnionSubQuery();
  if (auto* row = TmvCast<TmvSelectItem>(object)) member = row->UnionSubQuery();
  if (auto* list = TmvCast<TmvSelectList>(object)) member = list->UnionSubQuery();
  TmvSubQuery* subQuery = member ? member->RootQuery() : TmvCast<TmvSubQuery>(object);
  if (!subQuery) return;
  builder_->SetActiveSubQuery(subQuery);
  if (member) subQuery->SetActiveUnionSubquery(member);
}

}  // namespace mv
