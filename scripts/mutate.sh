#!/usr/bin/env bash
# Puts single faults into the code, one at a time, and tells which of them no test notices:
# scripts/mutate.sh [-n COUNT] [-s SEED] [-l LIST] [-m MINUTES] [-c] [ROOM...]
#
# A room is a folder of src or platform, or convert, json, render, tools or viewer; without one, all are taken. COUNT
# faults (30) are put into each, the same ones for the same SEED (1). Faults that do not compile or leave the compiled
# code as it was do not count. LIST is a file with faults of one's own, or those that an earlier run has printed, a line
# each: file:line `what stands there` -> `what comes there`. A room ends after MINUTES. A run that is stopped tells what
# it knows by then; -c goes on: what was noticed before counts as noticed, what was not is tried again.
# Everything happens in a copy of the working tree in build/mutate, which also keeps what was built for the next time.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"

folder=$root/build/mutate
mkdir -p "$folder/build"
exec 9>"$folder/build/lock"
flock -n 9 || { echo "another run works in $folder" >&2; exit 1; }

# What an interrupted run has left is put back first.
find "$folder" -name '*.whole' | while read -r kept; do
    mv "$kept" "${kept%.whole}"
done
# Files keep their times, so that only what has changed since the last run is built again.
files() {
    git -C "$root" ls-files -co --exclude-standard | while read -r file; do
        [ ! -e "$root/$file" ] || printf '%s\n' "$file"
    done | sort
}
files | tar -C "$root" -c -T - | tar -C "$folder" -x
(cd "$folder" && find . -type f -not -path './build/*' -printf '%P\n') | sort | comm -23 - <(files) |
    (cd "$folder" && xargs -r -d '\n' rm -f)

polite=(nice -n "${MUTATE_NICE:-19}")
if ! { "${polite[@]}" cmake -S "$folder" --preset release &&
    "${polite[@]}" cmake --build "$folder/build/release" -j 1 --target tw2_tests; } >"$folder/build/log"; then
    tail -n 30 "$folder/build/log"
    exit 1
fi
exec "${polite[@]}" python3 "$root/scripts/mutate.py" --folder "$folder" "$@"
