// The page of one SELECT: the work area with the datasource boxes and the
// links between them above, the select list grid below, split by a bar
// whose place is the SELECT's ratio.
#pragma once

#include <QScrollArea>
#include <QSplitter>
#include <memory>
#include <vector>

#include "model/ModelControls.h"

class QMimeData;

namespace mv {

class TmvQueryBuilder;
class TmvUnionSubQuery;
class TmvLinkControl;
class TmvQueryBuilderLinkPainter;
class TmvQueryBuilderDataSourceControl;

// The surface of the work area: boxes are its children, at their model
// positions; links are painted on it, under the boxes, by the query
// builder's link painter. A click near a link focuses it (Delete removes it,
// a right click opens its menu). A metadata object dropped on it becomes a
// datasource where it fell.
class TmvWorkAreaCanvas : public QWidget {
  Q_OBJECT
 public:
  TmvWorkAreaCanvas(TmvUnionSubQuery* member, TmvQueryBuilder* builder, QWidget* parent);
  ~TmvWorkAreaCanvas() override;
  void AddLink(TmvLinkControl* link);
  void RemoveLink(TmvLinkControl* link);
  const std::vector<TmvLinkControl*>& Links() const { return links_; }
  // Grows to hold every box with the margins (at least the viewport).
  void UpdateExtent();
  // The box that shows a datasource of this area, or null.
  TmvQueryBuilderDataSourceControl* BoxOf(const void* datasource) const;
  // The link drawn through `point` (the last drawn, on top), or null.
  TmvLinkControl* LinkAt(const QPoint& point) const;
  TmvLinkControl* FocusedLink() const { return focusedLink_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  // On a link: its properties; a link left without an expression goes.
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // Text dragged from another program, where the query builder's OLEDragDrop allows it.
  bool AcceptsTextDrop(const QMimeData* mime) const;
  // The painter the query builder names (made again when the name changes).
  const TmvQueryBuilderLinkPainter& Painter();
  bool LinksMayChange() const;
  std::unique_ptr<TmvQueryBuilderLinkPainter> painter_;
  QString painterClassName_;
  TmvLinkControl* focusedLink_ = nullptr;
  TmvUnionSubQuery* member_;
  TmvQueryBuilder* builder_;
  std::vector<TmvLinkControl*> links_;
};

class TmvQueryBuilderWorkArea : public QScrollArea {
  Q_OBJECT
 public:
  TmvQueryBuilderWorkArea(TmvUnionSubQuery* member, TmvQueryBuilder* builder, QWidget* parent);
  TmvUnionSubQuery* Member() const { return member_; }
  TmvWorkAreaCanvas* Canvas() const { return canvas_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  // The wheel scrolls by its delta, unscaled: vertically with no modifier,
  // horizontally with Shift alone; nothing otherwise or without that bar.
  void wheelEvent(QWheelEvent* event) override;

 private:
  TmvUnionSubQuery* member_;
  TmvWorkAreaCanvas* canvas_;
};

class TmvUnionSubQueryTabSheet : public QSplitter, public ImvUnionSubQueryControl {
  Q_OBJECT
 public:
  TmvUnionSubQueryTabSheet(TmvUnionSubQuery* member, TmvQueryBuilder* builder, QWidget* parent);
  TmvUnionSubQuery* Member() const { return member_; }
  TmvQueryBuilderWorkArea* WorkArea() const { return workArea_; }
  QWidget* LowerPanel() const { return lowerPanel_; }

  void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override;
  TmvRect GetUnionNavigatorAlignmentRect() override;
  ImvControl* GetSelectListParent() override { return nullptr; }
  ImvControl* GetDatasourcesParent() override { return nullptr; }
  void EnsureDatasourceVisible(TmvQueryBuilderControlOwner* datasource) override;

 protected:
  // The share of the grid stays when the page is resized.
  void resizeEvent(QResizeEvent* event) override;

 private:
  // Applies the SELECT's ratio to the heights of the two panels.
  void ApplyRatio();
  TmvUnionSubQuery* member_;
  TmvQueryBuilderWorkArea* workArea_;
  QWidget* lowerPanel_;
  bool applying_ = false;
};

}  // namespace mv
