#include "surface/QtMainThread.h"

#include <QCoreApplication>
#include <QMetaObject>

#include "support/MainThread.h"

namespace mv {

void BindMainThreadDispatcherToQt() {
  TmvMainThreadDispatcher& dispatcher = MainThreadDispatcher();
  dispatcher.BindToCurrentThread();
  // The hook may fire on any thread: a queued call crosses to the GUI thread.
  dispatcher.SetWakeUpHook([] {
    if (QCoreApplication* app = QCoreApplication::instance())
      QMetaObject::invokeMethod(app, [] { MainThreadDispatcher().ProcessPending(); }, Qt::QueuedConnection);
  });
  // What was queued before the binding runs in the first round.
  if (dispatcher.HasPending())
    QMetaObject::invokeMethod(QCoreApplication::instance(), [] { MainThreadDispatcher().ProcessPending(); },
                              Qt::QueuedConnection);
}

void UnbindMainThreadDispatcherFromQt() { MainThreadDispatcher().SetWakeUpHook({}); }

}  // namespace mv
