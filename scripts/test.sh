#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test suite.
#   scripts/test.sh              the normal build
#   scripts/test.sh --sanitize   the whole suite under ASan + UBSan
#   scripts/test.sh --tsan       the whole suite under ThreadSanitizer
# Further arguments go to ctest (e.g. -L frontend).
set -euo pipefail
cd "$(dirname "$0")/.."

build_args=()
build_dir=build
if [[ "${1:-}" == "--sanitize" ]]; then build_args=(--sanitize); build_dir=build-asan; shift; fi
if [[ "${1:-}" == "--tsan" ]]; then build_args=(--tsan); build_dir=build-tsan; shift; fi
build_dir=${MV_BUILD_DIR:-$build_dir}

scripts/setup.sh
scripts/build.sh "${build_args[@]}"

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1}
ctest --test-dir "$build_dir" --output-on-failure --parallel "$(nproc)" "$@"
