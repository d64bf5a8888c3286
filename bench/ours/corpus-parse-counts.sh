#!/usr/bin/env bash
# Prints, for every folder of the shared SQL corpus, how many of its
# statements parse under a dialect and how many print back to text that
# parses to the same print, as a Markdown table; with --reasons N also the
# N tokens most often blamed for a syntax error in each folder.
#
#   bench/ours/corpus-parse-counts.sh [--mvsql PATH] [--corpus DIR] [--dialect D] [--reasons N]
#
# Defaults: build/bin/mvsql, $MV_CORPUS_DIR or ../shared/corpus, sql92.
set -euo pipefail
cd "$(dirname "$0")/../.."

mvsql=build/bin/mvsql
corpus=${MV_CORPUS_DIR:-../shared/corpus}
dialect=sql92
reasons=0
while (($#)); do
  case "$1" in
    --mvsql) mvsql=$2; shift ;;
    --corpus) corpus=$2; shift ;;
    --dialect) dialect=$2; shift ;;
    --reasons) reasons=$2; shift ;;
    *) echo "corpus-parse-counts.sh: unknown option $1" >&2; exit 2 ;;
  esac
  shift
done
[[ -x $mvsql ]] || { echo "corpus-parse-counts.sh: no mvsql at $mvsql (build first)" >&2; exit 1; }
[[ -d $corpus ]] || { echo "corpus-parse-counts.sh: no corpus at $corpus" >&2; exit 1; }

echo "| folder | entries | parsed ($dialect) | round trip holds |"
echo "|---|---|---|---|"
total_entries=0 total_parsed=0 total_round=0
details=""
while IFS= read -r file; do
  folder=${file#"$corpus"/}
  folder=${folder%/selects.sql}
  report=$("$mvsql" parse --batch --dialect "$dialect" --reasons "$reasons" "$file")
  summary=$(head -n 1 <<<"$report")
  entries=$(sed -n 's/.*entries=\([0-9]*\).*/\1/p' <<<"$summary")
  parsed=$(sed -n 's/.*parsed=\([0-9]*\).*/\1/p' <<<"$summary")
  round=$(sed -n 's/.*roundtrip=\([0-9]*\).*/\1/p' <<<"$summary")
  echo "| $folder | $entries | $parsed | $round |"
  total_entries=$((total_entries + entries))
  total_parsed=$((total_parsed + parsed))
  total_round=$((total_round + round))
  if ((reasons > 0)); then
    details+=$'\n'"$folder:"$'\n'"$(tail -n +2 <<<"$report")"
  fi
done < <(find "$corpus" -name selects.sql | sort)
echo "| **total** | $total_entries | $total_parsed | $total_round |"
if ((reasons > 0)); then
  echo
  echo "Tokens most often blamed (count, token):$details"
fi
