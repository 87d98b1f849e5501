#!/usr/bin/env bash
# Whether the Debian packages and the archive of the sources are whole. Packs what build/release has, lays the packages out
# in a folder that stands for a machine with nothing else of this project, and there builds a small program by pkg-config and
# by CMake, runs both, and the command. Then unpacks the sources and configures them. Takes a minute after ./test.sh.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"

install_packages "build tools packages"
build release

packages=$root/build/release/packages
rm -rf "$packages"
say "Packing"
(cd "$root" && cpack --preset deb && cpack --preset source) >"$root/build/release/packages.log" ||
    { tail -n 40 "$root/build/release/packages.log"; exit 1; }

machine=$(mktemp -d)
trap 'rm -rf "$machine"' EXIT
for package in libtw2-1 libtw2-dev tw2-tools; do
    file=$(echo "$packages/$package"_*.deb)
    [ -f "$file" ] || { echo "there is no package $package" >&2; exit 1; }
    dpkg -x "$file" "$machine"
    printf '%-12s %8s  %s\n' "$package" "$(du -h "$file" | cut -f1)" "$(dpkg -f "$file" Depends)"
    # A dependency that nothing provides would show on other machines only.
    for name in $(dpkg -f "$file" Depends | tr ',' '\n' | sed 's/(.*//; s/|.*//'); do
        [ "${name#libtw2}" != "$name" ] || apt-cache show "$name" >/dev/null 2>&1 || dpkg -s "$name" >/dev/null ||
            { echo "$package depends on $name, which is no package" >&2; exit 1; }
    done
done

say "Building a host with pkg-config, and one with CMake"
usr=$machine/usr
export LD_LIBRARY_PATH=$usr/lib PKG_CONFIG_PATH=$usr/lib/pkgconfig
cp -r "$root/tests/install" "$machine/hosts"
cp "$machine/hosts/find_package/main.cpp" "$machine/hosts/make/"
make -s -C "$machine/hosts/make"
"$machine/hosts/make/game"
version=$(pkg-config --modversion tw2)
cmake -S "$machine/hosts/find_package" -B "$machine/built" -G Ninja -DCMAKE_PREFIX_PATH="$usr" \
    -DEXPECTED_VERSION="$version" -DWITH_RENDER=OFF >/dev/null
cmake --build "$machine/built" >/dev/null
"$machine/built/consumer"

# The tutorial's game draws in a window: it is built where what it is linked with is installed.
if pkg-config --exists epoxy glfw3; then
    cp "$root/examples/game.cpp" "$machine/hosts/game/"
    cmake -S "$machine/hosts/game" -B "$machine/game" -G Ninja -DCMAKE_PREFIX_PATH="$usr" >/dev/null
    cmake --build "$machine/game" >/dev/null
    echo "The game of docs/tutorial.md is built"
fi

say "Running the command"
cp -r "$root/sample" "$machine/sample"
(cd / && "$usr/bin/tw2" --version && "$usr/bin/tw2" info "$machine/sample/sprout.script" | sed -n 1,5p)

say "Configuring the sources"
tar -C "$machine" -xf "$packages/tw2-$version.tar.xz"
(cd "$machine/tw2-$version" && cmake -S . -B build -G Ninja -DTW2_BUILD_CONVERT=OFF -DTW2_BUILD_RENDER=OFF >/dev/null)
# Every file of the project is in it.
git -C "$root" ls-files | sort >"$machine/expected"
(cd "$machine/tw2-$version" && find . -type f -o -type l | sed 's|^\./||' | sort) >"$machine/packed"
missing=$(comm -23 "$machine/expected" "$machine/packed")
[ -z "$missing" ] || { printf 'not in the archive:\n%s\n' "$missing" >&2; exit 1; }
say "The packages are whole: $packages"
