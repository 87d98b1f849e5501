#!/usr/bin/env bash
# Converts the models of a folder beside the project and holds the result against another program's reading of the same
# files. Models and that program are no part of the project: without them, or without node, this says so and is content.
#
#     scripts/check_models.sh [TW2 [FOLDER]]
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
tw2=$(realpath "${1:-$root/build/release/tools/tw2}")
shared=${2:-$root/../shared}
skip() {
    echo "The models are not compared: $1"
    exit 0
}
[ -f "$shared/models/list.txt" ] || skip "there is no $shared/models/list.txt"
[ -f "$shared/oracle/run_all.mjs" ] || skip "there is no $shared/oracle/run_all.mjs"
command -v node >/dev/null || skip "node is not installed"
command -v npm >/dev/null || skip "npm is not installed"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$shared/oracle" "$work/oracle"
chmod -R u+w "$work/oracle"
(cd "$work/oracle" && npm install --silent --no-audit --no-fund) || skip "the oracle's packages cannot be installed"
# Its exit status is for a list in which all is right; what counts here is that nothing gets worse.
TW2=$tw2 timeout 600 node "$work/oracle/run_all.mjs" "$shared/models/list.txt" --out "$work/out" | tee "$work/table" || true
right=$(sed -n 's/^\([0-9]*\) of [0-9]* right.*/\1/p' "$work/table")
# Two of the thirty have no triangles; of one the other program takes the slopes of automatic keys for level ones.
expected=${TW2_MODELS_RIGHT:-27}
if [ "${right:-0}" -lt "$expected" ]; then
    echo "Only ${right:-none} of the models are right: $expected are expected." >&2
    exit 1
fi
