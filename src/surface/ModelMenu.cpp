#include "surface/ModelMenu.h"

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include "support/Exceptions.h"
#include "surface/QtText.h"

namespace mv {

void FillQMenu(QMenu& into, const TmvMenu& menu) {
  for (const TmvMenuItem& item : menu) {
    if (item.IsSeparator()) {
      into.addSeparator();
      continue;
    }
    if (!item.SubItems.empty()) {
      QMenu* sub = into.addMenu(ToQString(item.Caption));
      sub->setEnabled(item.Enabled);
      FillQMenu(*sub, item.SubItems);
      continue;
    }
    QAction* action = into.addAction(ToQString(item.Caption));
    action->setObjectName(ToQString(item.Key));
    action->setEnabled(item.Enabled && item.Action);
    if (item.Checked) {
      action->setCheckable(true);
      action->setChecked(true);
    }
    if (item.Default) {
      QFont bold = action->font();
      bold.setBold(true);
      action->setFont(bold);
    }
    // The action runs after the event that chose it has ended: it may free
    // the control the menu came from (Remove frees the datasource's box).
    if (item.Action)
      QObject::connect(action, &QAction::triggered, qApp, [run = item.Action] { PostModelAction(run); });
  }
}

void PostModelAction(std::function<void()> action) {
  QTimer::singleShot(0, qApp, [run = std::move(action)] {
    try {
      run();
    } catch (const Exception& error) {
      QMessageBox::warning(nullptr, QString(), ToQString(error.Message()));
    }
  });
}

void ExecModelMenu(const TmvMenu& menu, const QPoint& globalPosition, QWidget* parent) {
  if (menu.empty()) return;
  // Not a child of `parent`, which the chosen entry may free.
  QMenu popup;
  popup.setLayoutDirection(parent ? parent->layoutDirection() : Qt::LeftToRight);
  FillQMenu(popup, menu);
  popup.exec(globalPosition);
}

}  // namespace mv
