#!/usr/bin/env bash
# check_snippets.sh SOURCE SNIPPETS PROGRAMS [TW2]: runs what README and docs show, in a folder of its own. Whole programs
# end well; what a page says they print is printed. Commands and their options exist, scripts are read, lines for CMake
# are those of a project that the tests build.
# shellcheck disable=SC2094  # messages name the file that is read
set -euo pipefail
source=$1 snippets=$2 programs=$3 tw2=${4-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$source/sample/." "$work"
cd "$work"
failures=0

fail() {
    printf '%s\n' "$*" >&2
    failures=$((failures + 1))
}

shopt -s nullglob

# The page about another body's motion has a model, and a command that gives its clip to the walker.
for file in "$snippets"/fitting_motion_*.bvh; do
    cp "$file" nod.bvh
    read -ra words < <(cat "$snippets"/fitting_motion_*.sh)
    "$tw2" "${words[@]:1}" || fail "the command of the page fails: ${words[*]}"
done

"$programs" | tee printed.txt || fail "a program of the pages fails"
"$programs" "$snippets"/*.script || fail "a script of the pages is not read"

# What a page says is printed, line for line.
for file in "$snippets"/*.output; do
    while IFS= read -r line; do
        grep -qxF -- "$line" printed.txt || fail "$(basename "$file"): nothing prints: $line"
    done <"$file"
done

# check_command FILE LINE: the command is there, and so is every option.
check_command() {
    local file=$1 line=$2 words word help
    read -ra words <<<"${line#build/release/tools/}"
    case ${words[0]-} in
    tw2)
        [ -n "$tw2" ] || return 0
        help=$("$tw2" "${words[1]}" --help 2>&1) || {
            fail "$file: tw2 has no command ${words[1]}: $line"
            return 0
        }
        while IFS= read -r word; do
            grep -qE -- "$word([^a-z-]|\$)" <<<"$help" || fail "$file: tw2 ${words[1]} has no option $word: $line"
        done < <(grep -oE -- '--[a-z][a-z-]*' <<<"$line")
        ;;
    sudo)
        [ "${words[1]-} ${words[2]-}" != "apt-get install" ] || for word in "${words[@]:3}"; do
            grep -qxF -- "$word" "$source/packages.txt" || fail "$file: packages.txt has no $word: $line"
        done
        ;;
    cmake)
        while IFS= read -r word; do
            grep -rqw -- "$word" "$source/CMakeLists.txt" "$source/cmake" || fail "$file: there is no option $word: $line"
        done < <(grep -oE -- 'TW2_[A-Z_]+' <<<"$line")
        ;;
    ./*.sh | scripts/*.sh)
        [ -x "$source/${words[0]}" ] || fail "$file: there is no ${words[0]}"
        ;;
    esac
}
for file in "$snippets"/*.sh; do
    while IFS= read -r line; do
        check_command "$(basename "$file")" "$line"
    done < <(sed -e ':a' -e '/\\$/N; s/\\\n//; ta' "$file")
done

# check_cmake FILE LINE: a project that the tests build says the line, or the project has the command and its keywords.
check_cmake() {
    local file=$1 line=$2 word
    grep -rqF --include=CMakeLists.txt --include='*.cmake' --include=README.md -- "$line" \
        "$source/tests/install" "$source/platform/README.md" && return 0
    for word in "${line%%(*}" $(grep -oE '\b[A-Z]{3,}\b' <<<"$line"); do
        grep -rqw --include='*.cmake' --include=CMakeLists.txt -- "$word" "$source/cmake" "$source/tests/install" ||
            fail "$file: no tested project and no command of the project says $word: $line"
    done
}
for file in "$snippets"/*.cmake; do
    while IFS= read -r line; do
        [[ $line =~ ^[[:space:]]*(#.*)?$ ]] || check_cmake "$(basename "$file")" "$line"
    done <"$file"
done

# The exporter of the file format's page writes what the page says it does.
if command -v python3 >/dev/null; then
    for file in "$snippets"/*.python; do
        python3 "$file" || fail "$(basename "$file"): does not run"
    done
    if [ -n "$tw2" ]; then
        "$tw2" analyze --tree arrow.tw >tree.txt || fail "arrow.tw cannot be analyzed"
        grep -E '^ *0x100' "$snippets"/file_format_*.text >shown.txt || fail "the file format's page shows no tree"
        diff shown.txt tree.txt || fail "tw2 analyze --tree prints something else"
    fi
else
    echo "python3 was not found: the exporter of docs/file-format.md is not run"
fi

[ "$failures" = 0 ] || { echo "$failures failures" >&2; exit 1; }
