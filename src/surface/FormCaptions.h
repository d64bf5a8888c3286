// The captions of a dialog's widgets as texts of its form localizer, so that
// the current language names them: a label's or a button's text, a window's
// title, a tab's text.
#pragma once

#include <QString>

#include "localization/FormLocalizer.h"

class QTabWidget;
class QWidget;

namespace mv {

// Registers `widget`'s caption under `path` and lists the path for
// localizing; a widget without a caption is left alone.
void RegisterCaption(TmvQBLocalizerForm& localizer, WideStringView path, QWidget* widget);
// The caption of a page of a tab widget.
void RegisterTabCaption(TmvQBLocalizerForm& localizer, WideStringView path, QTabWidget* tabs, int index);

}  // namespace mv
