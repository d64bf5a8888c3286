#!/usr/bin/env bash
# Checks the installed package as a host sees it (CTest label "install"):
#   1. `cmake --install` of the build into a scratch prefix puts the library,
#      the headers, the CMake package with its version file and morvane.pc there;
#   2. examples/host configures and builds against that prefix alone with a
#      separate CMake run (find_package(Morvane) must come from the prefix), runs,
#      and prints the SQL it set and the SQL with the table it added;
#   3. the same main.cpp compiles and links with `pkg-config --cflags --libs
#      morvane` and prints the same;
#   4. every installed header compiles from the installed include directory
#      alone (a header that includes a file the package lacks fails here).
# Everything happens below --work, which is emptied first.
set -euo pipefail

launcher="" flags=""
while (($#)); do
  case "$1" in
    --build) build=$2 ;;
    --source) source=$2 ;;
    --work) work=$2 ;;
    --cmake) cmake=$2 ;;
    --cxx) cxx=$2 ;;
    --launcher) launcher=$2 ;;
    --pkg-config) pkg_config=$2 ;;
    --libdir) libdir=$2 ;;
    --flags) flags=$2 ;;
    *) echo "check_install.sh: unknown option $1" >&2; exit 2 ;;
  esac
  shift 2
done

fail() { echo "FAILED: $*" >&2; exit 1; }
# Runs a step quietly; on failure shows its output.
step() {
  local log=$1; shift
  "$@" >"$log" 2>&1 || { cat "$log" >&2; fail "$* (log: $log)"; }
}

rm -rf "$work"
mkdir -p "$work"
prefix=$work/prefix
host=examples/host

# 1. The install.
step "$work/install.log" "$cmake" --install "$build" --prefix "$prefix"
for f in "$libdir/libmvengine.a" \
         "$libdir/cmake/Morvane/MorvaneConfig.cmake" \
         "$libdir/cmake/Morvane/MorvaneConfigVersion.cmake" \
         "$libdir/cmake/Morvane/MorvaneTargets.cmake" \
         "$libdir/pkgconfig/morvane.pc" \
         include/morvane/component/QueryBuilder.h \
         include/morvane/dialects/EngineInit.h \
         include/morvane/tree/TreeNodes.gen.h; do
  [[ -f $prefix/$f ]] || fail "the install lacks $f"
done
# Neither the design surface nor anything of the tests belongs to the package.
leaked=$(cd "$prefix" && find . -path '*surface*' -o -path '*testtree*' | head -5)
[[ -z $leaked ]] || fail "the install holds files that are not the engine's: $leaked"

# The host's output: the SQL set, then the SQL read back, which has the table
# the host added beside the one it set.
check_host_output() {
  local out=$1
  grep -qx 'SQL set:' "$out" || fail "no 'SQL set:' in $out"
  sed -n '/^SQL set:$/,/^SQL read back:$/p' "$out" | grep -q 'Orders' || fail "the SQL set lacks Orders ($out)"
  sed -n '/^SQL read back:$/,$p' "$out" | grep -q 'Customers' || fail "the SQL read back lacks the added Customers ($out)"
  sed -n '/^SQL read back:$/,$p' "$out" | grep -q 'Orders' || fail "the SQL read back lost Orders ($out)"
  # One update for the text, at least one for the edit, each reported.
  local updates
  updates=$(sed -n 's/^updates: \([0-9]*\)$/\1/p' "$out")
  [[ -n $updates ]] && ((updates >= 2)) || fail "OnSQLUpdated fired ${updates:-no} times, not at least twice ($out)"
  [[ $(grep -c '^SQL updated (' "$out") == "$updates" ]] || fail "the updates printed do not match the count ($out)"
}

# 2. The example through find_package, with nothing but the prefix to find it in.
step "$work/host-configure.log" "$cmake" -S "$source/$host" -B "$work/host" -G Ninja \
  -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
  -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher" \
  -DCMAKE_CXX_FLAGS="$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$flags"
found=$(sed -n 's/^Morvane_DIR:PATH=//p' "$work/host/CMakeCache.txt")
[[ $found == "$prefix/$libdir/cmake/Morvane" ]] || fail "find_package(Morvane) found '$found', not the scratch prefix"
step "$work/host-build.log" "$cmake" --build "$work/host"
step "$work/host.out" "$work/host/mvhost"
check_host_output "$work/host.out"

# 3. The same source through pkg-config.
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
"$pkg_config" --exists morvane || fail "pkg-config does not find morvane in $PKG_CONFIG_PATH"
cflags=$("$pkg_config" --cflags morvane)
libs=$("$pkg_config" --libs morvane)
include_dir=$(sed -n 's/.*-I\([^ ]*morvane\).*/\1/p' <<<"$cflags")
[[ -f $include_dir/component/QueryBuilder.h ]] || fail "pkg-config --cflags names no include directory with the headers: $cflags"
# shellcheck disable=SC2086  # the flags are lists of words
step "$work/pc-build.log" $launcher "$cxx" -std=c++20 $flags "$source/$host/main.cpp" $cflags $libs -o "$work/mvhost-pc"
step "$work/pc.out" "$work/mvhost-pc"
cmp -s "$work/host.out" "$work/pc.out" || fail "the pkg-config build prints otherwise than the CMake one ($work/pc.out)"

# 4. Every installed header, from the installed include directory alone: all
# in one source, but for the macro fragments without "#pragma once" that the
# option tables include in a context of their own.
(cd "$prefix/include/morvane" && find . -name '*.h' -print0 | xargs -0 grep -l '^#pragma once' | sort |
  sed 's|^\./\(.*\)|#include "\1"|') >"$work/all_headers.cpp"
echo 'int main() { return 0; }' >>"$work/all_headers.cpp"
# shellcheck disable=SC2086
step "$work/headers.log" $launcher "$cxx" -std=c++20 $flags -fsyntax-only $cflags "$work/all_headers.cpp"

echo "install: $(grep -c '^#include' "$work/all_headers.cpp") headers, the host built by CMake and by pkg-config, same output"
