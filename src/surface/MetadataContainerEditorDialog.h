// The metadata container editor's window: the tree of the editor's copy with
// its tool buttons, the property panes beside it, and the file, OK and
// Cancel buttons. InstallMetadataDialogs makes these windows (and the load
// wizard's) the ones EditMetadataContainer and the editor's Load button open.
#pragma once

#include <QDialog>

#include "component/MetadataContainerEditor.h"
#include "localization/FormLocalizer.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace mv {

class TmvMetadataContainerEditorDialog : public QDialog {
  Q_OBJECT
 public:
  TmvMetadataContainerEditorDialog(TmvMetadataContainerEditor& editor, QWidget* parent = nullptr);
  TmvMetadataContainerEditor& Editor() { return editor_; }
  QTreeWidget* Tree() const { return tree_; }
  // The tree item of an editor node; null if it is not shown.
  QTreeWidgetItem* ItemOf(const TmvMetadataContainerEditor::Node* node) const;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void FillTree();
  void CurrentChanged();
  void ShowPane();
  void PaneEdited();
  void Delete();
  void UpdateButtons();

  TmvMetadataContainerEditor& editor_;
  TmvQBLocalizerForm localizer_;
  bool filling_ = false;
  QTreeWidget* tree_;
  QToolButton* tools_[TmvMetadataContainerEditor::kToolCount];
  QToolButton* delete_;
  QStackedWidget* panes_;
  QLabel* objectType_;
  QLabel* objectDatabase_;
  QLabel* objectSchema_;
  QLabel* objectName_;
  QLineEdit* objectShort_;
  QLineEdit* objectLong_;
  QLineEdit* objectAltName_;
  QCheckBox* objectVisible_;
  QCheckBox* objectSystem_;
  QLineEdit* fieldName_;
  QLineEdit* fieldAltName_;
  QLineEdit* fieldType_;
  QLineEdit* fieldShort_;
  QLineEdit* fieldLong_;
};

// Shows the editor's and the load wizard's windows for EditMetadataContainer
// and the editor's Load button, as modal dialogs over `parent`.
void InstallMetadataDialogs(QWidget* parent);

}  // namespace mv
