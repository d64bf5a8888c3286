// What an action raises, for tests that check a failure's message or fields.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "support/Exceptions.h"

namespace mvtest {

// The `E` that `action` raises; empty, and a test failure, when it raises none.
template <class E, class Action>
std::optional<E> Thrown(Action&& action) {
  try {
    action();
  } catch (const E& e) {
    return e;
  }
  ADD_FAILURE() << "no exception";
  return std::nullopt;
}

// The message of the `E` that `action` raises; empty when it raises none.
template <class E = mv::Exception, class Action>
mv::WideString ThrownMessage(Action&& action) {
  std::optional<E> e = Thrown<E>(action);
  return e ? e->Message() : mv::WideString();
}

}  // namespace mvtest
