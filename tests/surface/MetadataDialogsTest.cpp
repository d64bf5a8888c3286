// The load metadata wizard and the container editor driven as a user drives
// them: the wizard walked over the Chinook SQLite file, and an object deleted
// in the editor and applied with OK.
#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTimer>
#include <QTreeWidget>
#include <QtTest>

#include <filesystem>
#include <functional>

#include "ChinookLoader.h"
#include "ReferenceDialect.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "surface/MetadataContainerEditorDialog.h"
#include "surface/MetadataLoadWizardDialog.h"
#include "surface/QtText.h"

using namespace mv;

class MetadataDialogsTest : public QObject {
  Q_OBJECT

  static void Press(QDialog* dialog, const char* name) {
    auto* button = dialog->findChild<QAbstractButton*>(QString::fromLatin1(name));
    QVERIFY2(button && button->isEnabled() && button->isVisible(), name);
    button->click();
  }
  static void Choose(QDialog* dialog, const char* combo, const char* text) {
    auto* box = dialog->findChild<QComboBox*>(QString::fromLatin1(combo));
    QVERIFY2(box, combo);
    const int index = box->findText(QString::fromLatin1(text));
    QVERIFY2(index >= 0, text);
    box->setCurrentIndex(index);
    emit box->activated(index);
  }

 private slots:
  void initTestCase() { InitializeEngine(); }

  void WizardLoadsChinook() {
    if (mvtest::ChinookSqlitePath().empty()) QSKIP("Chinook_Sqlite.sqlite is not in the shared corpus");
    TmvOwned<TmvBaseSQLContext> context = TmvCreate<TmvBaseSQLContext>();
    TmvOwned<TmvMetadataContainer> target = TmvCreate<TmvMetadataContainer>(nullptr, context.get());
    TmvMetadataLoadWizard wizard(*target);
    TmvMetadataLoadWizardDialog dialog(wizard);
    dialog.show();
    Press(&dialog, "bNext");
    Choose(&dialog, "cbSyntaxProvider", "TmvSQLiteSyntaxProvider");
    Press(&dialog, "bNext");
    Choose(&dialog, "cbConnectionType", "TmvConnectionMetadataProvider");
    Press(&dialog, "bNext");
    QCOMPARE(wizard.CurrentPage(), TmvMetadataLoadWizard::tsMetadataOpts);
    dialog.findChild<QLineEdit*>(QStringLiteral("eConnection"))
        ->setText(QString::fromStdString(mvtest::ChinookSqlitePath()));
    Press(&dialog, "bNext");
    QCOMPARE(wizard.CurrentPage(), TmvMetadataLoadWizard::tsLoadOpts);  // the default database, checked
    Press(&dialog, "bNext");
    QCOMPARE(wizard.CurrentPage(), TmvMetadataLoadWizard::tsFilter);
    Press(&dialog, "bNext");
    const std::string xml = (std::filesystem::temp_directory_path() / "wizard59-gui.xml").string();
    dialog.findChild<QLineEdit*>(QStringLiteral("eFileName"))->setText(QString::fromStdString(xml));
    Press(&dialog, "bLoad");
    QCOMPARE(wizard.CurrentPage(), TmvMetadataLoadWizard::tsLoading);
    QCOMPARE(target->Count(), 11);
    QVERIFY(dialog.findChild<QPlainTextEdit*>(QStringLiteral("mLog"))
                ->toPlainText()
                .endsWith(QStringLiteral("Loading completed successfully...")));
    QVERIFY(std::filesystem::exists(xml));
    std::filesystem::remove(xml);
    Press(&dialog, "bClose");
  }

  void EditorDeletesAnObjectOnOk() {
    TmvOwned<TmvBaseSyntaxProvider> provider = mvtest::NewReferenceProvider();
    TmvOwned<TmvBaseSQLContext> context = TmvCreate<TmvBaseSQLContext>();
    context->SetSyntaxProvider(provider.get());
    {
      TmvOwned<TmvMetadataContainer> container = TmvCreate<TmvMetadataContainer>(nullptr, context.get());
      container->AddTable(u"s", u"a", false);
      container->AddTable(u"s", u"b", false);
      container->SetLoaded(true);
      InstallMetadataDialogs(nullptr);
      bool seen = false;
      QTimer poll;
      QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<TmvMetadataContainerEditorDialog*>(QApplication::activeModalWidget());
        if (!dialog || seen) return;
        seen = true;
        TmvMetadataContainerEditor& editor = dialog->Editor();
        dialog->Tree()->setCurrentItem(dialog->ItemOf(editor.FindNode(u"s/a")));
        Press(dialog, "sbDelete");
        Press(dialog, "bOk");
        if (dialog->isVisible()) dialog->reject();
      });
      poll.start(10);
      QVERIFY(EditMetadataContainer(*container, false, nullptr));
      QVERIFY(seen);
      QCOMPARE(container->Count(), 1);
      QCOMPARE(QString(ToQString(container->Items(0)->NameStrNotQuoted())), QStringLiteral("b"));
    }
    SetMetadataContainerEditorForm(nullptr);
    SetMetadataLoadWizardForm(nullptr);
    context->SetSyntaxProvider(nullptr);
  }
};

QTEST_MAIN(MetadataDialogsTest)
#include "MetadataDialogsTest.moc"
