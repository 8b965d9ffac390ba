#!/usr/bin/env bash
# The service of an installed tree that has been moved fills its database with
# the script of that tree.
# usage: moved_service.sh PREFIX
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
echo 'CREATE TABLE IF NOT EXISTS mark_of_this_tree (id INTEGER);' >>"$1/share/vptzd/seed.sql"

code=0
"$1/bin/vptzd" --cameras 2 --database "$folder/vptz.db" --bus "unix:$folder/nobody.sock" || code=$?
if [ "$code" -ne 3 ]; then
  echo "with a database and without a broker the service ends with $code instead of 3" >&2
  exit 1
fi
tables=$(sqlite3 "$folder/vptz.db" "SELECT name FROM sqlite_master WHERE name = 'mark_of_this_tree'")
[ -n "$tables" ] || { echo 'the script of another tree has been run' >&2; exit 1; }
