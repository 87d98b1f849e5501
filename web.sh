#!/usr/bin/env bash
# Builds the page into out/web/ and serves it on a port of this machine; needs nothing done before it. What lies in
# out/web/ can be put on any static host as it is.
#   ./web.sh [--build-only] [PORT]
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/scripts/bootstrap.sh"
cd "$root"

serve=true
if [ "${1-}" = --build-only ]; then
    serve=false
    shift
fi
port=${1-8000}
install_packages "build web" "convert"

# Headers that need nothing but a compiler; the folder they are installed in has others that belong to this machine only.
headers=build/web/headers
mkdir -p "$headers"
for header in stb tiny_gltf.h nlohmann; do
    if [ -e "/usr/include/$header" ]; then
        cp -rL "/usr/include/$header" "$headers/"
    fi
done

say "Building the page (WebAssembly)"
unset CMAKE_CXX_COMPILER_LAUNCHER
# Where Debian keeps what Emscripten's own scripts need; another node than Debian's does not look there.
export NODE_PATH=/usr/share/nodejs${NODE_PATH:+:$NODE_PATH}
if command -v ccache >/dev/null; then
    export EM_COMPILER_WRAPPER=ccache
fi
emcmake cmake -S . -B build/web -G Ninja -DCMAKE_BUILD_TYPE=Release -DTW2_WARNINGS_AS_ERRORS=OFF \
    -DTW2_BUILD_TESTS=OFF -DTW2_BUILD_TOOLS=OFF -DTW2_BUILD_WINDOW=OFF -DTW2_BUILD_EXAMPLES=OFF \
    -DTW2_STB_INCLUDE_DIR="$root/$headers" -DTW2_TINYGLTF_INCLUDE_DIR="$root/$headers" \
    -DTW2_JSON_INCLUDE_DIR="$root/$headers" -DTW2_WEB_OUTPUT="$root/out/web"
cmake --build build/web -j "$jobs" --target tw2_page

say "Done"
printf '%s KB, %s KB compressed\n' "$(du -sk out/web | cut -f1)" "$(tar -C out/web -cz . | wc -c | awk '{print int($1 / 1024)}')"
if $serve; then
    printf 'http://127.0.0.1:%s/   (Ctrl+C ends it)\n' "$port"
    exec python3 -m http.server --bind 127.0.0.1 --directory out/web "$port"
fi
