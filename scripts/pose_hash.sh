# shellcheck shell=bash
# Sourced by the scripts that compare poses bit by bit with other builds of the libraries, after bootstrap.sh.

# shellcheck disable=SC2154 # root is set there

# build_pose_hash FOLDER COMPILER [FLAG...]: builds the program that plays the poses with the libraries of a build.
build_pose_hash() {
    local folder=$1
    shift
    "$@" -std=c++20 -O1 -ffp-contract=off -I"$root" -I"$root/include" -I"$folder/generated" \
        "$root/tests/pose_hash/main.cpp" -o "$folder/pose_hash" -L"$folder/src" -L"$folder/platform" -ltw2 -ltw2_platform
}

# compare_pose_hash FOLDER NAME [LAUNCHER...]: plays them and compares with what the tests pin for all machines.
compare_pose_hash() {
    local folder=$1 name=$2 pinned hash
    shift 2
    pinned=$(sed -n 's/.*PoseHash::run(20), 0x\([0-9a-f]*\)ULL.*/\1/p' "$root/tests/object/pose_width_test.cpp")
    [ -n "$pinned" ] || { echo "tests/object/pose_width_test.cpp pins no hash" >&2; return 1; }
    hash=$(LD_LIBRARY_PATH=$folder/src:$folder/platform "$@" "$folder/pose_hash" 20)
    echo "$name $hash, pinned $pinned"
    [ "$hash" = "$pinned" ] || { echo "the poses have other bits: $name" >&2; return 1; }
}
