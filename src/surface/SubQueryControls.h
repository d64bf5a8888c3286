// The tab of a sub-query and its union navigator: a button per SELECT, the
// operator between members and the brackets of groups, in SQL order.
#pragma once

#include <QLabel>
#include <QStackedWidget>
#include <QToolButton>
#include <QWidget>

#include "model/ModelControls.h"

class QHBoxLayout;

namespace mv {

class TmvSubQuery;
class TmvQueryBase;
class TmvUnionSubQuery;
class TmvUnionGroup;
class TmvUnionNavBar;

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

class TmvUnionButton : public QToolButton, public ImvUnionSubQueryNavButtonControl {
  Q_OBJECT
 public:
  TmvUnionButton(TmvUnionSubQuery* member, QWidget* parent);
  TmvUnionSubQuery* Member() const { return member_; }
  void UpdateControlVisualParams(TmvQueryBuilderControlOwner* owner) override;
  void SetActive(bool active) override { setChecked(active); }

 private:
  TmvUnionSubQuery* member_;
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

class TmvBracket : public QLabel, public ImvControl {
  Q_OBJECT
 public:
  TmvBracket(TmvUnionGroup* group, bool left, QWidget* parent);
  TmvUnionGroup* Group() const { return group_; }
  bool IsLeft() const { return left_; }
  void UpdateControlVisualParams(TmvQueryBuilderControlOwner*) override {}

 private:
  TmvUnionGroup* group_;
  bool left_;
};

}  // namespace mv
