#!/usr/bin/env bash
# Peak memory and time of one parse, ours against native libpg_query, on the
# adversarial shapes and on large statements (a real select list repeated to
# a few megabytes and to 27 MB), and whether our peak stays put when the
# statement set is parsed again and again.
#
# Needs what compare-peers.sh builds and writes: build-bench/bin/ and
# bench/results/{statements.sql,shapes/}; run that first (or with
# --no-shapes, which still writes the shapes).
#
# Each figure is one process that parses its file once (`--runs 1`, after
# the runner's one warm-up pass): peak resident memory from /usr/bin/time
# less the peak of the same runner on a one-line statement, divided by the
# statement's bytes, and the seconds of one parse as the runner reports it.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bin="$root/build-bench/bin"
results="$root/bench/results"
out="$results/memory"
sizes=(3 27)  # megabytes of the large statements

[[ ${1:-} == -h || ${1:-} == --help ]] && { sed -n '2,14p' "$0" | sed 's/^# \{0,1\}//'; exit 0; }
for runner in bench_parse_print bench_pg_query; do
  [[ -x $bin/$runner ]] || { echo "memory-peers: $bin/$runner is missing (run bench/compare-peers.sh)" >&2; exit 1; }
done
[[ -d $results/shapes ]] || { echo "memory-peers: $results/shapes is missing (run bench/compare-peers.sh)" >&2; exit 1; }
command -v /usr/bin/time > /dev/null || { echo "memory-peers: /usr/bin/time is missing (apt install time)" >&2; exit 1; }
mkdir -p "$out"

# A select list of a TPC-DS-like report, repeated to about N megabytes.
large_statement() {
  local megabytes=$1 file=$2
  python3 - "$megabytes" "$file" <<'EOF'
import sys
items = """c_customer_id customer_id,
       c_first_name customer_first_name,
       c_last_name customer_last_name,
       sum(((ss_ext_list_price-ss_ext_wholesale_cost-ss_ext_discount_amt)+ss_ext_sales_price)/2) year_total,
       's' sale_type"""
count = int(float(sys.argv[1]) * 1e6 / (len(items) + 9))
with open(sys.argv[2], "w") as f:
    f.write("SELECT " + ",\n       ".join([items] * count) + "\nFROM customer, store_sales\nWHERE c_customer_sk = ss_customer_sk\n")
EOF
}

# peak_kb seconds: one parse of $2 by runner $1 in mode parse.
measure() {
  local runner=$1 file=$2 log
  log=$(mktemp)
  /usr/bin/time -f "peak_kb=%M" "$bin/$runner" --runs 1 --min-time 0 --budget 0 "$file" > "$log.out" 2> "$log"
  local peak seconds
  peak=$(sed -n 's/^peak_kb=//p' "$log")
  seconds=$(grep ' mode=parse ' "$log.out" | sed -n 's/.* seconds=\([^ ]*\).*/\1/p')
  rm -f "$log" "$log.out"
  echo "$peak ${seconds:-rej}"
}

echo "SELECT a FROM t" > "$out/baseline.sql"
for n in "${sizes[@]}"; do
  [[ -f $out/select-list-${n}mb.sql ]] || large_statement "$n" "$out/select-list-${n}mb.sql"
done

read -r base_ours _ <<< "$(measure bench_parse_print "$out/baseline.sql")"
read -r base_pg _ <<< "$(measure bench_pg_query "$out/baseline.sql")"

printf '| input | bytes | ours: bytes per input byte | libpg_query: bytes per input byte | ours: ns per byte | libpg_query: ns per byte | ours: peak MB | libpg_query: peak MB |\n'
printf '|---|---|---|---|---|---|---|---|\n'
for file in "$results"/shapes/*.sql "$out"/select-list-*mb.sql; do
  bytes=$(stat -c %s "$file")
  read -r ours ours_s <<< "$(measure bench_parse_print "$file")"
  read -r pg pg_s <<< "$(measure bench_pg_query "$file")"
  awk -v name="$(basename "$file" .sql)" -v b="$bytes" -v o="$ours" -v p="$pg" -v bo="$base_ours" -v bp="$base_pg" \
      -v os="$ours_s" -v ps="$pg_s" 'BEGIN {
    ob = (o - bo) * 1024 / b; pb = (p - bp) * 1024 / b
    ons = os == "rej" ? "rej" : sprintf("%.0f", os * 1e9 / b)
    pns = ps == "rej" ? "rej" : sprintf("%.0f", ps * 1e9 / b)
    printf "| %s | %d | %.0f | %.0f | %s | %s | %.0f | %.0f |\n", name, b, ob < 0 ? 0 : ob, pb < 0 ? 0 : pb, ons, pns, o / 1024, p / 1024
  }'
done

# The statement set parsed again and again: pools and regions must not grow.
once=$(/usr/bin/time -f "%M" "$bin/bench_parse_print" --runs 1 --min-time 0 "$results/statements.sql" 2>&1 > /dev/null | tail -1)
again=$(/usr/bin/time -f "%M" "$bin/bench_parse_print" --runs 10 --min-time 1 --budget 60 "$results/statements.sql" 2>&1 > /dev/null | tail -1)
echo
echo "statement set, peak resident memory: one pass $((once / 1024)) MB, ten timed runs of a second each $((again / 1024)) MB"
