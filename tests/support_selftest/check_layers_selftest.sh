#!/usr/bin/env bash
# Runs scripts/check_layers.sh on tests/data/layers/tree, a small tree whose files include
# across every rule of the script once or more, beside includes that are allowed, includes that
# lead nowhere and test data that is not scanned. The script must fail, and report exactly the
# lines of tests/data/layers/expected.txt: each crossing found, with its rule, and nothing else.
set -u
tests=$(cd "$(dirname "$0")/.." && pwd)
data=$tests/data/layers

output=$(bash "$tests/../scripts/check_layers.sh" "$data/tree" 2>&1)
status=$?
if [[ $status -ne 1 ]]; then
    echo "check_layers.sh exited with $status on a tree with crossings, expected 1"
    printf '%s\n' "$output"
    exit 1
fi
if ! diff -u "$data/expected.txt" <(printf '%s\n' "$output"); then
    echo "check_layers.sh reported other lines than $data/expected.txt"
    exit 1
fi
echo "check_layers.sh found the $(wc -l <"$data/expected.txt") crossings of the test tree"
