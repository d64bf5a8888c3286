// The dialog of a properties form: a widget for each control of the form
// (check boxes, radio buttons, edits with their labels, choices), named as
// the control is, so that its caption comes from the form's section of the
// current language ("cbTop.Caption") and tests can find it. Every change of
// a widget goes into the form at once, and the widgets follow what the form
// enables. OK runs the form's test: its message shows in the dialog, which
// stays open; Cancel saves nothing.
#pragma once

#include <QDialog>
#include <map>
#include <memory>

#include "frontend/PropertiesForm.h"

class QLabel;

namespace mv {

class TmvQBLocalizerForm;

class TmvPropertiesDialog : public QDialog {
  Q_OBJECT
 public:
  TmvPropertiesDialog(TmvQBPropertiesForm& form, QWidget* parent = nullptr);
  ~TmvPropertiesDialog() override;

  TmvQBPropertiesForm& Form() const { return form_; }
  // The message of the last refused OK; empty when none.
  QString Message() const;

 public slots:
  void accept() override;

 private:
  // The widgets show the form's values and switches.
  void Refresh();
  TmvQBPropertiesForm& form_;
  std::map<WideString, QWidget*> widgets_;
  QLabel* message_;
  std::unique_ptr<TmvQBLocalizerForm> localizer_;
  bool refreshing_ = false;
};

// Shows the dialog of the form modally; true when the user pressed OK and
// the form's test passed.
bool ShowPropertiesDialog(TmvQBPropertiesForm& form, QWidget* parent);

}  // namespace mv
