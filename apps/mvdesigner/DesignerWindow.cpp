#include "DesignerWindow.h"

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QMenuBar>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>

#include "Command.h"
#include "DialectNames.h"
#include "MetadataSource.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "model/QueryTree.h"
#include "support/Exceptions.h"
#include "surface/DesignPane.h"
#include "surface/MetadataContainerEditorDialog.h"
#include "surface/MetadataLoadWizardDialog.h"
#include "surface/TreeViews.h"
#include "surface/QtText.h"

namespace mv {

DesignerWindow::DesignerWindow() {
  setWindowTitle(QStringLiteral("Morvane designer"));
  provider_ = mvsql::CreateDialect("sql92");
  builder_ = TmvCreate<TmvQueryBuilder>();
  builder_->SetSyntaxProvider(provider_.get());

  QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
  file->addAction(QStringLiteral("&Open query with layout..."), QKeySequence::Open, this, [this] {
    const QString path = QFileDialog::getOpenFileName(this, QString(), QString(), QStringLiteral("Layout (*.xml)"));
    if (!path.isEmpty()) OpenLayout(path);
  });
  file->addAction(QStringLiteral("&Save query with layout..."), QKeySequence::Save, this, [this] {
    const QString path = QFileDialog::getSaveFileName(this, QString(), QString(), QStringLiteral("Layout (*.xml)"));
    if (!path.isEmpty()) SaveLayout(path);
  });
  file->addSeparator();
  file->addAction(QStringLiteral("E&xit"), QKeySequence::Quit, this, &QWidget::close);

  InstallMetadataDialogs(this);
  QMenu* metadata = menuBar()->addMenu(QStringLiteral("&Metadata"));
  metadata->addAction(QStringLiteral("&Edit Container..."), this, [this] {
    EditMetadataContainer(*builder_->MetadataContainer(), false, builder_->MetadataFilter());
  });
  metadata->addAction(QStringLiteral("&Load Metadata Wizard..."), this, [this] {
    TmvMetadataLoadWizard wizard(*builder_->MetadataContainer());
    wizard.SetMetadataFilter(builder_->MetadataFilter());
    TmvMetadataLoadWizardDialog dialog(wizard, this);
    dialog.exec();
  });

  auto* toolbar = addToolBar(QStringLiteral("Dialect"));
  toolbar->addWidget(new QLabel(QStringLiteral(" Dialect: ")));
  dialects_ = new QComboBox;
  for (const mvsql::DialectShortName& dialect : mvsql::DialectShortNames()) {
    try {
      mvsql::FindDialect(dialect.shortName);
      dialects_->addItem(QString::fromLatin1(dialect.shortName));
    } catch (const mvsql::UsageError&) {
      // A dialect this build does not hold is not offered.
    }
  }
  toolbar->addWidget(dialects_);
  connect(dialects_, &QComboBox::currentTextChanged, this,
          [this](const QString& name) { SetDialect(name.toStdString()); });

  tree_ = new TmvTreeViewMetadata(builder_.get());
  structure_ = new TmvTreeViewQueryStructure(builder_.get());
  auto* trees = new QSplitter(Qt::Vertical);
  trees->addWidget(tree_);
  trees->addWidget(structure_);

  pane_ = new TmvDesignPane;
  sqlText_ = new QPlainTextEdit;
  sqlText_->setObjectName(QStringLiteral("SqlText"));
  sqlText_->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
  sqlText_->installEventFilter(this);

  auto* right = new QSplitter(Qt::Vertical);
  right->addWidget(pane_);
  right->addWidget(sqlText_);
  right->setSizes({560, 180});
  auto* main = new QSplitter(Qt::Horizontal);
  main->addWidget(trees);
  main->addWidget(right);
  main->setStretchFactor(1, 4);
  main->setSizes({220, 1000});
  setCentralWidget(main);

  builder_->OnSQLUpdated = [this](TmvQueryModelHost*) { ShowSql(); };
  pane_->SetQueryBuilder(builder_.get());
  statusBar()->showMessage(QStringLiteral("Ready"));
}

DesignerWindow::~DesignerWindow() {
  builder_->OnSQLUpdated = nullptr;
  pane_->SetQueryBuilder(nullptr);
}

void DesignerWindow::LoadSQLite(const std::string& path) {
  metadata_.reset();
  metadata_ = std::make_unique<mvsql::MetadataSource>(*builder_->SQLContext(), *builder_->MetadataContainer());
  metadata_->LoadSQLite(path);
  tree_->ReloadNodes();
  statusBar()->showMessage(QStringLiteral("Metadata of %1").arg(QString::fromStdString(path)));
}

void DesignerWindow::LoadMetadataXml(const std::string& path) {
  metadata_.reset();
  metadata_ = std::make_unique<mvsql::MetadataSource>(*builder_->SQLContext(), *builder_->MetadataContainer());
  metadata_->LoadXml(path);
  tree_->ReloadNodes();
}

void DesignerWindow::SetDialect(const std::string& name) {
  const WideString text = builder_->GetSql();
  try {
    TmvOwned<TmvBaseSyntaxProvider> provider = mvsql::CreateDialect(name);
    builder_->SetSyntaxProvider(provider.get());
    provider_.swap(provider);
    if (dialects_->currentText() != QString::fromStdString(name))
      dialects_->setCurrentText(QString::fromStdString(name));
    SetSql(ToQString(text));
  } catch (const mvsql::UsageError& error) {
    statusBar()->showMessage(QString::fromStdString(error.message));
  } catch (const std::exception& error) {
    statusBar()->showMessage(QString::fromUtf8(error.what()));
  }
}

bool DesignerWindow::SetSql(const QString& text) {
  try {
    builder_->SetSql(FromQString(text));
    ShowSql();
    statusBar()->showMessage(QStringLiteral("Ready"));
    return true;
  } catch (const Exception& error) {
    statusBar()->showMessage(ToQString(error.Message()));
    return false;
  }
}

bool DesignerWindow::OpenLayout(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    statusBar()->showMessage(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return false;
  }
  try {
    builder_->SetLayout(FromQString(QString::fromUtf8(file.readAll())));
    ShowSql();
    statusBar()->showMessage(path);
    return true;
  } catch (const Exception& error) {
    statusBar()->showMessage(QStringLiteral("%1: %2").arg(path, ToQString(error.Message())));
    return false;
  }
}

bool DesignerWindow::SaveLayout(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
      file.write(ToQString(builder_->GetLayout()).toUtf8()) < 0) {
    statusBar()->showMessage(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return false;
  }
  statusBar()->showMessage(QStringLiteral("Saved %1").arg(path));
  return true;
}

void DesignerWindow::ShowSql() {
  if (showingSql_) return;
  showingSql_ = true;
  const QString text = ToQString(builder_->GetSql());
  if (sqlText_->toPlainText() != text) sqlText_->setPlainText(text);
  structure_->UpdateQueryStructure();
  showingSql_ = false;
}

bool DesignerWindow::eventFilter(QObject* watched, QEvent* event) {
  // The text goes to the model on Ctrl+Return and when the editor loses focus.
  if (watched == sqlText_) {
    if (event->type() == QEvent::KeyPress) {
      auto* key = static_cast<QKeyEvent*>(event);
      if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && (key->modifiers() & Qt::ControlModifier)) {
        SetSql(sqlText_->toPlainText());
        return true;
      }
    } else if (event->type() == QEvent::FocusOut && !showingSql_) {
      if (sqlText_->toPlainText() != ToQString(builder_->GetSql())) SetSql(sqlText_->toPlainText());
    }
  }
  return QMainWindow::eventFilter(watched, event);
}

}  // namespace mv
