// The tab of a sub-query and its union navigator: a button per SELECT, the
// operator between members and the brackets of groups, in SQL order.
#pragma once

#include <QLabel>
#include <QStackedWidget>
#include <QToolButton>
#include <QWidget>

#include "model/ModelControls.h"
#include "surface/UnionDragDrop.h"

class QHBoxLayout;
class QMimeData;

namespace mv {

class TmvSubQuery;
class TmvQueryBase;
class TmvUnionSubQuery;
class TmvUnionGroup;
class TmvUnionNavBar;

// What a part of the navigator does with drags: it starts one when pulled
// (a button) or pressed (a bracket), and takes the parts the rules allow,
// moving them once the drop's event has ended (the move rebuilds the bar).
class TmvUnionDragParticipant {
 public:
  explicit TmvUnionDragParticipant(QWidget* widget) : widget_(widget) {}
  virtual ~TmvUnionDragParticipant() = default;
  virtual TmvUnionDragItem DragItem() const = 0;
  void StartDrag();
  bool AcceptsDrag(const QMimeData* mime) const;
  bool Drop(const QMimeData* mime);

 private:
  QWidget* widget_;
};

// One tab of the page control: the navigator above the pages of its
// SELECTs, of which the active one shows.
class TmvQueryTabSheet : public QWidget, public ImvSubQueryControl {
  Q_OBJECT
 public:
  TmvQueryTabSheet(TmvSubQuery* subQuery, QWidget* parent);
  TmvSubQuery* SubQuery() const { return subQuery_; }
  TmvUnionNavBar* NavBar() const { return navBar_; }
  QStackedWidget* Pages() const { return pages_; }

  void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override;
  ImvControl* GetUnionNavBar() override { return nullptr; }
  void Activate() override;
  void SetCaption(const WideString& caption) override;

 private:
  TmvSubQuery* subQuery_;
  TmvUnionNavBar* navBar_;
  QStackedWidget* pages_;
};

// The row of union controls; it lays its children out in the order of the
// members whenever one comes, goes or moves.
class TmvUnionNavBar : public QWidget {
  Q_OBJECT
 public:
  TmvUnionNavBar(TmvSubQuery* subQuery, QWidget* parent);
  // Puts the controls in SQL order and shows the operators that apply.
  void Relayout();

 private:
  TmvSubQuery* subQuery_;
  QHBoxLayout* row_;
  QToolButton* addButton_;
};

class TmvUnionButton : public QToolButton, public ImvUnionSubQueryNavButtonControl, public TmvUnionDragParticipant {
  Q_OBJECT
 public:
  TmvUnionButton(TmvUnionSubQuery* member, QWidget* parent);
  TmvUnionSubQuery* Member() const { return member_; }
  void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override;
  void SetActive(bool active) override { setChecked(active); }
  TmvUnionDragItem DragItem() const override;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  // Opens the member's properties.
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  TmvUnionSubQuery* member_;
  QPoint pressPoint_;
  bool pressed_ = false;
};

// The operator before a member that is not the first of its group.
class TmvUnionOperator : public QLabel, public ImvUnionOperatorControl {
  Q_OBJECT
 public:
  TmvUnionOperator(TmvQueryBase* object, QWidget* parent);
  TmvQueryBase* Object() const { return object_; }
  void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override;
  void SetUnionOperator(const WideString& text) override;
  void SetAll(bool all) override;

 private:
  void Repaint();
  TmvQueryBase* object_;
  QString operator_;
  bool all_ = false;
};

class TmvBracket : public QLabel, public ImvControl, public TmvUnionDragParticipant {
  Q_OBJECT
 public:
  TmvBracket(TmvUnionGroup* group, bool left, QWidget* parent);
  TmvUnionGroup* Group() const { return group_; }
  bool IsLeft() const { return left_; }
  void UpdateControlVisualParams(TmvQueryBuilderControlOwner*) override {}
  TmvUnionDragItem DragItem() const override;

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  TmvUnionGroup* group_;
  bool left_;
};

}  // namespace mv
