#!/usr/bin/env bash
# Makes the moving pictures of README.md, docs/images/window.gif and docs/images/page.gif: the window behind a display
# without a screen, the page in headless Chromium. Needs build/release (./test.sh), out/web (./web.sh --build-only) and
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

scripts/with_display.sh "$tw2" view "$script" --no-settings --size 720x480 --pictures 62 --seconds-per-picture 0.1 \
    --do "clip run" --do "look corner" --do "wait 8" --do "show skeleton on" --do "wait 8" \
    --do "show skeleton off" --do "mixer on" --do "mix-fade 0.8" --do "mix walk" --do "wait 14" \
    --do "mixer off" --do "surface weights" --do "bone neck" --do "wait 8" --do "surface materials" --do "bone none" \
    --do "crowd 24" --window-picture "$work/window.gif"
shrink -delay 10 "$work/window.gif" -coalesce docs/images/window.gif

cp tests/web/* "$work/"
(cd "$work" && npm install --no-audit --no-fund --silent)
node "$work/page_pictures.mjs" out/web "$work/frames"
shrink -delay 12 "$work"/frames/*.png -resize 80% docs/images/page.gif
ls -l docs/images
