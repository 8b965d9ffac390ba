#!/usr/bin/env bash
# Every link of the pages that leads into the source tree must lead somewhere,
# to a heading that is there if it names one.
# usage: links.sh SOURCE_TREE
set -euo pipefail
cd "$1"

# The headings of a page as links name them.
anchors() {
  sed -nE 's/^#+ +//p' "$1" | tr '[:upper:]' '[:lower:]' | sed -E 's/[^a-z0-9 _-]//g; s/ /-/g'
}

broken=0
complain() {
  echo "$1: $2 leads nowhere" >&2
  broken=1
}

check() {
  local page=$1 link=$2 target=${2%%#*} anchor=''
  [[ $link != *#* ]] || anchor=${link#*#}
  local file=$page
  [ -z "$target" ] || file=$(dirname "$page")/$target
  [ -e "$file" ] || { complain "$page" "$link"; return; }
  [ -z "$anchor" ] || anchors "$file" | grep -qxF -e "$anchor" || complain "$page" "$link"
}

links=0
while IFS=: read -r page link; do
  [[ $link != http*:* && $link != mailto:* ]] || continue
  check "$page" "$link"
  links=$((links + 1))
done < <(grep -oE '\]\([^) ]+\)' README.md CHANGELOG.md CONTRIBUTING.md docs/*.md docs/decisions/*.md \
  platform/*/README.md | sed -E 's/\]\(//; s/\)$//')
echo "$links links"
[ "$links" -gt 50 ] && [ "$broken" -eq 0 ]
