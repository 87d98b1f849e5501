# shellcheck shell=bash
# Sourced by bench.sh: the costs of playing per frame, here and at another revision.
# shellcheck disable=SC2154 # root and jobs come from bootstrap.sh

# Prints the include and link options for the library of a source tree and its build.
options_for() {
    local source=$1 build=$2
    printf '%s\n' "-iquote" "$source" "-I$source/include" "-I$source" "-I$build/generated" \
        "-L$build/src" "-L$build/platform" -ltw2 -ltw2_platform "-Wl,-rpath,$build/src:$build/platform"
}

# The best value of each row in files of "name<tab>value" lines, in the order of the rows; of a row that is a ratio
# already, and may be wrong to either side, the middle one.
best_of() {
    awk -F'\t' '!($1 in times) { order[++rows] = $1; times[$1] = 0 }
                {
                    # Sorted by insertion.
                    for (i = ++times[$1]; i > 1 && value[$1, i - 1] + 0 > $2 + 0; --i) value[$1, i] = value[$1, i - 1]
                    value[$1, i] = $2
                }
                END {
                    for (row = 1; row <= rows; ++row) {
                        name = order[row]
                        printf "%s\t%s\n", name, value[name, name ~ /^threads/ ? int((times[name] + 1) / 2) : 1]
                    }
                }' "$@"
}

# script_for_all WORDS SCRIPT: the script without what older revisions do not know, names and events, and without the keys
# that WORDS, a pattern, names.
script_for_all() {
    sed -E -e 's/[[:space:]]+event[[:space:]]*\{[^}]*\}//g' -e 's/[[:space:]]+name[[:space:]]+"[^"]*"//g' \
        -e "\\@^[[:space:]]*($1)@d" "$2"
}

# as_table REVISION: lines of "row, value then, row, value now" as a Markdown table with the ratio and, from
# bench/frames/aims.txt, what it should be; an aim that is missed says so.
as_table() {
    printf '| %-66s | %9s | %9s | %5s | %-22s |\n' "ns per bone, or as named" "$1" here ratio aim
    printf '|%s|%s|%s|%s|%s|\n' "$(printf -- '-%.0s' {1..68})" ----------: ----------: ------: "$(printf -- '-%.0s' {1..24})"
    awk -F'\t' 'NR == FNR { if ($0 !~ /^#/) aims[$1] = $2; next }
                {
                    ratio = $4 / $2; aim = aims[$1]; words = split(aim, part, " "); limit = part[words]
                    value = aim ~ /^ratio/ ? ratio : $4
                    missed = aim != "" && (aim ~ /^at least/ ? value < limit : sprintf("%.2f", value) + 0 > limit + 0.005)
                    printf "| %-66s | %9.2f | %9.2f | %5.2f | %-22s |\n", $1, $2, $4, ratio, aim (missed ? ", missed" : "")
                }' "$root/bench/frames/aims.txt" -
}

# bench_against REV [ROWS [SCRIPT]]: builds REV beside this tree, compiles bench/frames of this tree against its library,
# runs both programs in turn and prints their best values as a table, with what the machine was and did. ROWS: the
# beginning of a row's name, or a word in it. SCRIPT: a converted character.
bench_against() {
    local revision folder rows=${2-} script=${3:-$root/sample/sprout.script} round load
    revision=$(git -C "$root" rev-parse --short --verify "$1^{commit}") || return 2
    folder=$root/build/against/$revision
    script=$(realpath "$script")
    say "Building $revision"
    if [ ! -d "$folder/source" ]; then
        mkdir -p "$folder/unpacked"
        git -C "$root" archive "$revision" | tar -x -C "$folder/unpacked"
        mv "$folder/unpacked" "$folder/source"
    fi
    cmake -S "$folder/source" -B "$folder/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTW2_BUILD_TESTS=OFF \
        -DTW2_BUILD_TOOLS=OFF -DTW2_BUILD_RENDER=OFF -DTW2_BUILD_CONVERT=OFF -DTW2_BUILD_EXAMPLES=OFF >/dev/null
    cmake --build "$folder/build" --target tw2 --parallel "$jobs"
    local options
    mapfile -t options < <(options_for "$folder/source" "$folder/build")
    "${CXX:-c++}" -std=c++20 -O2 -ffp-contract=off "$root/bench/frames/frames.cpp" -o "$folder/frames" "${options[@]}" -pthread
    build release tw2_bench_frames

    say "Measuring $revision and the present tree in turn"
    script_for_all "//" "$script" >"$folder/character.script"
    script_for_all "//|boundingBox|boundingSphere|enableBounding" "$script" >"$folder/character_without_volumes.script"
    local arguments=("$rows" "converted characters" "$folder/character.script"
        "converted characters without volumes" "$folder/character_without_volumes.script")
    load=$(cut -d' ' -f1-3 /proc/loadavg)
    rm -f "$folder"/then.* "$folder"/now.*
    for round in 1 2 3 4 5; do
        (cd "$(dirname "$script")" && "$folder/frames" "${arguments[@]}") >"$folder/then.$round"
        (cd "$(dirname "$script")" && "$root/build/release/bench/tw2_bench_frames" "${arguments[@]}") >"$folder/now.$round"
    done
    paste <(best_of "$folder"/then.*) <(best_of "$folder"/now.*) | as_table "$revision"
    printf '\n%s, %s of %s processors, best of %s runs of each in turn, load average %s before and %s after.\n' \
        "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)" "$(nproc)" "$(nproc --all)" "$round" "$load" \
        "$(cut -d' ' -f1-3 /proc/loadavg)"
}
