#!/usr/bin/env bash
# Compares what a shared object exports with a list; --update writes the list.
# usage: symbols.sh LIBRARY LIST [--update]
#
# Inline functions, which compilers export or not as they like, don't count.
set -euo pipefail

exported() {
  nm -D --defined-only --demangle "$1" | cut -c 18- | sed -E 's/@@.*//; /^[AWVuwv] /d' | LC_ALL=C sort -u
}

if [ "${3:-}" = --update ]; then
  exported "$1" >"$2"
elif ! diff "$2" <(exported "$1"); then
  echo "the exported symbols differ from $2: < is missing, > is new" >&2
  exit 1
fi
