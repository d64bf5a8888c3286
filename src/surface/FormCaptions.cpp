#include "surface/FormCaptions.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTabWidget>

#include "surface/QtText.h"

namespace mv {

void RegisterCaption(TmvQBLocalizerForm& localizer, WideStringView path, QWidget* widget) {
  std::function<QString()> get;
  std::function<void(const QString&)> set;
  if (auto* label = qobject_cast<QLabel*>(widget)) {
    get = [label] { return label->text(); };
    set = [label](const QString& text) { label->setText(text); };
  } else if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
    get = [button] { return button->text(); };
    set = [button](const QString& text) { button->setText(text); };
  } else if (widget && widget->isWindow()) {
    get = [widget] { return widget->windowTitle(); };
    set = [widget](const QString& text) { widget->setWindowTitle(text); };
  } else {
    return;
  }
  localizer.RegisterText(
      path, [get] { return FromQString(get()); }, [set](WideStringView text) { set(ToQString(text)); });
  localizer.Properties.emplace_back(path);
}

void RegisterTabCaption(TmvQBLocalizerForm& localizer, WideStringView path, QTabWidget* tabs, int index) {
  QWidget* page = tabs->widget(index);
  localizer.RegisterText(
      path, [tabs, page] { return FromQString(tabs->tabText(tabs->indexOf(page))); },
      [tabs, page](WideStringView text) { tabs->setTabText(tabs->indexOf(page), ToQString(text)); });
  localizer.Properties.emplace_back(path);
}

}  // namespace mv
