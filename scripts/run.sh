#!/usr/bin/env bash
# Installs what is missing, builds, and runs mvsql on the bundled sample.
#   scripts/run.sh                 the default job: format samples/sample.sql
#   scripts/run.sh COMMAND ARGS    any mvsql command line
#   scripts/run.sh --designer [ARGS]  the visual designer (mvdesigner ARGS)
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
scripts/build.sh >/dev/null

if [[ "${1:-}" == "--designer" ]]; then
  shift
  exec build/bin/mvdesigner "$@"
fi
if (($#)); then
  exec build/bin/mvsql "$@"
fi
echo "== mvsql dialects"
build/bin/mvsql dialects
echo
echo "== mvsql format --dialect sql92 samples/sample.sql"
build/bin/mvsql format --dialect sql92 samples/sample.sql
echo
echo "== mvsql format --dialect sql92 --set KeywordFormat=akfUpperCase --set RightMargin=60 samples/sample.sql"
build/bin/mvsql format --dialect sql92 --set KeywordFormat=akfUpperCase --set RightMargin=60 samples/sample.sql
