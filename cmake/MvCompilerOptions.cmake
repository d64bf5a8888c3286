# Warnings and sanitizers for our own targets. Third-party headers come in as
# SYSTEM includes, so their warnings do not count against us.
add_library(mv_compiler_options INTERFACE)
target_compile_options(mv_compiler_options INTERFACE -Wall -Wextra)
# Our scripts (and so CI) build with warnings as errors; a host that builds
# the library with another compiler may leave it off.
option(MV_WERROR "Treat warnings in our own code as errors" OFF)
if(MV_WERROR)
  target_compile_options(mv_compiler_options INTERFACE -Werror)
endif()

if(MV_SANITIZE AND MV_TSAN)
  message(FATAL_ERROR "MV_SANITIZE and MV_TSAN cannot be combined")
endif()
if(MV_SANITIZE)
  set(_mv_san -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_compile_options(${_mv_san})
  add_link_options(${_mv_san})
  # GCC's flow analysis under the sanitizers reports libstdc++'s own std::regex
  # and std::function as maybe uninitialized (false positives, not our code).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(mv_compiler_options INTERFACE -Wno-maybe-uninitialized)
  endif()
endif()
if(MV_TSAN)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(mv_compiler_options INTERFACE -Wno-maybe-uninitialized)  # as for ASan above
  endif()
endif()
# Fuzzing (clang only): everything gets libFuzzer's coverage instrumentation;
# the fuzz programs link libFuzzer's main (tests/fuzz).
if(MV_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "MV_FUZZ needs clang (scripts/fuzz.sh configures it)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
