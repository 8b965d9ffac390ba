#!/usr/bin/env bash
# The program is loaded with the client library and nothing behind it.
# usage: needs.sh PROGRAM
set -euo pipefail

needed=$(readelf -d "$1" | sed -nE 's/.*\(NEEDED\).*\[(.*)\]/\1/p')
grep -q '^libvptz_client\.so' <<<"$needed" || { echo 'the client library is missing' >&2; exit 1; }
if grep -E 'odb|protobuf|sqlite' <<<"$needed"; then
  echo "$1 is loaded with them by itself" >&2
  exit 1
fi
