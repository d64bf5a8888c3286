#!/usr/bin/env bash
# Compares the throughput of our parse+print with peer SQL tools on the same
# statements, in one run:
#   1. installs what it needs (the project's packages through scripts/setup.sh,
#      libpg-query-dev, Node.js and npm when missing, the npm peers pinned in
#      bench/peers/package-lock.json); idempotent and quiet;
#   2. builds the project with -DMV_BUILD_BENCH=ON into build-bench/;
#   3. writes the statement set (bench/statement-set.txt) and the adversarial
#      shapes into bench/results/;
#   4. runs every runner on the set, then on the statements every runner
#      accepted, then on each shape, and prints three tables.
# Our runner, build-bench/bin/bench_parse_print, joins automatically once it is
# built; until then the "ours/peer" columns stay empty.
#
# Exit codes: 0 all runners finished everywhere; 1 set-up, build or generation
# failed; 2 bad arguments; 3 the tables were printed but a runner failed or
# timed out somewhere (marked in the tables, details in bench/results/logs/).
set -euo pipefail

usage() {
  cat <<'EOF'
usage: bench/compare-peers.sh [options]
  --corpus DIR         shared SQL corpus (default: $MV_CORPUS_DIR, else ../shared/corpus next to the clone)
  --runs N             timed runs per tool on the statement set, the best counts (default 5)
  --budget SECONDS     no new timed run after this much timing, per tool and mode (default 10)
  --shape-runs N       timed runs per tool on each shape (default 3)
  --shape-budget SECONDS  the same for shapes (default 5)
  --shape-min-time SECONDS  a timed run on a shape repeats it until it lasts this long (default 0.2)
  --timeout SECONDS    a runner taking longer on one input is stopped and marked (default 600)
  --no-install         do not install anything (fail if something is missing)
  --no-build           use build-bench/ as it is
  --no-shapes          skip the adversarial shapes
  -h, --help           this text
Results: bench/results/ (statements.sql, shapes/, results.tsv, tables.txt, logs/).
EOF
}

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bench="$root/bench"
build="$root/build-bench"
results="$bench/results"
corpus=${MV_CORPUS_DIR:-$root/../shared/corpus}
runs=5 budget=10 shape_runs=3 shape_budget=5 shape_min_time=0.2 timeout_s=600
install=1 do_build=1 do_shapes=1

die() { echo "compare-peers: $*" >&2; exit 1; }
say() { echo "compare-peers: $*" >&2; }
need_value() { [[ $# -ge 2 && -n $2 ]] || { echo "compare-peers: $1 needs a value" >&2; usage >&2; exit 2; }; }
need_number() {
  [[ $2 =~ ^[0-9]+([.][0-9]+)?$ ]] || { echo "compare-peers: $1 needs a number, not '$2'" >&2; exit 2; }
}

while (($#)); do
  case "$1" in
    --corpus) need_value "$@"; corpus=$2; shift ;;
    --runs) need_value "$@"; need_number "$1" "$2"; runs=$2; shift ;;
    --budget) need_value "$@"; need_number "$1" "$2"; budget=$2; shift ;;
    --shape-runs) need_value "$@"; need_number "$1" "$2"; shape_runs=$2; shift ;;
    --shape-budget) need_value "$@"; need_number "$1" "$2"; shape_budget=$2; shift ;;
    --shape-min-time) need_value "$@"; need_number "$1" "$2"; shape_min_time=$2; shift ;;
    --timeout) need_value "$@"; need_number "$1" "$2"; timeout_s=$2; shift ;;
    --no-install) install=0 ;;
    --no-build) do_build=0 ;;
    --no-shapes) do_shapes=0 ;;
    -h|--help) usage; exit 0 ;;
    *) echo "compare-peers: unknown argument '$1'" >&2; usage >&2; exit 2 ;;
  esac
  shift
done

[[ -d $corpus ]] || die "no SQL corpus at $corpus (pass --corpus DIR or set MV_CORPUS_DIR)"
corpus=$(cd "$corpus" && pwd)
rm -rf "$results/logs" "$results/raw" "$results/accepted"
mkdir -p "$results/logs" "$results/raw" "$results/accepted"

# --- 1. Prerequisites -------------------------------------------------------

as_root() { if [[ $(id -u) == 0 ]]; then "$@"; else sudo "$@"; fi; }

apt_install() {
  local log="$results/logs/apt.log"
  say "installing $* (apt)"
  if ! { as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq &&
         as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@"; } >"$log" 2>&1; then
    cat "$log" >&2
    die "apt-get failed (log above, also in $log)"
  fi
}

install_prerequisites() {
  "$root/scripts/setup.sh" || die "scripts/setup.sh failed"
  local missing=()
  dpkg-query -W -f='${db:Status-Status}' libpg-query-dev 2>/dev/null | grep -qx installed || missing+=(libpg-query-dev)
  # Node.js from elsewhere (with its own npm) counts: only absent commands are installed.
  command -v node >/dev/null 2>&1 || missing+=(nodejs)
  command -v npm >/dev/null 2>&1 || missing+=(npm)
  ((${#missing[@]} == 0)) || apt_install "${missing[@]}"
}

install_npm_peers() {
  local stamp="$bench/peers/node_modules/.mv-installed-lock"
  local want
  want=$(sha256sum "$bench/peers/package-lock.json" "$bench/peers/package.json" | sha256sum | cut -d' ' -f1)
  [[ -f $stamp && $(cat "$stamp") == "$want" ]] && return 0
  ((install)) || die "the npm peers are not installed (run without --no-install, or: cd bench/peers && npm ci)"
  say "installing the npm peers (npm ci in bench/peers)"
  local log="$results/logs/npm.log"
  if ! (cd "$bench/peers" && npm ci --no-audit --no-fund --loglevel=error) >"$log" 2>&1; then
    cat "$log" >&2
    die "npm ci failed (log above, also in $log)"
  fi
  echo "$want" >"$stamp"
}

((install)) && install_prerequisites
command -v node >/dev/null 2>&1 || die "node is missing (run without --no-install, or install nodejs)"
node_major=$(node -p 'process.versions.node.split(".")[0]')
((node_major >= 18)) || die "Node.js 18 or newer is needed, this is $(node --version)"
install_npm_peers

# --- 2. Build ---------------------------------------------------------------

if ((do_build)); then
  say "building into build-bench/ (log: bench/results/logs/build.log)"
  cmake_args=(-G Ninja -DCMAKE_BUILD_TYPE=Release -DMV_BUILD_BENCH=ON -DMV_BUILD_TESTS=OFF)
  command -v ccache >/dev/null 2>&1 && cmake_args+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  if ! { cmake -S "$root" -B "$build" "${cmake_args[@]}" &&
         cmake --build "$build" --parallel "$(nproc)"; } >"$results/logs/build.log" 2>&1; then
    tail -40 "$results/logs/build.log" >&2
    die "the build failed (last lines above, whole log in bench/results/logs/build.log)"
  fi
fi
for program in bench_statement_set bench_shapes; do
  [[ -x $build/bin/$program ]] || die "$build/bin/$program is missing (build with -DMV_BUILD_BENCH=ON)"
done

# --- 3. Statements ----------------------------------------------------------

statements="$results/statements.sql"
"$build/bin/bench_statement_set" --corpus "$corpus" --out "$statements" 2>"$results/logs/statement-set.log" ||
  { cat "$results/logs/statement-set.log" >&2; die "writing the statement set failed"; }
total=$(($(wc -l <"$results/statements.index.tsv") - 1))
total_bytes=$(awk -F'\t' 'NR > 1 { b += $5 } END { print b + 0 }' "$results/statements.index.tsv")
if ((do_shapes)); then
  rm -rf "$results/shapes"
  "$build/bin/bench_shapes" --out "$results/shapes" 2>"$results/logs/shapes.log" ||
    { cat "$results/logs/shapes.log" >&2; die "writing the shapes failed"; }
fi

# --- 4. Runners -------------------------------------------------------------

# Each runner: key, short label for the shape table, program and (for Node.js)
# its script. Ours comes first.
runner_keys=() runner_labels=() runner_programs=() runner_scripts=()
add_runner() { runner_keys+=("$1"); runner_labels+=("$2"); runner_programs+=("$3"); runner_scripts+=("${4:-}"); }
if [[ -x $build/bin/bench_parse_print ]]; then
  add_runner ours ours "$build/bin/bench_parse_print"
else
  say "our runner build-bench/bin/bench_parse_print is not built yet: peers only"
fi
if [[ -x $build/bin/bench_pg_query ]]; then
  add_runner libpg_query pgq "$build/bin/bench_pg_query"
else
  say "bench_pg_query was not built (libpg-query-dev missing?): skipping libpg_query"
fi
add_runner node-sql-parser nsp node "$bench/peers/node-sql-parser.js"
add_runner sql-formatter sqlf node "$bench/peers/sql-formatter.js"

tsv="$results/results.tsv"
printf 'section\trunner\ttool\tmode\twork\tstatements\taccepted\trejected\tbytes\tseconds\tmb_per_s\truns\treps\tstatus\n' >"$tsv"
problems=0

# run_one SECTION RUNNER-INDEX INPUT RUNS BUDGET [extra runner options...]
# Appends the runner's result lines to results.tsv; on a timeout or failure, one
# line with that status (and the mode "-").
run_one() {
  local section=$1 index=$2 input=$3 n=$4 b=$5
  shift 5
  local key=${runner_keys[$index]}
  local command=("${runner_programs[$index]}")
  [[ -n ${runner_scripts[$index]} ]] && command+=("${runner_scripts[$index]}")
  local tag="${section//[:\/]/-}-$key"
  local out="$results/raw/$tag.txt" log="$results/logs/$tag.log" status=ok code=0
  timeout "$timeout_s" "${command[@]}" --runs "$n" --budget "$b" --verbose "$@" "$input" >"$out" 2>"$log" || code=$?
  if ((code == 124)); then status=timeout
  elif ((code != 0)); then status="failed($code)"
  fi
  if [[ $status != ok ]] || ! grep -q '^bench-result ' "$out"; then
    [[ $status == ok ]] && status=failed
    printf '%s\t%s\t%s\t-\t-\t\t\t\t\t\t\t\t\t%s\n' "$section" "$key" "$key" "$status" >>"$tsv"
    problems=1
    say "$key on $section: $status (see ${log#"$root"/})"
    return 0
  fi
  awk -v section="$section" -v key="$key" '
    $1 == "bench-result" {
      delete f
      for (i = 2; i <= NF; i++) { p = index($i, "="); f[substr($i, 1, p - 1)] = substr($i, p + 1) }
      printf "%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\tok\n", section, key, f["tool"], f["mode"],
        f["work"], f["statements"], f["accepted"], f["rejected"], f["bytes"], f["seconds"], f["mb_per_s"],
        f["runs"], f["reps"]
    }' "$out" >>"$tsv"
}

# Every runner must have read as many statements as the set holds.
check_counts() {
  local section=$1 expected=$2
  awk -F'\t' -v s="$section" -v n="$expected" '
    $1 == s && $14 == "ok" && $6 != n { printf "%s read %s statements, not %s\n", $2, $6, n; bad = 1 }
    END { exit bad }' "$tsv" >&2 || die "runners disagree about the statements of $section"
}

say "running ${#runner_keys[@]} runners on $total statements ($total_bytes bytes)"
for i in "${!runner_keys[@]}"; do
  run_one set "$i" "$statements" "$runs" "$budget" \
    --accepted-out "$results/accepted/${runner_keys[$i]}.txt"
done
check_counts set "$total"

# The statements every runner accepted, so that the ratios compare equal work.
common="$results/accepted/common.txt"
accepted_files=()
for key in "${runner_keys[@]}"; do
  [[ -f $results/accepted/$key.txt ]] && accepted_files+=("$results/accepted/$key.txt")
done
if ((${#accepted_files[@]} > 0)); then
  awk -v files=${#accepted_files[@]} '{ n[$1]++ } END { for (k in n) if (n[k] == files) print k }' \
    "${accepted_files[@]}" | sort -n >"$common"
else
  : >"$common"
fi
common_count=$(wc -l <"$common")
if ((common_count > 0)); then
  say "running them again on the $common_count statements all of them accepted"
  for i in "${!runner_keys[@]}"; do
    run_one common "$i" "$statements" "$runs" "$budget" --only "$common"
  done
  check_counts common "$common_count"
fi

shape_names=()
if ((do_shapes)); then
  mapfile -t shape_names < <(awk -F'\t' 'NR > 1 { print $1 }' "$results/shapes/shapes.tsv")
  say "running them on ${#shape_names[@]} adversarial shapes"
  for shape in "${shape_names[@]}"; do
    for i in "${!runner_keys[@]}"; do
      run_one "shape:$shape" "$i" "$results/shapes/$shape.sql" \
        "$shape_runs" "$shape_budget" --min-time "$shape_min_time"
    done
  done
fi

# --- 5. Tables --------------------------------------------------------------

versions() {
  local pg npm_versions
  pg=$(dpkg-query -W -f='${Version}' libpg-query-dev 2>/dev/null || echo "not installed")
  npm_versions=$(cd "$bench/peers" && node -p '["node-sql-parser", "sql-formatter"].map(
    (p) => p + " " + require(p + "/package.json").version).join(", ")')
  echo "Versions: libpg_query $pg (Debian libpg-query-dev), $npm_versions, Node.js $(node --version)"
}

# One row per runner and mode (runners by their key: "ours" is ours). The
# ratio column: our MB/s divided by the peer's, for the same mode.
throughput_table() {
  local section=$1 title=$2
  echo "$title"
  awk -F'\t' -v s="$section" '
    $1 != s { next }
    { row[++n] = $0 }
    $2 == "ours" && $14 == "ok" { ours[$4] = $11 }
    END {
      printf "%-16s %-12s %11s %9s %10s %9s %10s\n", "tool", "mode", "statements", "rejected", "bytes", "MB/s", "ours/peer"
      for (i = 1; i <= n; i++) {
        split(row[i], f, "\t")
        if (f[14] != "ok") { printf "%-16s %-12s %s\n", f[2], "-", f[14]; continue }
        ratio = "-"
        if (f[2] != "ours" && (f[4] in ours) && f[11] > 0) ratio = sprintf("%.2f", ours[f[4]] / f[11])
        printf "%-16s %-12s %11s %9s %10s %9.3f %10s\n", f[2], f[4], f[7] "/" f[6], f[8], f[9], f[11], ratio
      }
    }' "$tsv"
}

# One row per shape, one column per runner and mode: nanoseconds per byte of
# the statement (rej: the tool rejected it; its reason is in the logs).
shape_table() {
  echo "Adversarial shapes: nanoseconds per byte (constant down a kind = linear growth)"
  local labels="" i
  for i in "${!runner_keys[@]}"; do labels+="${runner_keys[$i]}=${runner_labels[$i]} "; done
  awk -F'\t' -v labels="$labels" -v shapes_tsv="$results/shapes/shapes.tsv" '
    BEGIN {
      nr = split(labels, l, " ")
      for (i = 1; i <= nr; i++) { split(l[i], kv, "="); runner[i] = kv[1]; label[kv[1]] = kv[2] }
      while ((getline line < shapes_tsv) > 0) {
        split(line, f, "\t")
        if (f[1] == "name") continue
        shapes[++ns] = f[1]; bytes[f[1]] = f[4]
      }
    }
    $1 !~ /^shape:/ { next }
    {
      shape = substr($1, 7)
      if ($14 != "ok") { failed[shape, $2] = $14; next }
      col = $2 "/" ($4 == "parse+print" ? "print" : $4)
      if (!(col in seen)) { seen[col] = 1; cols[++nc] = col; colRunner[col] = $2; hasCols[$2] = 1 }
      cell[shape, col] = ($7 == 0) ? "rej" : sprintf("%.1f", $10 * 1e9 / $9)
    }
    END {
      # A runner that failed on every shape still gets one column for its marks.
      for (i = 1; i <= nr; i++)
        if (!(runner[i] in hasCols)) { col = runner[i]; cols[++nc] = col; colRunner[col] = runner[i] }
      printf "%-14s %8s", "shape", "bytes"
      for (c = 1; c <= nc; c++) {
        r = colRunner[cols[c]]; mode = substr(cols[c], length(r) + 1)
        printf " %11s", label[r] mode
      }
      printf "\n"
      for (s = 1; s <= ns; s++) {
        printf "%-14s %8s", shapes[s], bytes[shapes[s]]
        for (c = 1; c <= nc; c++) {
          v = cell[shapes[s], cols[c]]
          if (v == "") v = failed[shapes[s], colRunner[cols[c]]]
          printf " %11s", (v == "" ? "-" : v)
        }
        printf "\n"
      }
    }' "$tsv"
  local legend="Columns: "
  for i in "${!runner_keys[@]}"; do legend+="${runner_labels[$i]} = ${runner_keys[$i]}, "; done
  echo "${legend%, }; print = parse+print."
}

rejection_notes() {
  local shape key log reason any=0
  for shape in "${shape_names[@]}"; do
    for key in "${runner_keys[@]}"; do
      log="$results/logs/shape-$shape-$key.log"
      [[ -s $log ]] || continue
      while IFS= read -r reason; do
        ((any)) || echo "Rejections on shapes:"
        any=1
        printf '  %s, %s %s\n' "$shape" "$key" "${reason:0:150}"
      done < <(grep ' rejected: ' "$log" | sed 's/^[^ ]* //; s/entry 1 rejected/rejected/')
    done
  done
}

{
  echo
  versions
  echo
  throughput_table set "Statement set: $total statements, $total_bytes bytes (bench/statement-set.txt); MB = 10^6 bytes of accepted statements"
  if ((common_count > 0)); then
    echo
    common_bytes=$(awk -F'\t' 'NR == FNR { keep[$1] = 1; next } FNR > 1 && keep[$1] { b += $5 } END { print b + 0 }' \
      "$common" "$results/statements.index.tsv")
    throughput_table common "Statements every runner that finished accepts: $common_count statements, $common_bytes bytes"
  fi
  if ((do_shapes)); then
    echo
    shape_table
    rejection_notes
  fi
  if [[ ! -x $build/bin/bench_parse_print ]]; then
    echo
    echo "ours/peer is empty until build-bench/bin/bench_parse_print exists (see bench/README.md, \"Our runners\")."
  fi
} | tee "$results/tables.txt"

if ((problems)); then
  say "some runs failed or timed out (marked above; logs in bench/results/logs/)"
  exit 3
fi
