// The load metadata wizard's window: one page of a stacked widget per page
// of the wizard, Back, Next, Load and Close below them. The widgets only
// carry values to the wizard and back; the wizard decides.
#pragma once

#include <QDialog>

#include "component/MetadataLoadWizard.h"
#include "localization/FormLocalizer.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;

namespace mv {

class TmvMetadataLoadWizardDialog : public QDialog {
  Q_OBJECT
 public:
  TmvMetadataLoadWizardDialog(TmvMetadataLoadWizard& wizard, QWidget* parent = nullptr);
  TmvMetadataLoadWizard& Wizard() { return wizard_; }

 private:
  QWidget* AddPage(TmvMetadataLoadWizard::Page page);
  void Next();
  void Back();
  void Load();
  // Controls to the wizard, and the wizard to the controls of the shown page.
  void Apply();
  void ShowPage();
  void ShowFilterItem();
  void ApplyFilterItem();
  void FillFilterList();
  WideString JoinLines() const;

  TmvMetadataLoadWizard& wizard_;
  TmvQBLocalizerForm localizer_;
  bool showing_ = false;
  QLabel* title_;
  QStackedWidget* pages_;
  QCheckBox* clearBeforeLoading_;
  QComboBox* syntax_;
  QComboBox* connectionType_;
  QComboBox* driver_;
  QLineEdit* connection_;
  QListWidget* databases_;
  QListWidget* filterItems_;
  QRadioButton* include_;
  QRadioButton* exclude_;
  QLineEdit* schemaMask_;
  QCheckBox* schemaCase_;
  QLineEdit* objectMask_;
  QCheckBox* objectCase_;
  QCheckBox* kinds_[4];
  QCheckBox* dontLoadSystem_;
  QLineEdit* fileName_;
  QPlainTextEdit* log_;
  QPushButton* prev_;
  QPushButton* next_;
  QPushButton* load_;
  QPushButton* close_;
};

}  // namespace mv
