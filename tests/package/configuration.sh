#!/usr/bin/env bash
# The installation writes the configuration file, keeps one that is there, and
# goes on where it cannot write. Arguments: cmake, the source folder.
set -euo pipefail
cmake=$1
tree=$2
source=$tree/config/vptz.conf
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Installs below the folder that is named and prints what was said.
install_below() {
  DESTDIR=$1 "$cmake" -DSOURCE="$source" -DCONFIG_FILE=/etc/vptz.conf \
    -P "$tree/cmake/InstallConfiguration.cmake" 2>&1
}

fail() {
  echo "configuration: $1" >&2
  exit 1
}

install_below "$folder/fresh" >/dev/null
cmp "$source" "$folder/fresh/etc/vptz.conf" || fail 'the file is not installed'

echo '# mine' > "$folder/fresh/etc/vptz.conf"
said=$(install_below "$folder/fresh")
[ "$(cat "$folder/fresh/etc/vptz.conf")" = '# mine' ] || fail 'a file that was there is gone'
[[ $said == *"Kept: $folder/fresh/etc/vptz.conf"* ]] || fail "it does not say that it kept the file: $said"

touch "$folder/file"
said=$(install_below "$folder/file") || fail 'a folder that cannot be written ends the installation'
[[ $said == *"$folder/file/etc/vptz.conf cannot be written"* ]] || fail "it does not say what is missing: $said"
[ "$(wc -l <<< "$said")" -eq 1 ] || fail "more than one line: $said"
