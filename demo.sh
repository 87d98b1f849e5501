#!/usr/bin/env bash
# Builds everything, converts a real character, draws it walking and fading from a run into a walk, and measures playback.
# Needs nothing done before it; results go to out/.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/scripts/bootstrap.sh"

install_packages "build tools render" "convert window bench"
build release tw2_cli
cd "$root"
tw2=build/release/tools/tw2
models=/usr/share/assimp/models
mkdir -p out

if [ -f "$models/X/Testwuson.X" ] && "$tw2" convert --help >/dev/null 2>&1; then
    say "Converting Testwuson.X, a character with three clips"
    "$tw2" convert "$models/X/Testwuson.X" -o out/bison
    script=out/bison/testwuson.script
    walk=walk
    fade=run:walk
else
    say "Without the converter or its test models: the project's own sample"
    script=sample/walker.script
    walk=walk
    fade=run:walk
fi

say "Drawing"
"$tw2" render "$script" --animation "$walk" --size 480x360 --gif out/demo.gif --sheet out/demo.png
"$tw2" render "$script" --blend "$fade" --weight 0..1 --size 480x360 --gif out/fade.gif

if build release tw2_bench >/dev/null 2>&1; then
    say "Measuring: 1000 characters of 64 bones, nanoseconds per bone"
    build/release/bench/tw2_bench --benchmark_filter='(object/play_world|object/cross_two_world|skin/play_world_bones)/1000' 2>/dev/null
fi

say "Done"
"$tw2" info "$script" | grep -E '^[^ ]|animations|frames'
printf '%s\n' "" "out/demo.gif  the character moving" "out/demo.png  twelve moments of it" \
    "out/fade.gif  one animation fading into another" "$script  what the library loaded"
if "$tw2" view --help >/dev/null 2>&1; then
    printf '%s\n' "" "To look at it yourself: $tw2 view $script" "or, as a page in your browser: ./web.sh"
fi
