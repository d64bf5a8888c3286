// Binds the engine's main-thread dispatcher to the Qt event loop: work that
// another thread (or a deferred call of the query builder) queues runs on
// the GUI thread in the loop's next round, with no host code involved.
#pragma once

namespace mv {

// Call once on the GUI thread after the QApplication exists; the binding
// holds until UnbindMainThreadDispatcherFromQt or the application ends.
void BindMainThreadDispatcherToQt();
void UnbindMainThreadDispatcherFromQt();

}  // namespace mv
