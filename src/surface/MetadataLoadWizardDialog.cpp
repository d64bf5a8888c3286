#include "surface/MetadataLoadWizardDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "support/Exceptions.h"
#include "surface/FormCaptions.h"
#include "surface/QtText.h"

namespace mv {

namespace {

using W = TmvMetadataLoadWizard;

const char* const kPageNames[] = {"tsWelcome", "tsSyntax",     "tsMetadata", "tsMetadataOpts",
                                  "tsLoadOpts", "tsFilter", "tsSaveToFile", "tsLoading"};
static_assert(std::size(kPageNames) == W::kPageCount);

struct KindRow {
  const char* name;
  const char* caption;
};
constexpr KindRow kKinds[] = {
    {"cbFilterTables", "Tables"}, {"cbFilterViews", "Views"}, {"cbFilterProcedures", "Procedures"},
    {"cbFilterSynonyms", "Synonyms"}};

template <class T>
T* Named(T* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

}  // namespace

TmvMetadataLoadWizardDialog::TmvMetadataLoadWizardDialog(TmvMetadataLoadWizard& wizard, QWidget* parent)
    : QDialog(parent), wizard_(wizard), localizer_(u"TfmvQBMetadataContainerLoad") {
  setObjectName(QStringLiteral("TfmvQBMetadataContainerLoad"));
  setWindowTitle(QStringLiteral("Load Metadata Wizard"));
  auto* layout = new QVBoxLayout(this);
  title_ = Named(new QLabel(this), "lTitle");
  layout->addWidget(title_);
  pages_ = Named(new QStackedWidget(this), "pcPages");
  layout->addWidget(pages_, 1);

  auto* welcome = new QVBoxLayout(AddPage(W::tsWelcome));
  clearBeforeLoading_ = Named(new QCheckBox(QStringLiteral("Clear Metadata Container before Loading")),
                              "cbClearBeforeLoading");
  welcome->addWidget(clearBeforeLoading_);
  welcome->addStretch();

  auto* syntax = new QVBoxLayout(AddPage(W::tsSyntax));
  syntax_ = Named(new QComboBox, "cbSyntaxProvider");
  syntax->addWidget(syntax_);
  syntax->addStretch();

  auto* metadata = new QVBoxLayout(AddPage(W::tsMetadata));
  connectionType_ = Named(new QComboBox, "cbConnectionType");
  metadata->addWidget(connectionType_);
  metadata->addStretch();

  auto* options = new QFormLayout(AddPage(W::tsMetadataOpts));
  driver_ = Named(new QComboBox, "cbDriver");
  for (const WideString& driver : TmvConnectionFrame::Drivers()) driver_->addItem(ToQString(driver));
  connection_ = Named(new QLineEdit, "eConnection");
  auto* test = Named(new QPushButton(QStringLiteral("Test Connection")), "bConnectionTest");
  options->addRow(QStringLiteral("Driver:"), driver_);
  options->addRow(QStringLiteral("Database or connection string:"), connection_);
  options->addRow(test);

  auto* databases = new QVBoxLayout(AddPage(W::tsLoadOpts));
  databases_ = Named(new QListWidget, "clbDatabases");
  databases->addWidget(databases_);

  auto* filter = new QVBoxLayout(AddPage(W::tsFilter));
  filterItems_ = Named(new QListWidget, "lbFilterItems");
  filter->addWidget(filterItems_);
  auto* itemButtons = new QHBoxLayout;
  auto* add = Named(new QPushButton(QStringLiteral("Add")), "bAddItem");
  auto* remove = Named(new QPushButton(QStringLiteral("Remove")), "bRemoveItem");
  auto* clear = Named(new QPushButton(QStringLiteral("Clear")), "bClear");
  for (QPushButton* b : {add, remove, clear}) itemButtons->addWidget(b);
  filter->addLayout(itemButtons);
  include_ = Named(new QRadioButton(QStringLiteral("&Include range")), "rbFilterInclude");
  exclude_ = Named(new QRadioButton(QStringLiteral("&Exclude range")), "rbFilterExclude");
  schemaMask_ = Named(new QLineEdit, "eSchemaMask");
  schemaCase_ = Named(new QCheckBox(QStringLiteral("Case sensitive")), "cbSchemaMaskCase");
  objectMask_ = Named(new QLineEdit, "eObjectMask");
  objectCase_ = Named(new QCheckBox(QStringLiteral("Case sensitive")), "cbObjectMaskCase");
  auto* item = new QFormLayout;
  item->addRow(include_, exclude_);
  item->addRow(QStringLiteral("Schema mask:"), schemaMask_);
  item->addRow(QString(), schemaCase_);
  item->addRow(QStringLiteral("Object mask:"), objectMask_);
  item->addRow(QString(), objectCase_);
  auto* kinds = new QHBoxLayout;
  for (int i = 0; i < 4; ++i) {
    kinds_[i] = Named(new QCheckBox(QString::fromLatin1(kKinds[i].caption)), kKinds[i].name);
    kinds->addWidget(kinds_[i]);
  }
  item->addRow(kinds);
  item->addRow(new QLabel(QStringLiteral("Use \"_\" to represent any single character;\n"
                                         "Use \"%\" to represent any number of characters.")));
  filter->addLayout(item);
  dontLoadSystem_ = Named(new QCheckBox(QStringLiteral("Do not load System metadata objects")),
                          "cbDontLoadSystemObjects");
  filter->addWidget(dontLoadSystem_);

  auto* save = new QHBoxLayout(AddPage(W::tsSaveToFile));
  fileName_ = Named(new QLineEdit, "eFileName");
  auto* browse = Named(new QPushButton(QStringLiteral("...")), "bBrowse");
  save->addWidget(fileName_, 1);
  save->addWidget(browse);

  auto* loading = new QVBoxLayout(AddPage(W::tsLoading));
  log_ = Named(new QPlainTextEdit, "mLog");
  log_->setReadOnly(true);
  loading->addWidget(log_);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  prev_ = Named(new QPushButton(QStringLiteral("< &Back"), this), "bPrev");
  next_ = Named(new QPushButton(QStringLiteral("&Next >"), this), "bNext");
  load_ = Named(new QPushButton(QStringLiteral("&Load"), this), "bLoad");
  close_ = Named(new QPushButton(QStringLiteral("&Close"), this), "bClose");
  for (QPushButton* b : {prev_, next_, load_, close_}) buttons->addWidget(b);
  layout->addLayout(buttons);

  RegisterCaption(localizer_, u"Caption", this);
  for (QPushButton* b : {prev_, next_, load_, close_, test, browse})
    RegisterCaption(localizer_, FromQString(b->objectName() + QStringLiteral(".Caption")), b);
  for (QAbstractButton* b :
       std::initializer_list<QAbstractButton*>{clearBeforeLoading_, include_, exclude_, dontLoadSystem_})
    RegisterCaption(localizer_, FromQString(b->objectName() + QStringLiteral(".Caption")), b);
  localizer_.Loaded();

  connect(next_, &QPushButton::clicked, this, &TmvMetadataLoadWizardDialog::Next);
  connect(load_, &QPushButton::clicked, this, &TmvMetadataLoadWizardDialog::Next);
  connect(prev_, &QPushButton::clicked, this, &TmvMetadataLoadWizardDialog::Back);
  connect(close_, &QPushButton::clicked, this, &QDialog::accept);
  connect(test, &QPushButton::clicked, this, [this] {
    Apply();
    QMessageBox::information(this, windowTitle(), ToQString(wizard_.TestConnection()));
  });
  connect(browse, &QPushButton::clicked, this, [this] {
    const QString name = QFileDialog::getSaveFileName(this, QString(), fileName_->text(),
                                                      QStringLiteral("XML files (*.xml);;All files (*)"));
    if (!name.isEmpty()) fileName_->setText(name);
  });
  connect(syntax_, &QComboBox::activated, this, [this](int index) { wizard_.SetSyntaxIndex(index); });
  connect(connectionType_, &QComboBox::activated, this, [this](int index) {
    wizard_.SetConnectionTypeIndex(index);
    ShowPage();
  });
  connect(filterItems_, &QListWidget::currentRowChanged, this, [this](int row) {
    if (showing_) return;
    wizard_.SetFilterIndex(row);
    ShowFilterItem();
  });
  connect(add, &QPushButton::clicked, this, [this] {
    wizard_.AddFilterItem();
    FillFilterList();
  });
  connect(remove, &QPushButton::clicked, this, [this] {
    wizard_.RemoveFilterItem();
    FillFilterList();
  });
  connect(clear, &QPushButton::clicked, this, [this] {
    wizard_.ClearFilterItems();
    FillFilterList();
  });
  // rbItemChanged: each control of the item writes the item back.
  for (QAbstractButton* b : std::initializer_list<QAbstractButton*>{include_, exclude_, schemaCase_, objectCase_,
                                                                    kinds_[0], kinds_[1], kinds_[2], kinds_[3]})
    connect(b, &QAbstractButton::toggled, this, &TmvMetadataLoadWizardDialog::ApplyFilterItem);
  for (QLineEdit* e : {schemaMask_, objectMask_})
    connect(e, &QLineEdit::textEdited, this, &TmvMetadataLoadWizardDialog::ApplyFilterItem);
  wizard_.OnLogChanged = [this] {
    log_->setPlainText(ToQString(JoinLines()));
    QCoreApplication::processEvents();
  };
  ShowPage();
}

WideString TmvMetadataLoadWizardDialog::JoinLines() const {
  WideString text;
  for (const WideString& line : wizard_.Log()) text += (text.empty() ? u"" : u"\n") + line;
  return text;
}

QWidget* TmvMetadataLoadWizardDialog::AddPage(TmvMetadataLoadWizard::Page page) {
  auto* widget = Named(new QWidget(pages_), kPageNames[page]);
  pages_->addWidget(widget);
  return widget;
}

void TmvMetadataLoadWizardDialog::Apply() {
  wizard_.SetClearBeforeLoading(clearBeforeLoading_->isChecked());
  if (TmvConnectionFrame* frame = wizard_.Frame()) {
    frame->SetDriverIndex(std::max(0, driver_->currentIndex()));
    frame->SetConnectionText(FromQString(connection_->text()));
  }
  std::vector<TmvMetadataLoadWizard::Database>& list = wizard_.Databases();
  for (int i = 0; i < databases_->count() && i < int(list.size()); ++i)
    list[size_t(i)].Checked = databases_->item(i)->checkState() == Qt::Checked;
  wizard_.SetDontLoadSystemObjects(dontLoadSystem_->isChecked());
  wizard_.SetFileName(FromQString(fileName_->text()));
}

void TmvMetadataLoadWizardDialog::Next() {
  Apply();
  try {
    wizard_.Next();
  } catch (const Exception& e) {
    QMessageBox::warning(this, windowTitle(), ToQString(e.Message()));
  } catch (const std::exception& e) {
    QMessageBox::warning(this, windowTitle(), QString::fromUtf8(e.what()));
  }
  ShowPage();
}

void TmvMetadataLoadWizardDialog::Back() {
  Apply();
  wizard_.Back();
  ShowPage();
}

void TmvMetadataLoadWizardDialog::ShowPage() {
  showing_ = true;
  const W::Page page = wizard_.CurrentPage();
  pages_->setCurrentIndex(page);
  title_->setText(ToQString(W::PageTitle(page)));
  clearBeforeLoading_->setChecked(wizard_.ClearBeforeLoading());
  if (syntax_->count() != int(wizard_.SyntaxProviders().size())) {
    syntax_->clear();
    for (const WideString& name : wizard_.SyntaxProviders()) syntax_->addItem(ToQString(name));
  }
  syntax_->setCurrentIndex(wizard_.SyntaxIndex());
  if (connectionType_->count() != int(wizard_.ConnectionTypes().size())) {
    connectionType_->clear();
    for (const WideString& name : wizard_.ConnectionTypes()) connectionType_->addItem(ToQString(name));
  }
  connectionType_->setCurrentIndex(wizard_.ConnectionTypeIndex());
  databases_->clear();
  for (const TmvMetadataLoadWizard::Database& database : wizard_.Databases()) {
    auto* item = new QListWidgetItem(ToQString(database.Caption), databases_);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(database.Checked ? Qt::Checked : Qt::Unchecked);
  }
  dontLoadSystem_->setChecked(wizard_.DontLoadSystemObjects());
  fileName_->setText(ToQString(wizard_.FileName()));
  showing_ = false;
  FillFilterList();
  prev_->setEnabled(wizard_.BackEnabled());
  next_->setVisible(!wizard_.LoadShown() && page != W::tsLoading);
  next_->setEnabled(wizard_.NextEnabled());
  load_->setVisible(wizard_.LoadShown());
  close_->setEnabled(wizard_.CloseEnabled());
}

void TmvMetadataLoadWizardDialog::FillFilterList() {
  showing_ = true;
  filterItems_->clear();
  TmvMetadataFilter& filter = wizard_.Filter();
  for (int i = 0; i < filter.Count(); ++i) filterItems_->addItem(ToQString(W::FilterItemText(*filter.Items(i))));
  filterItems_->setCurrentRow(wizard_.FilterIndex());
  showing_ = false;
  ShowFilterItem();
}

void TmvMetadataLoadWizardDialog::ShowFilterItem() {
  const int index = wizard_.FilterIndex();
  TmvMetadataFilter& filter = wizard_.Filter();
  TmvMetadataFilterItem* item = index >= 0 && index < filter.Count() ? filter.Items(index) : nullptr;
  showing_ = true;
  for (QWidget* w : std::initializer_list<QWidget*>{include_, exclude_, schemaMask_, schemaCase_, objectMask_,
                                                    objectCase_, kinds_[0], kinds_[1], kinds_[2], kinds_[3]})
    w->setEnabled(item != nullptr);
  if (item) {
    include_->setChecked(!item->Exclude());
    exclude_->setChecked(item->Exclude());
    schemaMask_->setText(ToQString(item->SchemaMask()));
    schemaCase_->setChecked(item->SchemaMaskCaseSensitive());
    objectMask_->setText(ToQString(item->ObjectMask()));
    objectCase_->setChecked(item->ObjectMaskCaseSensitive());
    for (int kind = 0; kind < 4; ++kind) kinds_[kind]->setChecked(item->AppliesTo(TmvMetadataFilterApplyFor(kind)));
  }
  showing_ = false;
}

void TmvMetadataLoadWizardDialog::ApplyFilterItem() {
  const int index = wizard_.FilterIndex();
  if (showing_ || index < 0 || index >= wizard_.Filter().Count()) return;
  TmvMetadataFilterItem* item = wizard_.Filter().Items(index);
  item->SetExclude(exclude_->isChecked());
  item->SetSchemaMask(FromQString(schemaMask_->text()));
  item->SetSchemaMaskCaseSensitive(schemaCase_->isChecked());
  item->SetObjectMask(FromQString(objectMask_->text()));
  item->SetObjectMaskCaseSensitive(objectCase_->isChecked());
  TmvMetadataFilterApplyForSet kinds = 0;
  for (int kind = 0; kind < 4; ++kind)
    if (kinds_[kind]->isChecked()) kinds |= MetadataFilterKindBit(TmvMetadataFilterApplyFor(kind));
  item->SetApplyFor(kinds);
  // UpdateText: the line of the item follows its options.
  if (QListWidgetItem* line = filterItems_->item(index)) line->setText(ToQString(W::FilterItemText(*item)));
}

}  // namespace mv
