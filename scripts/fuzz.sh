#!/usr/bin/env bash
# Runs the fuzz targets that stand in a build folder for some seconds each, as many at a time as there are processors:
# scripts/fuzz.sh [FOLDER [SECONDS [TARGET...]]]. An input that breaks a target stays in FOLDER/fuzz/found. From an empty
# corpus the same inputs are tried each time; TW2_FUZZ_SEED=N tries others.
set -euo pipefail
# shellcheck source=scripts/bootstrap.sh
. "$(dirname "${BASH_SOURCE[0]}")/bootstrap.sh"

folder=$(cd "${1:-$root/build/fuzz}" && pwd)/fuzz
seconds=${2:-30}
shift "$(($# < 2 ? $# : 2))"

# Inputs that are kept with the sources, then what the seed program writes; the first folder takes what is found new.
run_target() {
    local name=$1 inputs=() log=$folder/$1.log
    mkdir -p "$folder/corpus/$name" "$folder/found"
    for inputs_of in "$root/fuzz/corpus" "$folder/seeds"; do
        [ ! -d "$inputs_of/$name" ] || inputs+=("$inputs_of/$name")
    done
    if "$folder/fuzz_$name" -max_total_time="$seconds" -seed="${TW2_FUZZ_SEED:-1}" -entropic=0 -timeout=20 -rss_limit_mb=2048 -max_len=16384 \
        -artifact_prefix="$folder/found/$name-" "$folder/corpus/$name" "${inputs[@]}" >"$log" 2>&1; then
        echo "$name: $(grep -E '^Done [0-9]+ runs' "$log")"
    else
        echo "$name: FAILED, the end of $log:"
        tail -n 50 "$log"
        return 1
    fi
}

[ ! -x "$folder/fuzz_seeds" ] || "$folder/fuzz_seeds" "$folder/seeds"
targets=("$@")
if [ "${#targets[@]}" = 0 ]; then
    for source in "$root"/fuzz/*.cpp; do
        name=$(basename "$source" .cpp)
        # What reads models stands only where the library of its reader was found.
        if [[ $name != model_* || -x $folder/fuzz_$name ]]; then
            targets+=("$name")
        fi
    done
fi
failed=0
running=0
for target in "${targets[@]}"; do
    if [ "$running" = "$jobs" ]; then
        wait -n || failed=1
        running=$((running - 1))
    fi
    run_target "$target" &
    running=$((running + 1))
done
while [ "$running" -gt 0 ]; do
    wait -n || failed=1
    running=$((running - 1))
done
exit "$failed"
