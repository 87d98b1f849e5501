#!/usr/bin/env bash
# Makes the pictures of docs/gallery.md, docs/images/example_*.png: what each example does, by the example itself where it
# draws, else by tw2 render and tw2 view. Needs the examples and tools (cmake --build --preset release), a display without
# a screen (xvfb) and ImageMagick.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root=$PWD
tw2=$root/build/release/tools/tw2
examples=$root/build/release/examples
images=$root/docs/images
work=$root/build/gallery
rm -rf "$work"
mkdir -p "$work"

# keep FILE NAME ARGUMENTS...: a picture as that of an example, small, after what the arguments do to it
keep() {
    convert "$1" "${@:3}" -resize "480x>" +dither -colors 128 -strip -define png:compression-level=9 "$images/example_$2.png"
}

# look NAME CROP SCRIPT COMMAND...: what the window of tw2 view shows between its panels, after the commands
look() {
    local name=$1 crop=$2 commands=() command
    for command in "${@:4}"; do
        commands+=(--do "$command")
    done
    scripts/with_display.sh "$tw2" view "$3" --no-settings --size 1280x800 --pictures 30 --seconds-per-picture 0.05 \
        --window-picture "$work/$name.png" "${commands[@]}"
    keep "$work/$name.png" "$name" -crop "$crop" +repage
}

"$tw2" render sample/sprout.script --animation dance --skeleton --from 0 --to 1 --sheet-pictures 4 --columns 4 \
    --size 240x300 --sheet "$work/play_object.png"
keep "$work/play_object.png" play_object
look skinned_character 780x660+250+30 sample/walker.script \
    "clip walk" "blend 1 run 0.5" "group upper_arm_right wave" "look corner"
look crowd_on_threads 780x520+250+120 sample/walker.script "clip run" "crowd 199" "look corner" "zoom 0.75"
"$tw2" render sample/sprout.script --animation sway --time 0.5 --wireframe --axes --size 480x320 -o "$work/write_sample.png"
keep "$work/write_sample.png" write_sample
"$tw2" render sample/walker.script --animation walk --from 0 --to 1 --sheet-pictures 4 --columns 4 --azimuth 60 \
    --size 240x320 --sheet "$work/write_walker.png"
keep "$work/write_walker.png" write_walker
look walk_along_path 780x660+250+30 sample/walker.script "clip walk" "mixer on" "add-layer replace spine" "mix wave 1" \
    "reach look head" "look corner"
(
    cd "$work"
    cp -r "$root"/sample/. .
    for skin in walker_skin walker_far; do
        printf 'skeleton { geometry { exportdata walker_skeleton.tw } animation { index 0 filename walker_rest.anim.tw } }
            skin { geometry { exportdata %s.tw  skindata %s.skd } }' "$skin" "${skin/_skin/}" >"$skin.script"
        "$tw2" render "$skin.script" --wireframe --no-grid --size 240x320 -o "$skin.png" >/dev/null
    done
    convert walker_skin.png walker_far.png +append level_of_detail.png
    "$root/scripts/with_display.sh" "$examples/example_window" "$root/sample/sprout.script" 6
    "$root/scripts/with_display.sh" "$examples/example_game" "$root/sample" 15
)
keep "$work/level_of_detail.png" level_of_detail
keep "$work/window.png" window
keep "$work/game.png" game
ls -l "$images"
