// The metadata tree and the query structure tree on Qt tree widgets. Both
// show the nodes the query builder's tree builders make; an item's data is
// the node's object.
#pragma once

#include <QTreeWidget>

namespace mv {

class TmvObject;
class TmvQueryBuilder;

// The object an item shows (null for a group item).
TmvObject* TreeItemObject(const QTreeWidgetItem* item);

// The container's objects: a double click on an object adds it to the
// active SELECT, and an object dragged onto a work area lands there. While
// the builder loads metadata in the background an empty tree shows a
// loading node; the tree fills when the objects have come.
class TmvTreeViewMetadata : public QTreeWidget {
  Q_OBJECT
 public:
  TmvTreeViewMetadata(TmvQueryBuilder* builder, QWidget* parent = nullptr);
  ~TmvTreeViewMetadata() override;
  // Builds the tree afresh from the container.
  void ReloadNodes();
  void NotifyAsyncLoadingStarted();
  void NotifyAsyncLoadingCompleted();

 protected:
  QStringList mimeTypes() const override { return {}; }
  QMimeData* mimeData(const QList<QTreeWidgetItem*>& items) const override;

 private:
  TmvQueryBuilder* builder_;
  QTreeWidgetItem* loadingNode_ = nullptr;
};

// The query as sub-queries, unions, fields and datasources; selecting a
// node makes its sub-query and SELECT the active ones.
class TmvTreeViewQueryStructure : public QTreeWidget {
  Q_OBJECT
 public:
  TmvTreeViewQueryStructure(TmvQueryBuilder* builder, QWidget* parent = nullptr);
  // Builds the tree afresh, keeping what was open and selected for the
  // objects that are still there.
  void UpdateQueryStructure();

 private:
  void SelectionChanged();
  TmvQueryBuilder* builder_;
  int updating_ = 0;
};

}  // namespace mv
