// The add-object window: a list per kind of object (tables, views,
// procedures, synonyms) on tabs, filtered by a schema choice; "Add Object"
// (or a double click) adds the selected objects to the active SELECT, and
// the window stays open for more until "Close".
#pragma once

#include <QDialog>

#include "component/AddObjectForm.h"
#include "localization/FormLocalizer.h"

class QComboBox;
class QListWidget;
class QPushButton;
class QTabWidget;

namespace mv {

class TmvAddObjectDialog : public QDialog {
  Q_OBJECT
 public:
  TmvAddObjectDialog(TmvQueryBuilder& builder, QWidget* parent = nullptr);
  TmvAddObjectForm& Form() { return form_; }
  QComboBox* Schemas() const { return schemas_; }
  QTabWidget* Pages() const { return pages_; }
  // The list of a kind; null when its tab is hidden.
  QListWidget* List(TmvAddObjectForm::Tab tab) const;
  // Adds the selection of the active tab.
  void AddSelected();

 protected:
  void hideEvent(QHideEvent* event) override;

 private:
  void FillLists();
  void UpdateAddState();

  TmvQueryBuilder& builder_;
  TmvAddObjectForm form_;
  TmvQBLocalizerForm localizer_;
  QComboBox* schemas_;
  QTabWidget* pages_;
  QListWidget* lists_[4] = {};
  QPushButton* add_;
};

}  // namespace mv
