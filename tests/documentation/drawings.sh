#!/usr/bin/env bash
# A drawing shows what its text says, and the page the figures that its plots
# show.
# usage: drawings.sh SOURCE_TREE
set -euo pipefail
cd "$1/docs"

checked=0
wrong=0
# expect FILE TEXT REMEDY
expect() {
  checked=$((checked + 1))
  grep -qF -e "$2" "$1" && return
  echo "docs/$1 lacks \"$2\"; $3" >&2
  wrong=1
}

# A label's lines are texts of their own in the drawing.
labels() {
  grep -oE 'label="[^"]*"' "$1" | sed -E 's/^label=" *//; s/"$//; s/\\n/\n/g; s/&/\&amp;/g; s/-/\&#45;/g; s/\x27/\&#39;/g'
}

for source in drawings/*.dot; do
  while IFS= read -r label; do
    expect "${source%.dot}.svg" "$label" 'scripts/docs draws it anew'
  done < <(labels "$source")
done

for plot in plots/bus.svg plots/database.svg; do
  while IFS= read -r figure; do
    expect performance.md "| $figure |" 'scripts/plot brings plots and tables together'
  done < <(grep -oE '>[0-9,]+\.[0-9]</text>' "$plot" | grep -oE '[0-9,]+\.[0-9]')
done

echo "$checked texts"
[ "$checked" -gt 20 ] && [ "$wrong" -eq 0 ]
