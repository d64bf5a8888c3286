#include "surface/MetadataContainerEditorDialog.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "component/MetadataLoadWizard.h"
#include "support/Exceptions.h"
#include "surface/FormCaptions.h"
#include "surface/MetadataLoadWizardDialog.h"
#include "surface/QtText.h"

namespace mv {

namespace {

using E = TmvMetadataContainerEditor;

struct ToolRow {
  const char* name;
  const char* caption;
};
// In the order of TmvMetadataContainerEditor::Tool.
constexpr ToolRow kTools[] = {{"sbUserObjects", "User"}, {"sbSystemObjects", "System"},
                              {"sbTables", "Tables"},    {"sbViews", "Views"},
                              {"sbProcedures", "Procedures"}, {"sbSynonyms", "Synonyms"}};
static_assert(std::size(kTools) == E::kToolCount);

template <class T>
T* Named(T* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

E::Node* NodeOf(QTreeWidgetItem* item) {
  return item ? reinterpret_cast<E::Node*>(item->data(0, Qt::UserRole).value<quintptr>()) : nullptr;
}

}  // namespace

TmvMetadataContainerEditorDialog::TmvMetadataContainerEditorDialog(TmvMetadataContainerEditor& editor,
                                                                   QWidget* parent)
    : QDialog(parent), editor_(editor), localizer_(u"TfMetadataContainerEditor") {
  setObjectName(QStringLiteral("TfMetadataContainerEditor"));
  setWindowTitle(QStringLiteral("Metadata Container Editor"));
  auto* layout = new QVBoxLayout(this);
  auto* toolbar = new QHBoxLayout;
  for (int i = 0; i < E::kToolCount; ++i) {
    tools_[i] = Named(new QToolButton(this), kTools[i].name);
    tools_[i]->setText(QString::fromLatin1(kTools[i].caption));
    tools_[i]->setCheckable(true);
    tools_[i]->setChecked(editor.ToolDown(E::Tool(i)));
    toolbar->addWidget(tools_[i]);
    connect(tools_[i], &QToolButton::toggled, this, [this, i](bool down) {
      editor_.SetToolDown(E::Tool(i), down);
      FillTree();
    });
  }
  delete_ = Named(new QToolButton(this), "sbDelete");
  delete_->setText(QStringLiteral("Delete"));
  auto* load = Named(new QToolButton(this), "sbLoad");
  load->setText(QStringLiteral("Load..."));
  toolbar->addWidget(delete_);
  toolbar->addWidget(load);
  toolbar->addStretch();
  layout->addLayout(toolbar);

  auto* body = new QHBoxLayout;
  tree_ = Named(new QTreeWidget(this), "tMetadata");
  tree_->setHeaderHidden(true);
  body->addWidget(tree_, 1);
  panes_ = Named(new QStackedWidget(this), "pProps");
  auto* none = Named(new QLabel(ToQString(E::NoPropertiesText())), "lNoProperties");
  none->setAlignment(Qt::AlignCenter);
  panes_->addWidget(none);
  auto* objectPane = Named(new QWidget, "pObjectProps");
  auto* objectForm = new QFormLayout(objectPane);
  objectForm->addRow(QStringLiteral("Type:"), objectType_ = Named(new QLabel, "lObjectType"));
  objectForm->addRow(QStringLiteral("Database:"), objectDatabase_ = Named(new QLabel, "lObjectDatabase"));
  objectForm->addRow(QStringLiteral("Schema:"), objectSchema_ = Named(new QLabel, "lObjectSchema"));
  objectForm->addRow(QStringLiteral("Name:"), objectName_ = Named(new QLabel, "lObjectName"));
  objectForm->addRow(QStringLiteral("Short description:"),
                     objectShort_ = Named(new QLineEdit, "eObjectShortDescription"));
  objectForm->addRow(QStringLiteral("Long description:"), objectLong_ = Named(new QLineEdit, "eObjectLongDescription"));
  objectForm->addRow(QStringLiteral("Alternate name:"), objectAltName_ = Named(new QLineEdit, "eObjectAltName"));
  objectForm->addRow(objectVisible_ = Named(new QCheckBox(QStringLiteral("Visible")), "cbObjectVisible"));
  objectForm->addRow(objectSystem_ = Named(new QCheckBox(QStringLiteral("System")), "cbObjectSystem"));
  panes_->addWidget(objectPane);
  auto* fieldPane = Named(new QWidget, "pFieldProps");
  auto* fieldForm = new QFormLayout(fieldPane);
  fieldForm->addRow(QStringLiteral("Name:"), fieldName_ = Named(new QLineEdit, "eFieldName"));
  fieldForm->addRow(QStringLiteral("Alternate name:"), fieldAltName_ = Named(new QLineEdit, "eFieldAltName"));
  fieldForm->addRow(QStringLiteral("Type:"), fieldType_ = Named(new QLineEdit, "eFieldType"));
  fieldForm->addRow(QStringLiteral("Short description:"), fieldShort_ = Named(new QLineEdit, "eFieldShortDescription"));
  fieldForm->addRow(QStringLiteral("Long description:"), fieldLong_ = Named(new QLineEdit, "eFieldLongDescription"));
  panes_->addWidget(fieldPane);
  body->addWidget(panes_, 1);
  layout->addLayout(body, 1);

  auto* buttons = new QHBoxLayout;
  auto* saveXml = Named(new QPushButton(QStringLiteral("Save to XML..."), this), "bSaveToXML");
  auto* loadXml = Named(new QPushButton(QStringLiteral("Load from XML..."), this), "bLoadFromXML");
  auto* ok = Named(new QPushButton(QStringLiteral("OK"), this), "bOk");
  auto* cancel = Named(new QPushButton(QStringLiteral("Cancel"), this), "bCancel");
  buttons->addWidget(saveXml);
  buttons->addWidget(loadXml);
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  layout->addLayout(buttons);
  // Without Cancel, OK takes its place and answers to Escape too.
  cancel->setVisible(!editor.NoCancel());
  ok->setDefault(true);

  RegisterCaption(localizer_, u"Caption", this);
  for (QAbstractButton* b : std::initializer_list<QAbstractButton*>{saveXml, loadXml, ok, cancel})
    RegisterCaption(localizer_, FromQString(b->objectName() + QStringLiteral(".Caption")), b);
  localizer_.Loaded();

  connect(tree_, &QTreeWidget::currentItemChanged, this, &TmvMetadataContainerEditorDialog::CurrentChanged);
  connect(delete_, &QToolButton::clicked, this, &TmvMetadataContainerEditorDialog::Delete);
  connect(load, &QToolButton::clicked, this, [this] {
    editor_.RunLoadWizard();
    FillTree();
  });
  for (QLineEdit* e : {objectShort_, objectLong_, objectAltName_, fieldName_, fieldAltName_, fieldType_, fieldShort_,
                       fieldLong_})
    connect(e, &QLineEdit::textEdited, this, &TmvMetadataContainerEditorDialog::PaneEdited);
  for (QCheckBox* c : {objectVisible_, objectSystem_})
    connect(c, &QCheckBox::toggled, this, &TmvMetadataContainerEditorDialog::PaneEdited);
  connect(saveXml, &QPushButton::clicked, this, [this] {
    QString filter;
    const QString xmlFilter = QStringLiteral("XML files (*.xml)");
    const QString name = QFileDialog::getSaveFileName(this, QString(), QString(),
                                                      xmlFilter + QStringLiteral(";;All files (*)"), &filter);
    if (name.isEmpty()) return;
    try {
      editor_.SaveToXML(FromQString(name), filter == xmlFilter);
    } catch (const Exception& e) {
      QMessageBox::warning(this, windowTitle(), ToQString(e.Message()));
    }
  });
  connect(loadXml, &QPushButton::clicked, this, [this] {
    const QString name = QFileDialog::getOpenFileName(this, QString(), QString(),
                                                      QStringLiteral("XML files (*.xml);;All files (*)"));
    if (name.isEmpty()) return;
    try {
      editor_.LoadFromXML(FromQString(name));
    } catch (const Exception& e) {
      QMessageBox::warning(this, windowTitle(), ToQString(e.Message()));
    }
    FillTree();
  });
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);
  connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
  editor_.OnConfirm = [this](WideStringView question) {
    return QMessageBox::question(this, windowTitle(), ToQString(question)) == QMessageBox::Yes;
  };
  FillTree();
}

void TmvMetadataContainerEditorDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Delete && tree_->hasFocus()) return Delete();
  if (event->key() == Qt::Key_Escape && editor_.NoCancel()) return accept();
  QDialog::keyPressEvent(event);
}

void TmvMetadataContainerEditorDialog::FillTree() {
  filling_ = true;
  tree_->clear();
  std::function<void(const std::vector<std::unique_ptr<E::Node>>&, QTreeWidgetItem*)> add =
      [&](const std::vector<std::unique_ptr<E::Node>>& nodes, QTreeWidgetItem* parent) {
        for (const auto& node : nodes) {
          auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(tree_);
          item->setText(0, ToQString(node->Text));
          item->setData(0, Qt::UserRole, QVariant::fromValue(quintptr(node.get())));
          add(node->Children, item);
        }
      };
  add(editor_.Tree(), nullptr);
  tree_->setCurrentItem(ItemOf(editor_.Selected()));
  filling_ = false;
  ShowPane();
}

QTreeWidgetItem* TmvMetadataContainerEditorDialog::ItemOf(const E::Node* node) const {
  if (!node) return nullptr;
  for (QTreeWidgetItemIterator it(tree_); *it; ++it)
    if (NodeOf(*it) == node) return *it;
  return nullptr;
}

void TmvMetadataContainerEditorDialog::CurrentChanged() {
  if (filling_) return;
  editor_.Select(NodeOf(tree_->currentItem()));
  ShowPane();
}

void TmvMetadataContainerEditorDialog::ShowPane() {
  filling_ = true;
  panes_->setCurrentIndex(editor_.CurrentPane());
  const E::ObjectProps& o = editor_.ObjectPane();
  objectType_->setText(ToQString(o.Type));
  objectDatabase_->setText(ToQString(o.Database));
  objectSchema_->setText(ToQString(o.Schema));
  objectName_->setText(ToQString(o.Name));
  objectShort_->setText(ToQString(o.ShortDescription));
  objectLong_->setText(ToQString(o.LongDescription));
  objectAltName_->setText(ToQString(o.AltName));
  objectVisible_->setChecked(o.Visible);
  objectSystem_->setChecked(o.System);
  const E::FieldProps& f = editor_.FieldPane();
  fieldName_->setText(ToQString(f.Name));
  fieldAltName_->setText(ToQString(f.AltName));
  fieldType_->setText(ToQString(f.Type));
  fieldShort_->setText(ToQString(f.ShortDescription));
  fieldLong_->setText(ToQString(f.LongDescription));
  filling_ = false;
  UpdateButtons();
}

void TmvMetadataContainerEditorDialog::PaneEdited() {
  if (filling_) return;
  E::ObjectProps& o = editor_.ObjectPane();
  o.ShortDescription = FromQString(objectShort_->text());
  o.LongDescription = FromQString(objectLong_->text());
  o.AltName = FromQString(objectAltName_->text());
  o.Visible = objectVisible_->isChecked();
  o.System = objectSystem_->isChecked();
  E::FieldProps& f = editor_.FieldPane();
  f.Name = FromQString(fieldName_->text());
  f.AltName = FromQString(fieldAltName_->text());
  f.Type = FromQString(fieldType_->text());
  f.ShortDescription = FromQString(fieldShort_->text());
  f.LongDescription = FromQString(fieldLong_->text());
  editor_.PaneChanged();
}

void TmvMetadataContainerEditorDialog::Delete() {
  if (!editor_.DeleteEnabled()) return;
  editor_.DeleteSelected();
  FillTree();
}

void TmvMetadataContainerEditorDialog::UpdateButtons() { delete_->setEnabled(editor_.DeleteEnabled()); }

void InstallMetadataDialogs(QWidget* parent) {
  QPointer<QWidget> owner(parent);
  SetMetadataContainerEditorForm([owner](TmvMetadataContainerEditor& editor) {
    TmvMetadataContainerEditorDialog dialog(editor, owner.data());
    return dialog.exec() == QDialog::Accepted;
  });
  SetMetadataLoadWizardForm([owner](TmvMetadataLoadWizard& wizard) {
    TmvMetadataLoadWizardDialog dialog(wizard, owner.data());
    dialog.exec();
  });
}

}  // namespace mv
