#include "surface/SubQueryControls.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QFont>
#include <QMouseEvent>
#include <QTimer>
#include <cstdlib>
#include <QHBoxLayout>
#include <QTabWidget>
#include <QVBoxLayout>

#include "frontend/SyntaxProvider.h"
#include "model/PropertyForms.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
#include "surface/DragData.h"
#include "surface/ModelMenu.h"
#include "surface/QtText.h"
#include "surface/SurfaceMessages.h"
#include "tree/Expressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

namespace {

QFont NavigatorFont() {
  QFont font(QStringLiteral("Arial"));
  font.setPixelSize(13);
  font.setBold(true);
  return font;
}

// The controls of a group's members in SQL order: each member's operator,
// a SELECT's button, a group's brackets around its own members.
void BuildControlsList(std::vector<QWidget*>& list, TmvUnionGroup* group) {
  auto widget = [](ImvControl* control) { return dynamic_cast<QWidget*>(control); };
  for (int i = 0; i < group->Count(); ++i) {
    TmvQueryBase* member = group->Items(i);
    if (QWidget* op = widget(member->GetUnionOperatorControl())) list.push_back(op);
    if (auto* select = TmvCast<TmvUnionSubQuery>(member)) {
      if (QWidget* button = widget(select->GetControls(1))) list.push_back(button);
    } else if (auto* nested = TmvCast<TmvUnionGroup>(member)) {
      if (QWidget* left = widget(nested->GetControls(0))) list.push_back(left);
      BuildControlsList(list, nested);
      if (QWidget* right = widget(nested->GetControls(1))) list.push_back(right);
    }
  }
}

}  // namespace

// --- Dragging parts of the union ---

void TmvUnionDragParticipant::StartDrag() {
  auto* drag = new QDrag(widget_);
  drag->setMimeData(NewUnionItemDrag(DragItem()));
  drag->exec(Qt::MoveAction);
}

bool TmvUnionDragParticipant::AcceptsDrag(const QMimeData* mime) const {
  TmvUnionDragItem source;
  return ReadUnionItemDrag(mime, source) && CanDropUnionItem(DragItem(), source);
}

bool TmvUnionDragParticipant::Drop(const QMimeData* mime) {
  TmvUnionDragItem source;
  if (!ReadUnionItemDrag(mime, source) || !CanDropUnionItem(DragItem(), source)) return false;
  // The move frees and makes navigator parts, this one perhaps among them.
  QTimer::singleShot(0, qApp, [target = DragItem(), source] { DropUnionItem(target, source); });
  return true;
}

// --- TmvQueryTabSheet ---

TmvQueryTabSheet::TmvQueryTabSheet(TmvSubQuery* subQuery, QWidget* parent)
    : QWidget(parent), subQuery_(subQuery) {
  setObjectName(QStringLiteral("QueryTabSheet"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  navBar_ = new TmvUnionNavBar(subQuery, this);
  pages_ = new QStackedWidget(this);
  column->addWidget(navBar_, 0, Qt::AlignRight);
  column->addWidget(pages_, 1);
}

void TmvQueryTabSheet::UpdateControlVisualParams(TmvQueryBuilderControlOwner*) {
  SetCaption(subQuery_->GetCaption());
  navBar_->Relayout();
}

void TmvQueryTabSheet::Activate() {
  if (auto* tabs = qobject_cast<QTabWidget*>(parentWidget() ? parentWidget()->parentWidget() : nullptr))
    tabs->setCurrentWidget(this);
}

void TmvQueryTabSheet::SetCaption(const WideString& caption) {
  setWindowTitle(ToQString(caption));
  if (auto* tabs = qobject_cast<QTabWidget*>(parentWidget() ? parentWidget()->parentWidget() : nullptr))
    tabs->setTabText(tabs->indexOf(this), windowTitle());
}

// --- TmvUnionNavBar ---

TmvUnionNavBar::TmvUnionNavBar(TmvSubQuery* subQuery, QWidget* parent) : QWidget(parent), subQuery_(subQuery) {
  setObjectName(QStringLiteral("UnionNavBar"));
  row_ = new QHBoxLayout(this);
  row_->setContentsMargins(3, 2, 3, 2);
  row_->setSpacing(0);
  addButton_ = new QToolButton(this);
  addButton_->setObjectName(QStringLiteral("AddUnionButton"));
  addButton_->setText(QStringLiteral("+"));
  addButton_->setFixedSize(16, 16);
  addButton_->setToolTip(SurfaceText(mvQBNewUnionSubQuery));
  connect(addButton_, &QToolButton::clicked, this, [this] {
    TmvUnionSubQuery* added = nullptr;
    {
      TmvUpdateScope update(subQuery_);
      added = subQuery_->Add();
    }
    if (added) subQuery_->SetActiveUnionSubquery(added);
  });
  setFixedHeight(24);
}

void TmvUnionNavBar::Relayout() {
  while (row_->count() > 0) row_->takeAt(0);
  std::vector<QWidget*> controls;
  BuildControlsList(controls, subQuery_);
  for (QWidget* control : controls) row_->addWidget(control, 0, Qt::AlignVCenter);
  row_->addSpacing(1);
  row_->addWidget(addButton_, 0, Qt::AlignVCenter);
  TmvBaseSyntaxProvider* provider = subQuery_->Host() ? subQuery_->Host()->SyntaxProvider() : nullptr;
  addButton_->setEnabled(provider && (subQuery_->GetIsMainQuery() ? provider->IsSupportUnions()
                                                                  : provider->IsSupportSubQueryUnions()));
  // Only a union has a navigator worth showing; the add button stays.
  for (QWidget* control : controls)
    if (auto* op = qobject_cast<TmvUnionOperator*>(control)) {
      TmvQueryBase* object = op->Object();
      op->setVisible(object->QueryAST() && object->ParentQuery() && object->IndexInParent() > 0);
    }
}

// --- TmvUnionButton ---

TmvUnionButton::TmvUnionButton(TmvUnionSubQuery* member, QWidget* parent)
    : QToolButton(parent), TmvUnionDragParticipant(this), member_(member) {
  setObjectName(QStringLiteral("UnionButton"));
  setAcceptDrops(true);
  setFixedSize(21, 21);
  setFont(NavigatorFont());
  setCheckable(true);
  setText(SurfaceText(mvQBUnionButtonCaption));
  setContextMenuPolicy(Qt::CustomContextMenu);
  connect(this, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& point) { ExecModelMenu(member_->GetPopupMenu(this), mapToGlobal(point), this); });
  connect(this, &QToolButton::clicked, this, [this] {
    TmvSubQuery* root = member_->RootQuery();
    if (root && root->ActiveUnionSubQuery() != member_) root->SetActiveUnionSubquery(member_);
    setChecked(root && root->ActiveUnionSubQuery() == member_);
  });
}

TmvUnionDragItem TmvUnionButton::DragItem() const { return {member_, TmvUnionDragItem::Button}; }

void TmvUnionButton::mousePressEvent(QMouseEvent* event) {
  pressed_ = event->button() == Qt::LeftButton;
  pressPoint_ = event->position().toPoint();
  QToolButton::mousePressEvent(event);
}

void TmvUnionButton::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return QToolButton::mouseDoubleClickEvent(event);
  PostModelAction([member = member_] { EditProps(member); });
}

void TmvUnionButton::mouseMoveEvent(QMouseEvent* event) {
  // Pulled more than 4 pixels either way: a drag of this SELECT.
  const QPoint moved = event->position().toPoint() - pressPoint_;
  if (pressed_ && (event->buttons() & Qt::LeftButton) && (std::abs(moved.x()) > 4 || std::abs(moved.y()) > 4)) {
    pressed_ = false;
    setDown(false);
    StartDrag();
    return;
  }
  QToolButton::mouseMoveEvent(event);
}

void TmvUnionButton::dragEnterEvent(QDragEnterEvent* event) {
  AcceptsDrag(event->mimeData()) ? event->acceptProposedAction() : event->ignore();
}

void TmvUnionButton::dropEvent(QDropEvent* event) {
  Drop(event->mimeData()) ? event->acceptProposedAction() : event->ignore();
}

void TmvUnionButton::UpdateControlVisualParams(TmvQueryBuilderControlOwner*) {
  TmvSubQuery* root = member_->RootQuery();
  setChecked(root && root->ActiveUnionSubQuery() == member_);
}

// --- TmvUnionOperator ---

TmvUnionOperator::TmvUnionOperator(TmvQueryBase* object, QWidget* parent) : QLabel(parent), object_(object) {
  setObjectName(QStringLiteral("UnionOperator"));
  setFixedSize(16, 16);
  setAlignment(Qt::AlignCenter);
  setContextMenuPolicy(Qt::CustomContextMenu);
  connect(this, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& point) { ExecModelMenu(object_->GetPopupMenu(this), mapToGlobal(point), this); });
}

void TmvUnionOperator::UpdateControlVisualParams(TmvQueryBuilderControlOwner*) {
  operator_ = ToQString(object_->GetUnionOperator());
  all_ = object_->GetUnionAllFlag();
  Repaint();
}

void TmvUnionOperator::SetUnionOperator(const WideString& text) {
  operator_ = ToQString(text);
  Repaint();
}

void TmvUnionOperator::SetAll(bool all) {
  all_ = all;
  Repaint();
}

void TmvUnionOperator::Repaint() {
  // An empty operator is a union; the hint spells it, the face shows its
  // first letter and an "a" for ALL.
  QString name = operator_.isEmpty() ? QStringLiteral("union") : operator_.toLower();
  if (name.endsWith(QStringLiteral(" all"))) name.chop(4);
  setToolTip(all_ ? name + QStringLiteral(" all") : name);
  setText(name.left(1) + (all_ ? QStringLiteral("a") : QString()));
}

// --- TmvBracket ---

TmvBracket::TmvBracket(TmvUnionGroup* group, bool left, QWidget* parent)
    : QLabel(parent), TmvUnionDragParticipant(this), group_(group), left_(left) {
  setObjectName(left ? QStringLiteral("LeftBracket") : QStringLiteral("RightBracket"));
  setAcceptDrops(true);
  setContextMenuPolicy(Qt::CustomContextMenu);
  connect(this, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& point) { ExecModelMenu(group_->GetPopupMenu(this), mapToGlobal(point), this); });
  setFixedWidth(10);
  setFont(NavigatorFont());
  setAlignment(Qt::AlignCenter);
  setText(left ? QStringLiteral("(") : QStringLiteral(")"));
}

TmvUnionDragItem TmvBracket::DragItem() const {
  return {group_, left_ ? TmvUnionDragItem::LeftBracket : TmvUnionDragItem::RightBracket};
}

void TmvBracket::mousePressEvent(QMouseEvent* event) {
  // A bracket drags at once.
  if (event->button() == Qt::LeftButton) return StartDrag();
  QLabel::mousePressEvent(event);
}

void TmvBracket::dragEnterEvent(QDragEnterEvent* event) {
  AcceptsDrag(event->mimeData()) ? event->acceptProposedAction() : event->ignore();
}

void TmvBracket::dropEvent(QDropEvent* event) {
  Drop(event->mimeData()) ? event->acceptProposedAction() : event->ignore();
}

}  // namespace mv
