#!/usr/bin/env bash
# Fuzzes the engine with libFuzzer under AddressSanitizer and UndefinedBehaviorSanitizer.
#   scripts/fuzz.sh                      every target for 60 seconds each
#   scripts/fuzz.sh --time 600 parse_print
#   scripts/fuzz.sh --corpus DIR         also seed from a shared SQL corpus (default
#                                        $MV_CORPUS_DIR, else ../shared/corpus when present)
#   scripts/fuzz.sh --build-dir DIR      build and keep the inputs in DIR (default build-fuzz)
# Installs clang and libFuzzer when missing, builds into build-fuzz/ and keeps each target's
# growing input collection in build-fuzz/inputs/<target>/. An input that fails is saved there
# as crash-* (or leak-*, timeout-*); replay it with build/bin/replay_<target> FILE, and add it
# to tests/fuzz/seeds/<target>/ once fixed, so that the test suite keeps replaying it.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=60
corpus=${MV_CORPUS_DIR:-../shared/corpus}
build=build-fuzz
targets=()
while (($#)); do
  case "$1" in
    --time) seconds=$2; shift ;;
    --corpus) corpus=$2; shift ;;
    --build-dir) build=$2; shift ;;
    -h|--help) sed -n '2,11p' "$0"; exit 0 ;;
    -*) echo "fuzz.sh: unknown option $1" >&2; exit 2 ;;
    *) targets+=("$1") ;;
  esac
  shift
done
((${#targets[@]})) || targets=(parse_print bind_print decode model_edit language_file builder_roundtrip)

scripts/setup.sh
need=()
for p in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${db:Status-Status}' "$p" 2>/dev/null | grep -qx installed || need+=("$p")
done
if ((${#need[@]})); then
  echo "fuzz.sh: installing ${need[*]}"
  sudo_cmd=()
  [[ $(id -u) == 0 ]] || sudo_cmd=(sudo)
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends \
    "${need[@]}" >/dev/null
fi

CC=clang CXX=clang++ MV_BUILD_DIR=$build scripts/build.sh --sanitize -- -DMV_FUZZ=ON -DMV_BUILD_TESTS=OFF -DMV_BUILD_SURFACE=OFF

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
status=0
for target in "${targets[@]}"; do
  inputs=$build/inputs/$target
  mkdir -p "$inputs"
  cp -n tests/fuzz/seeds/"$target"/* "$inputs"/ 2>/dev/null || true
  # SQL statements of the shared corpus, one file each (only for the SQL targets; read, not copied
  # into the project).
  if [[ $target == parse_print && -d $corpus && ! -e $inputs.corpus-split ]]; then
    # Every tenth statement of each selects.sql (entries end at a line holding only ";;").
    python3 - "$corpus" "$inputs" <<'PY'
import os, re, sys
corpus, out = sys.argv[1], sys.argv[2]
n = 0
for root, _, files in os.walk(corpus):
    if 'selects.sql' not in files:
        continue
    text = open(os.path.join(root, 'selects.sql'), encoding='utf-8', errors='replace').read()
    for i, entry in enumerate(re.split(r'^;;[ \t\r]*$', text, flags=re.M)):
        if entry.strip() and len(entry) < 4000 and i % 10 == 0:
            open(os.path.join(out, 'corpus-%06d.sql' % n), 'w', encoding='utf-8').write(entry.strip())
            n += 1
open(out + '.corpus-split', 'w').write(str(n))
PY
  fi
  echo "fuzz.sh: $target for $seconds s ($(ls "$inputs" | wc -l) inputs to start from)"
  if ! (cd "$inputs" && ../../bin/fuzz_"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 \
          -print_final_stats=1 . 2>"../$target.log"); then
    echo "fuzz.sh: $target failed; see $build/inputs/$target.log and the crash-* file in $inputs" >&2
    status=1
  fi
  tail -n 12 "$build/inputs/$target.log" | grep -E '^(stat::|#[0-9]+.*DONE|Done)' || true
done
exit $status
