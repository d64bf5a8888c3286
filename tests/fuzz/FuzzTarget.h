// The entry point every fuzz target defines, and the check that stops a run
// on a broken invariant. A target is built two ways: linked with libFuzzer
// (clang, -DMV_FUZZ=ON, scripts/fuzz.sh) it explores inputs; linked with
// ReplayMain.cpp it runs the committed seeds and any saved crash inputs as an
// ordinary test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace mvfuzz {

// Reports a broken invariant with what it was about and aborts, which both
// libFuzzer and the replay test count as a failure.
[[noreturn]] inline void Fail(const char* what, const std::string& detail) {
  std::fprintf(stderr, "invariant broken: %s\n%s\n", what, detail.c_str());
  std::abort();
}

}  // namespace mvfuzz

#define MV_FUZZ_CHECK(condition, detail) \
  do {                                   \
    if (!(condition)) ::mvfuzz::Fail(#condition, (detail)); \
  } while (0)
