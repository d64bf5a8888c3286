#!/usr/bin/env bash
# Parses each folder of the shared corpus under the dialect it was written
# for and prints, per folder, how many statements parse, print back and
# format back, and the largest groups of syntax errors with an example each.
#   scripts/corpus-report.sh [REASONS]     REASONS groups a folder (default 10)
# MVSQL names the tool (default build/bin/mvsql), MV_CORPUS_DIR the corpus
# (default ../shared/corpus).
set -euo pipefail
cd "$(dirname "$0")/.."

mvsql=${MVSQL:-build/bin/mvsql}
corpus=${MV_CORPUS_DIR:-../shared/corpus}
reasons=${1:-10}
if [[ ! -d $corpus ]]; then
  echo "corpus-report: no corpus at $corpus" >&2
  exit 1
fi

# folder dialect
pairs=(
  "postgres-regress postgresql"
  "tpch-duckdb postgresql"
  "tpch-sqlparser-rs postgresql"
  "tpcds-duckdb postgresql"
  "tpcds-spark-sql-perf postgresql"
  "mysql-5.1-tests mysql"
  "grammars-v4-examples/mysql mysql"
  "sakila mysql"
  "spider-dev sqlite"
  "grammars-v4-examples/sqlite sqlite"
  "firebird-employee firebird"
)
for pair in "${pairs[@]}"; do
  read -r folder dialect <<<"$pair"
  echo "== $folder ($dialect)"
  "$mvsql" parse --batch --dialect "$dialect" --reasons "$reasons" "$corpus/$folder/selects.sql" |
    sed "s|^$corpus/||"
done
