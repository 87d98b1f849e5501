#!/usr/bin/env bash
# with_display.sh PROGRAM [ARGUMENT...]: runs a program on a display without a screen (Xvfb) and ends as it does. The
# server chooses a display that is free by itself, so that programs which start at the same moment never share one.
exec 3< <(exec Xvfb -displayfd 1 -screen 0 1280x900x24 -nolisten tcp 2>/dev/null)
server=$!
trap 'kill "$server" 2>/dev/null; wait "$server" 2>/dev/null' EXIT
if ! read -r -t 60 number <&3; then
    echo "with_display.sh: Xvfb did not start" >&2
    exit 127
fi
exec 3<&-
env -u WAYLAND_DISPLAY DISPLAY=":$number" "$@"
