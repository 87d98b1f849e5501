#!/usr/bin/env bash
# Builds the benchmarks and prints their table; needs nothing done before it. Options go to the program:
# ./bench.sh --benchmark_filter=keyframe
# ./bench.sh --against REV [ROWS [SCRIPT]] measures what playing costs per frame here and at another revision, in turn,
# and prints both, their ratio and what it should be, as the table of docs/performance.md. ROWS picks rows: the beginning of a name ("rigid 1000x64 "), or a word ("clip").
# SCRIPT: a character that tw2 convert wrote with at least two clips, played 500 times; else the one of sample/.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/scripts/bootstrap.sh"

# shellcheck source=scripts/bench_against.sh
. "$root/scripts/bench_against.sh"

install_packages "build bench"
if [ "${1-}" = --against ]; then
    [ -n "${2-}" ] || { echo "--against needs a revision" >&2; exit 2; }
    bench_against "$2" "${3-}" "${4-}"
    exit
fi
build release tw2_bench
say "Measuring"
"$root/build/release/bench/tw2_bench" "$@"
