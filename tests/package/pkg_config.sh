#!/usr/bin/env bash
# Builds the application with what pkg-config tells, and runs it.
# usage: pkg_config.sh COMPILER LIBRARY_FOLDER SOURCE PROGRAM
set -euo pipefail

# Nobody else's packages are found: what builds an application is all there.
export PKG_CONFIG_LIBDIR=$2/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs vptz_client)"
"$1" -std=c++17 -Wall -Wextra -Werror -o "$4" "$3" "${flags[@]}" -Wl,-rpath,"$2"
"$4" "$4.db"
