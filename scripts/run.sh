#!/usr/bin/env bash
# Installs what is missing, builds, and runs mvsql on the bundled sample.
#   scripts/run.sh                 the default job on samples/sample.sql
#   scripts/run.sh COMMAND ARGS    any mvsql command line
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
scripts/build.sh >/dev/null

if (($#)); then
  exec build/bin/mvsql "$@"
fi
build/bin/mvsql --help
echo
echo "== mvsql decode samples/sample.sql"
exec build/bin/mvsql decode samples/sample.sql
