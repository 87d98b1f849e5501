#!/usr/bin/env bash
# Makes the moving pictures of README.md, docs/images/window.gif and docs/images/page.gif, and docs/images/window_scene.png
# of docs/viewing.md: the window behind a display without a screen, the page in headless Chromium. Needs build/release (./test.sh), out/web (./web.sh --build-only) and
# ImageMagick.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
tw2=build/release/tools/tw2
script=sample/walker.script
work=build/web-test
mkdir -p "$work/frames"

# shrink ARGUMENTS... FILE: a small GIF of pictures
shrink() {
    convert "${@:1:$#-1}" +dither -colors 64 -fuzz 3% -layers OptimizeTransparency "${@:$#}"
}

scripts/with_display.sh "$tw2" view "$script" --no-settings --size 720x480 --pictures 58 --seconds-per-picture 0.1 \
    --do "clip run" --do "look corner" --do "wait 8" --do "show skeleton on" --do "wait 8" \
    --do "show skeleton off" --do "mixer on" --do "mix-fade 0.8" --do "slope 10" --do "plant on" --do "mix walk" \
    --do "wait 14" --do "mixer off" --do "plant off" --do "slope 0" --do "surface weights" --do "bone neck" --do "wait 8" --do "surface materials" --do "bone none" \
    --do "crowd 24" --window-picture "$work/window.gif"
shrink -delay 10 "$work/window.gif" -coalesce docs/images/window.gif

scripts/with_display.sh "$tw2" view "$script" --no-settings --size 960x640 --pictures 132 --seconds-per-picture 0.0333 \
    --do "clip walk" --do "mixer on" --do "in-step on" --do "mix-fade 0.5" --do "slope 9" --do "plant on" \
    --do "reach look head 3" --do "target -3 1.5 -20" --do "look corner" --do "add-layer replace spine 2" \
    --do "wait 50" --do "mix wave 1" --do "wait 60" --do "mix run" --window-picture "$work/scene.png"
convert "$work/scene.png" -colors 200 PNG8:docs/images/window_scene.png

cp tests/web/* "$work/"
(cd "$work" && npm install --no-audit --no-fund --silent)
node "$work/page_pictures.mjs" out/web "$work/frames"
shrink -delay 12 "$work"/frames/*.png -resize 80% docs/images/page.gif
ls -l docs/images
