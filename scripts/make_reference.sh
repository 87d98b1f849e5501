#!/usr/bin/env bash
# Makes the reference in out/docs/, a site to look at in any browser: the pages of docs/, every public name of the
# library, the engine and the renderer, and the examples with their pictures. Ends with 1 at the first page with a
# warning: a public name that nothing is said about, a link that leads nowhere. Needs doxygen.
#   scripts/make_reference.sh [FOLDER]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
target=${1-out/docs}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/pages"

# Pages, in the order in which README names them and any others behind, with the links that the site has.
number=100
while IFS= read -r page; do
    awk -f docs/reference/pages.awk "$page" >"$work/pages/$number-${page//\//_}"
    number=$((number + 1))
done < <(
    echo README.md
    {
        grep -oE '\]\([A-Za-z/_-]+\.md' README.md | sed 's/^](//'
        printf '%s\n' docs/*.md CHANGELOG.md
    } | awk '!seen[$0]++'
)

# Each example is a page: its picture, what its first comment says, and its text.
for example in examples/*.cpp; do
    name=$(basename "$example" .cpp)
    printf '/** @example %s.cpp\n' "$name"
    picture=docs/images/example_$name
    for file in "$picture".png "$picture".gif; do
        [ ! -f "$file" ] || printf '@image html %s\n' "$(basename "$file")"
    done
    sed -n '/^\/\/ \{0,1\}/!q; s/^\/\/ \{0,1\}//p' "$example"
    printf '*/\n'
done >"$work/examples.dox"

# It warns of everything before it fails.
TW2_REFERENCE=$work doxygen docs/reference/Doxyfile 2>"$work/warnings.txt" || true
if [ -s "$work/warnings.txt" ]; then
    sed "s|$PWD/||; s|$work/pages/[0-9]*-||" "$work/warnings.txt" >&2
    printf '%s: %s warnings\n' docs/reference "$(wc -l <"$work/warnings.txt")" >&2
    exit 1
fi

# Pages and pictures that are linked to are there. Doxygen does not look at links that are plain HTML.
(
    cd "$work/site"
    grep -ohE '(href|src)="[^"#:?]+["#]' ./*.html | sed 's/^[a-z]*="//; s/.$//' | sort -u | while IFS= read -r file; do
        [ -f "$file" ] || printf '%s: linked to, and not there\n' "$file"
    done
) >"$work/missing.txt"
if [ -s "$work/missing.txt" ]; then
    cat "$work/missing.txt" >&2
    exit 1
fi

rm -rf "$target"
mkdir -p "$(dirname "$target")"
cp -r "$work/site" "$target"
printf '%s/index.html: %s pages\n' "$target" "$(find "$target" -name '*.html' | wc -l)"
