#!/usr/bin/env bash
# Configures and builds the project.
#   scripts/build.sh              RelWithDebInfo build in build/
#   scripts/build.sh --sanitize   ASan + UBSan build in build-asan/
#   scripts/build.sh --tsan       ThreadSanitizer build in build-tsan/
# Extra arguments after "--" go to CMake (e.g. -- -DMV_BUILD_BENCH=ON).
set -euo pipefail
cd "$(dirname "$0")/.."

build_dir=build
# Warnings in our code are errors in every build these scripts make, CI's too.
cmake_args=(-G Ninja -DMV_WERROR=ON)
while (($#)); do
  case "$1" in
    --sanitize) build_dir=build-asan; cmake_args+=(-DMV_SANITIZE=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo) ;;
    --tsan) build_dir=build-tsan; cmake_args+=(-DMV_TSAN=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo) ;;
    --) shift; cmake_args+=("$@"); break ;;
    *) echo "build.sh: unknown option $1" >&2; exit 2 ;;
  esac
  shift
done
build_dir=${MV_BUILD_DIR:-$build_dir}

if command -v ccache >/dev/null 2>&1; then
  cmake_args+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi

cmake -S . -B "$build_dir" "${cmake_args[@]}" >/dev/null
cmake --build "$build_dir" --parallel "$(nproc)"
