#!/usr/bin/env bash
# Builds every program into build/ and runs the sample: a self-extracting installer is made
# from examples/ with quilb_pack and run unattended inside a private sandbox.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILB_BUILD_TESTS=OFF >/dev/null
cmake --build build -j "$(nproc)"
if [ -x examples/run_demo.sh ]; then
  exec examples/run_demo.sh build
fi
echo "Built: $(ls build/bin | tr '\n' ' ')"
