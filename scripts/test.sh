#!/usr/bin/env bash
# Builds everything with -Wall -Wextra -Wshadow as errors, AddressSanitizer and
# UndefinedBehaviorSanitizer in build-test/, then runs the whole suite through CTest. Any
# warning or sanitizer report fails it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
build=${QUILB_TEST_BUILD_DIR:-build-test}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQUILB_SANITIZE=ON -DQUILB_WERROR=ON >/dev/null
cmake --build "$build" -j "$(nproc)"
export ASAN_OPTIONS="halt_on_error=1:abort_on_error=0:detect_leaks=1:exitcode=86"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
