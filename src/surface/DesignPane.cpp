#include "surface/DesignPane.h"

#include <QInputDialog>
#include <QMessageBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "component/QueryBuilder.h"
#include "model/Datasources.h"
#include "model/Links.h"
#include "model/QueryTree.h"
#include "model/SelectList.h"
#include "surface/AddObjectDialog.h"
#include "surface/DatasourceControl.h"
#include "surface/LinkControl.h"
#include "surface/PropertiesDialog.h"
#include "surface/QtText.h"
#include "surface/SelectListGrid.h"
#include "surface/SubQueryControls.h"
#include "surface/UnionSubQueryPage.h"
#include "tree/Expressions.h"
#include "tree/SelectClauses.h"
#include "tree/SelectStatement.h"

namespace mv {

TmvDesignPane::TmvDesignPane(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("DesignPane"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  pages_ = new QTabWidget(this);
  pages_->setObjectName(QStringLiteral("QueryBuilderPageControl"));
  pages_->setDocumentMode(true);
  column->addWidget(pages_);
  connect(pages_, &QTabWidget::currentChanged, this, &TmvDesignPane::PageChanged);
}

TmvDesignPane::~TmvDesignPane() { SetQueryBuilder(nullptr); }

void TmvDesignPane::SetQueryBuilder(TmvQueryBuilder* builder) {
  if (builder_ == builder) return;
  if (builder_) {
    builder_->DestroyControls();
    builder_->SetControlFactory(nullptr);
    if (builder_->UserInteraction() == this) builder_->SetUserInteraction(nullptr);
  }
  builder_ = builder;
  if (!builder_) return;
  builder_->SetControlFactory(this);
  if (!builder_->UserInteraction()) builder_->SetUserInteraction(this);
  builder_->CreateControls();
  builder_->UpdateVisibleSubQueries();
}

TmvQueryTabSheet* TmvDesignPane::TabSheetOf(TmvQueryBuilderControlOwner* owner) const {
  auto* object = TmvCast<TmvQueryBase>(owner);
  TmvSubQuery* root = object ? object->RootQuery() : nullptr;
  return root ? dynamic_cast<TmvQueryTabSheet*>(root->GetControls(0)) : nullptr;
}

TmvUnionSubQueryTabSheet* TmvDesignPane::UnionSubQueryPage(TmvUnionSubQuery* member) const {
  return member ? dynamic_cast<TmvUnionSubQueryTabSheet*>(member->GetControls(0)) : nullptr;
}

TmvQueryBuilderDataSourceControl* TmvDesignPane::DatasourceControl(TmvDatasource* datasource) const {
  return datasource ? dynamic_cast<TmvQueryBuilderDataSourceControl*>(datasource->GetControls(0)) : nullptr;
}

ImvControl* TmvDesignPane::CreateControl(TmvQueryBuilderControlOwner* owner, int index) {
  // A sub-query is also a union group: it comes first.
  if (auto* subQuery = TmvCast<TmvSubQuery>(owner)) {
    if (index != 0) return nullptr;
    auto* sheet = new TmvQueryTabSheet(subQuery, pages_);
    changingPages_ = true;
    pages_->addTab(sheet, ToQString(subQuery->GetCaption()));
    changingPages_ = false;
    return sheet;
  }
  if (auto* member = TmvCast<TmvUnionSubQuery>(owner)) {
    TmvQueryTabSheet* sheet = TabSheetOf(member);
    if (!sheet) return nullptr;
    ImvControl* control = nullptr;
    switch (index) {
      case 0: {
        auto* page = new TmvUnionSubQueryTabSheet(member, builder_, sheet->Pages());
        sheet->Pages()->addWidget(page);
        return page;
      }
      case 1:
        control = new TmvUnionButton(member, sheet->NavBar());
        break;
      case 2:
        control = new TmvUnionOperator(member, sheet->NavBar());
        break;
    }
    sheet->NavBar()->Relayout();
    return control;
  }
  if (auto* group = TmvCast<TmvUnionGroup>(owner)) {
    TmvQueryTabSheet* sheet = TabSheetOf(group);
    if (!sheet || index > 2) return nullptr;
    ImvControl* control = index == 2 ? static_cast<ImvControl*>(new TmvUnionOperator(group, sheet->NavBar()))
                                     : new TmvBracket(group, index == 0, sheet->NavBar());
    sheet->NavBar()->Relayout();
    return control;
  }
  if (auto* datasource = TmvCast<TmvDatasource>(owner)) {
    TmvUnionSubQueryTabSheet* page = UnionSubQueryPage(datasource->UnionSubQuery());
    return page ? new TmvQueryBuilderDataSourceControl(datasource, builder_, page->WorkArea()->Canvas()) : nullptr;
  }
  if (auto* link = TmvCast<TmvLink>(owner)) {
    TmvUnionSubQueryTabSheet* page = UnionSubQueryPage(link->UnionSubQuery());
    if (!page) return nullptr;
    auto control = std::make_unique<TmvLinkControl>(link, page->WorkArea()->Canvas());
    ImvControl* raw = control.get();
    plainControls_.emplace(raw, std::move(control));
    return raw;
  }
  if (auto* list = TmvCast<TmvSelectList>(owner)) {
    TmvUnionSubQueryTabSheet* page = UnionSubQueryPage(list->UnionSubQuery());
    if (!page) return nullptr;
    auto* grid = new TmvSelectListGrid(list, page->LowerPanel());
    page->LowerPanel()->layout()->addWidget(grid);
    return grid;
  }
  return nullptr;
}

void TmvDesignPane::ShowControl(ImvControl* control, bool visible) {
  if (auto* page = dynamic_cast<TmvUnionSubQueryTabSheet*>(control)) {
    // The page of the active SELECT is the one its tab shows.
    if (auto* stack = qobject_cast<QStackedWidget*>(page->parentWidget()); stack && visible)
      stack->setCurrentWidget(page);
    return;
  }
  if (dynamic_cast<TmvQueryTabSheet*>(control)) return;
  if (auto* widget = dynamic_cast<QWidget*>(control)) widget->setVisible(visible);
}

void TmvDesignPane::DestroyControl(ImvControl* control) {
  if (plainControls_.erase(control)) return;
  auto* widget = dynamic_cast<QWidget*>(control);
  if (!widget) return;
  TmvUnionNavBar* navBar = qobject_cast<TmvUnionNavBar*>(widget->parentWidget());
  if (auto* sheet = dynamic_cast<TmvQueryTabSheet*>(control)) {
    changingPages_ = true;
    pages_->removeTab(pages_->indexOf(sheet));
    changingPages_ = false;
  }
  delete widget;
  if (navBar) navBar->Relayout();
}

void TmvDesignPane::PageChanged(int index) {
  if (changingPages_ || !builder_) return;
  if (auto* sheet = qobject_cast<TmvQueryTabSheet*>(pages_->widget(index)))
    if (builder_->ActiveSubQuery() != sheet->SubQuery()) builder_->SetActiveSubQuery(sheet->SubQuery());
}

// --- Questions to the user ---

bool TmvDesignPane::InputBox(const WideString& caption, const WideString& prompt, WideString& value) {
  bool ok = false;
  const QString text = QInputDialog::getText(window(), ToQString(caption), ToQString(prompt), QLineEdit::Normal,
                                             ToQString(value), &ok);
  if (ok) value = FromQString(text);
  return ok;
}

bool TmvDesignPane::Confirm(const WideString& message) {
  return QMessageBox::question(window(), QString(), ToQString(message)) == QMessageBox::Yes;
}

bool TmvDesignPane::ShowPropertiesForm(TmvQBPropertiesForm& form) { return ShowPropertiesDialog(form, window()); }

bool TmvDesignPane::CanShowAddObjectDialog() const {
  return builder_ && builder_->AddObjectFormOptions().Enabled();
}

void TmvDesignPane::ShowAddObjectDialog(TmvUnionSubQuery* member) {
  if (!builder_) return;
  if (member && member->RootQuery()) member->RootQuery()->SetActiveUnionSubquery(member);
  if (builder_->AddObjectFormOptions().ShowAsModal()) {
    TmvAddObjectDialog dialog(*builder_, window());
    dialog.exec();
    return;
  }
  auto* dialog = new TmvAddObjectDialog(*builder_, window());
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->show();
}

}  // namespace mv
