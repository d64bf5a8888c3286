// The select list grid under the work area: a row per select item with its
// output check, expression, aggregate, alias, sort, grouping and criteria
// columns. Edits go to the model after the grid's own handler has ended
// (the model may rebuild every row in answer), and the model refills the
// grid when it changed.
#pragma once

#include <QTableWidget>

#include "model/ModelControls.h"

namespace mv {

class TmvSelectList;

class TmvSelectListGrid : public QTableWidget, public ImvSelectListControl {
  Q_OBJECT
 public:
  // The fixed columns; the criteria columns follow them.
  enum Column { colOutput, colExpression, colAggregate, colAlias, colSortType, colSortOrder, colGrouping, colCriteria };

  TmvSelectListGrid(TmvSelectList* selectList, QWidget* parent);
  // The values a list column offers for a row (aggregates, sorts, grouping
  // and condition types); empty for the columns edited as free text.
  QStringList ChoicesFor(int row, int column) const;
  TmvSelectList* SelectList() const { return selectList_; }
  // The text of the model's last refusal of an edit; empty after a good one.
  const QString& LastError() const { return lastError_; }

  void UpdateControlVisualParams(TmvQueryBuilderControlOwner*) override { FillList(); }
  int GetCurrentRow() override { return currentRow(); }
  void SetCurrentRow(int row) override { setCurrentCell(row, std::max(currentColumn(), 0)); }
  int GetCurrentCol() override { return currentColumn(); }
  void SetCurrentCol(int col) override { setCurrentCell(std::max(currentRow(), 0), col); }
  void FillList() override;

 signals:
  // An edit was refused; the text says why.
  void EditRefused(const QString& message);

 protected:
  // Space toggles an output check; Ctrl with Up, Down, Insert or Delete
  // moves, inserts or removes the current row where the row allows it.
  void keyPressEvent(QKeyEvent* event) override;
  // A field dragged from a datasource box becomes a row where it falls
  // (after the last row below them), selected for output.
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // The host's expression editor for a cell (OnCustomExpressionBuilder).
  bool CustomBuilderAvailable(int column) const;
  void OpenCustomBuilder(int row, int column);
  // The entries a cell adds to its row's menu: the host's expression editor.
  TmvMenu CellMenu(int row, int column);
  // A row dragged by its header to another place: the model's order follows.
  void RowMoved(int from, int to);
  // Applies the cell's text (or check) to its row of the model.
  void ApplyCell(int row, int column, const QString& text, bool checked);

  TmvSelectList* selectList_;
  bool filling_ = false;
  QString lastError_;
};

}  // namespace mv
