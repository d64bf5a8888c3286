// The box of one datasource on the work area: a caption to move it by, and
// the list of its fields with a check box each (checked: the field is in
// the select list). Dragging a field onto a field of another box links them.
#pragma once

#include <QFrame>
#include <QListWidget>
#include <QPoint>

#include "model/ModelControls.h"

class QLabel;
class QToolButton;

namespace mv {

class TmvDatasource;
class TmvMetadataField;
class TmvQueryBuilder;
class TmvQueryBuilderDataSourceControl;

class TmvQueryBuilderDatasourceFieldsList : public QListWidget {
  Q_OBJECT
 public:
  explicit TmvQueryBuilderDatasourceFieldsList(TmvQueryBuilderDataSourceControl* box);
  // The field of a row; null for the "*" row and rows out of range.
  TmvMetadataField* FieldOfRow(int row) const;
  int RowOfField(const TmvMetadataField* field) const;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  TmvQueryBuilderDataSourceControl* box_;
  QPoint pressPoint_;
  int pressRow_ = -1;
};

class TmvQueryBuilderDataSourceControl : public QFrame, public ImvDatasourceControl, public ImvStateSaver {
  Q_OBJECT
 public:
  TmvQueryBuilderDataSourceControl(TmvDatasource* datasource, TmvQueryBuilder* builder, QWidget* parent);
  TmvDatasource* Datasource() const { return datasource_; }
  TmvQueryBuilderDatasourceFieldsList* FieldsList() const { return fields_; }
  QLabel* CaptionLabel() const { return caption_; }
  // In the caption row: collapse or expand the box (where the fields list
  // options show it); the menu of the objects linked to this one by the
  // metadata's relations (where the datasource options show it and the
  // datasource has a metadata object), shown while the box has the focus.
  QToolButton* CollapseButton() const { return collapse_; }
  QToolButton* LinkedObjectsButton() const { return linked_; }

  // Whether a field dragged from `source`'s row may be dropped on this box's
  // row (both fields, other boxes, no such link yet, links allowed, types
  // compatible where asked), and the drop itself: the link, asked of the host.
  bool CanLinkFields(TmvQueryBuilderDataSourceControl* source, int sourceRow, int targetRow) const;
  bool LinkFields(TmvQueryBuilderDataSourceControl* source, int sourceRow, int targetRow);
  // Checks or unchecks a row as a click on its check box does.
  void ClickCheck(int row, bool checked);

  // --- ImvControl, ImvDatasourceControl, ImvStateSaver ---
  void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override;
  void ReloadFieldsList() override;
  void UpdateChecksOnFields() override;
  WideString GetCaption() override;
  void SetCaption(const WideString& caption) override;
  TmvRect CalcFieldRect(const WideString& fieldName) override;
  void SetOptimalHeight() override;
  void TuneSize() override;
  void SaveControlStateToOwner(TmvQueryBuilderControlOwner* owner) override;
  void RestoreControlStateFromOwner(TmvQueryBuilderControlOwner* owner) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  friend class TmvQueryBuilderDatasourceFieldsList;
  // Moves or resizes the box on the grid and stores the place on the datasource.
  void MoveTo(const QRect& proposed);
  // The links of the datasource follow the box.
  void RealignLinks();
  int CalcOptimalWidth() const;

  TmvDatasource* datasource_;
  TmvQueryBuilder* builder_;
  // The linked-objects button shows while focus is in the box.
  void UpdateLinkedObjectsButton();
  QLabel* caption_;
  QToolButton* collapse_;
  QToolButton* linked_;
  TmvQueryBuilderDatasourceFieldsList* fields_;
  QPoint dragOffset_;
  bool moving_ = false;
  bool reloading_ = false;
};

}  // namespace mv
