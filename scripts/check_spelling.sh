#!/usr/bin/env bash
# One way to spell, as far as clang-tidy does not see to it: it knows nothing of includes, and it looks at the libraries
# alone; and nothing left over of a merge. Ends with 1 after naming each line that is spelled otherwise.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

sources=(include src platform render convert viewer web json tools examples bench fuzz)
status=0

# forbid WHAT PATTERN FOLDER...: complains of every line that matches the extended Perl pattern.
forbid() {
    local what=$1 pattern=$2
    shift 2
    local found
    found=$(grep -rnP --include='*.h' --include='*.cpp' "$pattern" "$@" || true)
    [ -n "$found" ] || return 0
    printf '%s:\n%s\n' "$what" "$found" >&2
    status=1
}

forbid "A header that is not installed is included in quotes" \
    '#include <(core|io|keyframe|light|lod|material|motion|object|skin|convert|viewer|web|json|tools|tests|bench|fuzz)/' \
    "${sources[@]}" tests
forbid "An installed header is included in angle brackets" '#include "(tw2|platform)/' \
    "${sources[@]}" tests
forbid "It is getFilename" '\bget(Alpha)?FileName\b' "${sources[@]}" tests
forbid "Suffixes of numbers are upper case" '(?<![\w."%])(\d+\.\d*|\.\d+|\d+(?=[eE][-+]?\d))([eE][-+]?\d+)?f\b' "${sources[@]}"
forbid "Constants are named in camelBack, without a prefix" \
    '^\s*(inline |static )*constexpr [^;=({]*\b(?!S_CACHE_LINE|M_LUTInverseSqrt)(sm?_\w+|[A-Z][A-Z0-9]*_\w*|[A-Z]{2,})(\[[^\]]*\])*\s*(=|\{|;)' \
    include src platform render convert viewer web json tools examples
if git grep -nE '^(<{7}|>{7}|[|]{7}) ' -- . >&2; then
    printf 'Both sides of a merge were kept there\n' >&2
    status=1
fi
exit "$status"
