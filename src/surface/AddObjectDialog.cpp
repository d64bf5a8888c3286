#include "surface/AddObjectDialog.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "component/QueryBuilder.h"
#include "support/Exceptions.h"
#include "surface/FormCaptions.h"
#include "surface/QtText.h"

namespace mv {

namespace {

struct TabRow {
  TmvAddObjectForm::Tab tab;
  const char* page;
  const char* list;
  const char* caption;
};
constexpr TabRow kTabs[] = {
    {TmvAddObjectForm::tsTables, "tsTables", "lTables", "Tables"},
    {TmvAddObjectForm::tsViews, "tsViews", "lViews", "Views"},
    {TmvAddObjectForm::tsProcedures, "tsProcedures", "lProcedures", "Procedures"},
    {TmvAddObjectForm::tsSynonyms, "tsSynonyms", "lSynonyms", "Synonyms"},
};

}  // namespace

TmvAddObjectDialog::TmvAddObjectDialog(TmvQueryBuilder& builder, QWidget* parent)
    : QDialog(parent), builder_(builder), form_(builder), localizer_(u"TmvAddObjectForm") {
  setObjectName(QStringLiteral("TmvAddObjectForm"));
  setWindowTitle(QString::fromUtf8("Add new object"));
  const TmvAddObjectFormOptions& options = builder.AddObjectFormOptions();
  setMinimumSize(options.Constraints().MinWidth(), options.Constraints().MinHeight());
  resize(std::max(options.Width(), minimumWidth()), std::max(options.Height(), minimumHeight()));
  auto* layout = new QVBoxLayout(this);
  auto* schemasLabel = new QLabel(QString::fromUtf8("Filter objects by Schema name:"), this);
  schemasLabel->setObjectName(QStringLiteral("lSchemas"));
  layout->addWidget(schemasLabel);
  schemas_ = new QComboBox(this);
  schemas_->setObjectName(QStringLiteral("cbSchemas"));
  layout->addWidget(schemas_);
  pages_ = new QTabWidget(this);
  pages_->setObjectName(QStringLiteral("pcObjects"));
  layout->addWidget(pages_, 1);
  form_.Load();
  // A hidden tab is not on the page control at all.
  for (TmvAddObjectForm::Tab tab : form_.VisibleTabs()) {
    const TabRow& row = kTabs[tab];
    auto* list = new QListWidget(pages_);
    list->setObjectName(QString::fromLatin1(row.list));
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list->setViewMode(options.ListViewStyle() == lvsIcon ? QListView::IconMode : QListView::ListMode);
    const int index = pages_->addTab(list, QString::fromUtf8(row.caption));
    RegisterTabCaption(localizer_, WideFromAscii(std::string("pcObjects.") + row.page + ".Caption"), pages_, index);
    lists_[tab] = list;
    connect(list, &QListWidget::itemSelectionChanged, this, &TmvAddObjectDialog::UpdateAddState);
    connect(list, &QListWidget::itemDoubleClicked, this, &TmvAddObjectDialog::AddSelected);
  }
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  add_ = new QPushButton(QString::fromUtf8("&Add Object"), this);
  add_->setObjectName(QStringLiteral("bAdd"));
  auto* close = new QPushButton(QString::fromUtf8("Close"), this);
  close->setObjectName(QStringLiteral("bClose"));
  buttons->addWidget(add_);
  buttons->addWidget(close);
  layout->addLayout(buttons);
  RegisterCaption(localizer_, u"Caption", this);
  RegisterCaption(localizer_, u"lSchemas.Caption", schemasLabel);
  RegisterCaption(localizer_, u"bAdd.Caption", add_);
  RegisterCaption(localizer_, u"bClose.Caption", close);
  localizer_.Loaded();
  connect(add_, &QPushButton::clicked, this, &TmvAddObjectDialog::AddSelected);
  connect(close, &QPushButton::clicked, this, &QDialog::accept);
  connect(pages_, &QTabWidget::currentChanged, this, &TmvAddObjectDialog::UpdateAddState);
  for (const WideString& schema : form_.Schemas()) schemas_->addItem(ToQString(schema));
  schemas_->setCurrentIndex(form_.SchemaIndex());
  schemas_->setEnabled(form_.SchemasEnabled());
  connect(schemas_, &QComboBox::activated, this, [this](int index) {
    form_.SetSchemaIndex(index);
    FillLists();
  });
  FillLists();
}

QListWidget* TmvAddObjectDialog::List(TmvAddObjectForm::Tab tab) const { return lists_[tab]; }

void TmvAddObjectDialog::FillLists() {
  for (TmvAddObjectForm::Tab tab : form_.VisibleTabs()) {
    lists_[tab]->clear();
    for (const TmvAddObjectForm::Item& item : form_.Items(tab)) lists_[tab]->addItem(ToQString(item.Caption));
  }
  UpdateAddState();
}

void TmvAddObjectDialog::UpdateAddState() {
  auto* list = qobject_cast<QListWidget*>(pages_->currentWidget());
  add_->setEnabled(list && !list->selectedItems().isEmpty());
}

void TmvAddObjectDialog::AddSelected() {
  auto* list = qobject_cast<QListWidget*>(pages_->currentWidget());
  if (!list) return;
  for (const TabRow& row : kTabs) {
    if (lists_[row.tab] != list) continue;
    std::vector<int> indexes;
    for (int i = 0; i < list->count(); ++i)
      if (list->item(i)->isSelected()) indexes.push_back(i);
    try {
      form_.AddObjects(row.tab, indexes);
    } catch (const Exception&) {
      // The model refused an object (the dialect or the host): the others stay added.
    }
  }
}

void TmvAddObjectDialog::hideEvent(QHideEvent* event) {
  // The size the user gave the window is the next one's.
  builder_.AddObjectFormOptions().SetWidth(width());
  builder_.AddObjectFormOptions().SetHeight(height());
  QDialog::hideEvent(event);
}

}  // namespace mv
