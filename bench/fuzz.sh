#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang and runs each for a while.
#
#   bench/fuzz.sh [SECONDS] [TARGET...]
#
# SECONDS is the time per target (default 60). A TARGET is the name of a fuzz/*_fuzz.cpp
# file with or without the "_fuzz" ending (xml_parse or xml_parse_fuzz); without targets
# all of them run, one after the other. Each run starts from a copy of its seed corpus
# (fuzz/corpus/<name>/) in a scratch directory, so the seeds in the tree stay as they are.
# Inputs that crash, leak or time out are kept under build-fuzz/findings/<target>/.
# Exit status: 0 when no target found anything, 1 when one did, 2 for a build failure.
set -u

root=$(cd "$(dirname "$0")/.." && pwd)
build=$root/build-fuzz
seconds=60
if [[ $# -gt 0 && $1 =~ ^[0-9]+$ ]]; then
    seconds=$1
    shift
fi

targets=()
if [[ $# -gt 0 ]]; then
    for name in "$@"; do
        name=${name%_fuzz}
        name=${name%.cpp}
        name=${name%_fuzz}
        if [[ ! -f $root/fuzz/${name}_fuzz.cpp ]]; then
            echo "fuzz.sh: no fuzz target '$name' (fuzz/${name}_fuzz.cpp)" >&2
            exit 2
        fi
        targets+=("${name}_fuzz")
    done
else
    for src in "$root"/fuzz/*_fuzz.cpp; do
        [[ -e $src ]] || continue
        name=$(basename "$src" .cpp)
        targets+=("$name")
    done
fi
if [[ ${#targets[@]} -eq 0 ]]; then
    echo "fuzz.sh: no fuzz targets under fuzz/" >&2
    exit 2
fi

export CC=clang CXX=clang++
if ! cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILB_FUZZ=ON \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ >/dev/null; then
    echo "fuzz.sh: configuring $build failed" >&2
    exit 2
fi
if ! cmake --build "$build" --target "${targets[@]}" -j2; then
    echo "fuzz.sh: build failed" >&2
    exit 2
fi

scratch=$(mktemp -d "${TMPDIR:-/tmp}/quilb-fuzz.XXXXXX")
trap 'rm -rf "$scratch"' EXIT

status=0
summary=()
for target in "${targets[@]}"; do
    name=${target%_fuzz}
    corpus=$scratch/$name
    mkdir -p "$corpus"
    if [[ -d $root/fuzz/corpus/$name ]]; then
        cp -R "$root/fuzz/corpus/$name/." "$corpus/"
    fi
    findings=$build/findings/$target
    mkdir -p "$findings"
    log=$build/findings/$target.log
    echo "== $target: ${seconds}s, seeds: $(ls "$corpus" | wc -l), log: $log"
    before=$(ls "$findings" | wc -l)
    "$build/fuzz/$target" "$corpus" -max_total_time="$seconds" -timeout=10 \
        -artifact_prefix="$findings/" -print_final_stats=1 >"$log" 2>&1
    rc=$?
    after=$(ls "$findings" | wc -l)
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' | tail -1)
    if [[ $rc -ne 0 || $after -gt $before ]]; then
        status=1
        summary+=("$target: FOUND $((after - before)) input(s) (exit $rc), see $findings and $log")
        grep -m1 -E 'ERROR: |runtime error:|==[0-9]+==' "$log" | sed 's/^/    /'
    else
        summary+=("$target: nothing found in ${seconds}s (${runs:-?} runs)")
    fi
done

echo
printf '%s\n' "${summary[@]}"
exit $status
