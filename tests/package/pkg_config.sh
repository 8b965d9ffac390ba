#!/usr/bin/env bash
# Builds applications with what pkg-config tells, and runs them.
# usage: pkg_config.sh COMPILER LIBRARY_FOLDER SOURCE PROGRAM PLAIN_FOLDER
set -euo pipefail

# Nobody else's packages are found: what builds an application is all there.
export PKG_CONFIG_LIBDIR=$2/pkgconfig

# build SOURCE PROGRAM MODULE
build() {
  local flags
  read -ra flags <<<"$(pkg-config --cflags --libs "$3")"
  "$compiler" -std=c++17 -Wall -Wextra -Werror -o "$2" "$1" "${flags[@]}" -Wl,-rpath,"$libraries"
}
compiler=$1
libraries=$2

build "$3" "$4" vptz_model
"$4" "$4.db"
build "$3" "$4_client" vptz_client
"$4_client" "$4.db"
build "$5/plain.cc" "$4_plain" vptz_client
"$4_plain"
"$5/needs.sh" "$4_plain"
