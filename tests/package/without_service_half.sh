#!/usr/bin/env bash
# Configures for an appliance whose bus has no service half: there is no vptzd
# then, and asking for it ends with a sentence that says what is missing.
# usage: without_service_half.sh SOURCE BUILD CMAKE_OPTION...
set -euo pipefail

source=$1
build=$2
shift 2
rm -rf "$build"
cmake -S "$source" -B "$build" -G Ninja "$@" >/dev/null
if ninja -C "$build" -t targets all | grep -q '^vptzd:'; then
  echo "vptzd is to be built without a service half" >&2
  exit 1
fi
if cmake -S "$source" -B "$build" -DVPTZ_BUILD_SERVICE=ON >"$build/refused" 2>&1; then
  echo "vptzd without a service half is not refused" >&2
  exit 1
fi
grep -q 'dorv_bus_service.h was not found' "$build/refused"
