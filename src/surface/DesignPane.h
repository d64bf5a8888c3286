// The design pane: the picture of a query builder's query on Qt widgets.
// A tab for each shown sub-query, a navigator of its union members, and for
// the active member a scrolling work area with a box per datasource, the
// links drawn between fields, and the select list grid below.
//
// The pane is the query builder's control factory: the model asks it for
// the control of each of its objects and frees them through it, so the
// widgets follow the model whatever changed it (a click here, new SQL text,
// a program). Attach a query builder with SetQueryBuilder; the pane does not
// own it: detach it (SetQueryBuilder(nullptr)) or free the pane before
// the builder goes.
//
// Unless the host set its own, the pane is also the builder's user
// interaction: it asks for names and confirmations, and shows the
// properties forms and the add-object window as dialogs.
#pragma once

#include <QWidget>
#include <map>
#include <memory>

#include "model/ModelControls.h"
#include "model/QueryModelHost.h"

class QTabWidget;

namespace mv {

class TmvDatasource;
class TmvQueryBuilder;
class TmvUnionSubQuery;
class TmvQueryBuilderDataSourceControl;
class TmvUnionSubQueryTabSheet;
class TmvQueryTabSheet;

class TmvDesignPane : public QWidget, public ImvControlFactory, public ImvUserInteraction {
  Q_OBJECT
 public:
  explicit TmvDesignPane(QWidget* parent = nullptr);
  ~TmvDesignPane() override;

  // Builds the controls of `builder`'s query (null: none). The builder must
  // live until it is detached or the pane goes.
  void SetQueryBuilder(TmvQueryBuilder* builder);
  TmvQueryBuilder* QueryBuilder() const { return builder_; }

  // The box of a datasource, the page of a SELECT; null when not shown.
  TmvQueryBuilderDataSourceControl* DatasourceControl(TmvDatasource* datasource) const;
  TmvUnionSubQueryTabSheet* UnionSubQueryPage(TmvUnionSubQuery* member) const;
  QTabWidget* PageControl() const { return pages_; }

  // --- ImvControlFactory ---
  ImvControl* CreateControl(TmvQueryBuilderControlOwner* owner, int index) override;
  void ShowControl(ImvControl* control, bool visible) override;
  void DestroyControl(ImvControl* control) override;

  // --- ImvUserInteraction ---
  bool InputBox(const WideString& caption, const WideString& prompt, WideString& value) override;
  bool Confirm(const WideString& message) override;
  bool ShowPropertiesForm(TmvQBPropertiesForm& form) override;
  bool CanShowAddObjectDialog() const override;
  void ShowAddObjectDialog(TmvUnionSubQuery* member) override;

 private:
  // The tab of a sub-query changed: the model follows.
  void PageChanged(int index);
  TmvQueryTabSheet* TabSheetOf(TmvQueryBuilderControlOwner* owner) const;

  TmvQueryBuilder* builder_ = nullptr;
  QTabWidget* pages_;
  // Controls that are no widgets (links): the pane owns them.
  std::map<ImvControl*, std::unique_ptr<ImvControl>> plainControls_;
  bool changingPages_ = false;
};

}  // namespace mv
