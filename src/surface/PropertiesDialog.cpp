#include "surface/PropertiesDialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "localization/FormLocalizer.h"
#include "support/Exceptions.h"
#include "surface/FormCaptions.h"
#include "surface/QtText.h"

namespace mv {

namespace {

using K = TmvFormControlKind;

}  // namespace

TmvPropertiesDialog::TmvPropertiesDialog(TmvQBPropertiesForm& form, QWidget* parent)
    : QDialog(parent), form_(form), localizer_(std::make_unique<TmvQBLocalizerForm>(form.ClassName())) {
  setObjectName(ToQString(form.ClassName()));
  setWindowTitle(ToQString(form.Caption()));
  auto* layout = new QVBoxLayout(this);
  auto* fields = new QFormLayout;
  layout->addLayout(fields);
  std::map<WideString, QButtonGroup*> groups;
  RegisterCaption(*localizer_, u"Caption", this);
  for (const TmvFormControl& control : form.Controls()) {
    const QString name = ToQString(control.Name);
    QWidget* widget = nullptr;
    QLabel* label = nullptr;
    switch (control.Kind) {
      case K::CheckBox: {
        auto* box = new QCheckBox(ToQString(control.Caption), this);
        connect(box, &QCheckBox::clicked, this, [this, key = control.Name] {
          if (refreshing_) return;
          form_.Click(key);
          Refresh();
        });
        widget = box;
        break;
      }
      case K::Radio: {
        auto* radio = new QRadioButton(ToQString(control.Caption), this);
        // Each group of the form switches within itself, not within the dialog.
        QButtonGroup*& group = groups[control.Group];
        if (!group) group = new QButtonGroup(this);
        group->addButton(radio);
        connect(radio, &QRadioButton::clicked, this, [this, key = control.Name] {
          if (refreshing_) return;
          form_.Click(key);
          Refresh();
        });
        widget = radio;
        break;
      }
      case K::Edit: {
        auto* edit = new QLineEdit(this);
        connect(edit, &QLineEdit::textEdited, this,
                [this, key = control.Name](const QString& text) { form_.SetText(key, FromQString(text)); });
        widget = edit;
        if (!control.Caption.empty()) label = new QLabel(ToQString(control.Caption), this);
        break;
      }
      case K::Choice: {
        auto* choice = new QComboBox(this);
        for (const WideString& item : control.Items) choice->addItem(ToQString(item));
        connect(choice, &QComboBox::activated, this, [this, key = control.Name](int index) {
          form_.SetChoiceIndex(key, index);
          Refresh();
        });
        widget = choice;
        label = new QLabel(ToQString(control.Caption), this);
        break;
      }
      case K::Label:
        widget = new QLabel(ToQString(control.Caption), this);
        break;
    }
    widget->setObjectName(name);
    widgets_[control.Name] = widget;
    if (label) {
      label->setBuddy(widget);
      fields->addRow(label, widget);
    } else {
      fields->addRow(widget);
    }
    RegisterCaption(*localizer_, control.Name + u".Caption", label ? label : widget);
  }
  message_ = new QLabel(this);
  message_->setObjectName(QStringLiteral("lMessage"));
  message_->setWordWrap(true);
  message_->setStyleSheet(QStringLiteral("color: #b00020"));
  message_->hide();
  layout->addWidget(message_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("OK"));
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("Cancel"));
  connect(buttons, &QDialogButtonBox::accepted, this, &TmvPropertiesDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &TmvPropertiesDialog::reject);
  layout->addWidget(buttons);
  localizer_->Loaded();
  Refresh();
  const WideString focus = form.FocusControl().empty() && !form.Controls().empty() ? form.Controls().front().Name
                                                                                   : form.FocusControl();
  if (auto found = widgets_.find(focus); found != widgets_.end()) found->second->setFocus();
  setMinimumWidth(360);
}

TmvPropertiesDialog::~TmvPropertiesDialog() = default;

QString TmvPropertiesDialog::Message() const { return message_->isVisible() ? message_->text() : QString(); }

void TmvPropertiesDialog::Refresh() {
  refreshing_ = true;
  for (const TmvFormControl& control : form_.Controls()) {
    QWidget* widget = widgets_.at(control.Name);
    widget->setEnabled(form_.Enabled(control.Name));
    switch (control.Kind) {
      case K::CheckBox:
      case K::Radio:
        static_cast<QAbstractButton*>(widget)->setChecked(form_.Checked(control.Name));
        break;
      case K::Edit: {
        auto* edit = static_cast<QLineEdit*>(widget);
        edit->setReadOnly(form_.ReadOnly(control.Name));
        if (edit->text() != ToQString(form_.Text(control.Name))) edit->setText(ToQString(form_.Text(control.Name)));
        break;
      }
      case K::Choice:
        static_cast<QComboBox*>(widget)->setCurrentIndex(form_.ChoiceIndex(control.Name));
        break;
      case K::Label:
        break;
    }
  }
  refreshing_ = false;
}

void TmvPropertiesDialog::accept() {
  try {
    form_.CheckCanClose();
  } catch (const Exception& error) {
    message_->setText(ToQString(error.Message()));
    message_->show();
    return;
  }
  QDialog::accept();
}

bool ShowPropertiesDialog(TmvQBPropertiesForm& form, QWidget* parent) {
  TmvPropertiesDialog dialog(form, parent);
  return dialog.exec() == QDialog::Accepted;
}

}  // namespace mv
