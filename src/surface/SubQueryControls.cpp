#include "surface/SubQueryControls.h"

#include <QFont>
#include <QHBoxLayout>
#include <QTabWidget>
#include <QVBoxLayout>

#include "frontend/SyntaxProvider.h"
#include "model/QueryModelHost.h"
#include "model/QueryTree.h"
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

TmvUnionButton::TmvUnionButton(TmvUnionSubQuery* member, QWidget* parent) : QToolButton(parent), member_(member) {
  setObjectName(QStringLiteral("UnionButton"));
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

void TmvUnionButton::UpdateControlVisualParams(TmvQueryBuilderControlOwner*) {
  TmvSubQuery* root = member_->RootQuery();
  setChecked(root && root->ActiveUnionSubQuery() == member_);
}

// --- TmvUnionOperator ---

TmvUnionOperator::TmvUnionOperator(TmvQueryBase* object, QWidget* parent) : QLabel(parent), object_(object) {
  setObjectName(QStringLiteral("UnionOperator"));
  setFixedSize(16, 16);
  setAlignment(Qt::AlignCenter);
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

TmvBracket::TmvBracket(TmvUnionGroup* group, bool left, QWidget* parent) : QLabel(parent), group_(group), left_(left) {
  setObjectName(left ? QStringLiteral("LeftBracket") : QStringLiteral("RightBracket"));
  setFixedWidth(10);
  setFont(NavigatorFont());
  setAlignment(Qt::AlignCenter);
  setText(left ? QStringLiteral("(") : QStringLiteral(")"));
}

}  // namespace mv
