#!/usr/bin/env bash
# Installs what the build and the tests need on Debian 12, through apt.
# Idempotent: one dpkg-query tells what is missing; when nothing is, it returns at once.
set -euo pipefail

packages=(
  # toolchain (python3 runs the include check of the layering)
  g++ cmake ninja-build pkg-config ccache python3
  # tests and benchmarks (libpg_query: PostgreSQL's own parser, which judges
  # what the PostgreSQL dialect prints)
  libgtest-dev libgmock-dev libbenchmark-dev libpg-query-dev
  # engine dependencies
  libicu-dev libpugixml-dev
  # database client libraries behind the dataset layer
  libsqlite3-dev libpq-dev libmariadb-dev unixodbc-dev
  # ODBC drivers the generic adapter is tested with
  libsqliteodbc odbc-postgresql
  # design surface (Qt 6 Widgets) and the fonts it renders with when headless
  qt6-base-dev fonts-dejavu-core
  # the PostgreSQL 15 server the tests start throw-away instances of
  postgresql-15
  # the MariaDB server and client the tests start throw-away instances of
  mariadb-server mariadb-client
  # the Firebird 3 server the tests start throw-away instances of, and the
  # client library with its headers behind the Firebird adapter
  firebird3.0-server firebird-dev
)

# One dpkg-query for all packages; a package it has never heard of prints nothing.
installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "${packages[@]}" 2>/dev/null | awk '$1 == "installed" {print $2}' || true)
missing=()
for p in "${packages[@]}"; do
  grep -qxF "$p" <<<"$installed" || missing+=("$p")
done

if ((${#missing[@]} == 0)); then
  exit 0
fi

echo "setup: installing ${missing[*]}"
sudo_cmd=()
if [[ $(id -u) != 0 ]]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp /tmp/mv-setup.XXXXXX.log)
# Tests start their own database servers: keep the packages' services from
# starting during the install (a policy-rc.d of our own, only for the install).
if [[ ! -e /usr/sbin/policy-rc.d ]]; then
  printf '#!/bin/sh\nexit 101\n' | "${sudo_cmd[@]}" tee /usr/sbin/policy-rc.d >/dev/null
  "${sudo_cmd[@]}" chmod 755 /usr/sbin/policy-rc.d
  trap '"${sudo_cmd[@]}" rm -f /usr/sbin/policy-rc.d' EXIT
fi
if ! { "${sudo_cmd[@]}" apt-get update -qq &&
       "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  cat "$log" >&2
  echo "setup: apt-get failed (log above)" >&2
  exit 1
fi
rm -f "$log"
