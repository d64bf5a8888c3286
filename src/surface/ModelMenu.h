// Popup menus of model objects: the model describes them as data (entries
// with captions, enabled and default flags, sub-menus and actions); this
// makes them Qt menus whose entries run the actions.
#pragma once

#include <QMenu>
#include <functional>

#include "model/ModelControls.h"

namespace mv {

// Fills `into` with the entries of `menu` (each action named by its message
// key); a chosen entry's action runs once the event loop is back, and a
// refusal of the model shows as a message.
void FillQMenu(QMenu& into, const TmvMenu& menu);

// Runs a model action once the event loop is back (the action may free the
// control whose event asked for it); a refusal of the model shows as a message.
void PostModelAction(std::function<void()> action);

// Shows the menu at a point of the screen and runs the chosen entry;
// nothing happens for an empty menu.
void ExecModelMenu(const TmvMenu& menu, const QPoint& globalPosition, QWidget* parent);

}  // namespace mv
