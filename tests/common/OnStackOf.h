// Runs work on a thread with a stack of a given size, so that recursion that
// grows with the input would overflow it.
#pragma once

#include <cstddef>
#include <functional>

namespace mvtest {

// Runs `work` to its end on a new thread whose stack holds `bytes`.
void RunOnStackOf(size_t bytes, const std::function<void()>& work);

}  // namespace mvtest
