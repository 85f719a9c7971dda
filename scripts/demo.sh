#!/usr/bin/env bash
# Sets up the machine, builds zenutl in Release and runs the demo program.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DZENUTL_BUILD_TESTS=OFF \
  -DZENUTL_BUILD_EXAMPLES=ON >/dev/null
echo "demo: building (log in build/release/build.log)"
if ! cmake --build build/release -j "$(nproc)" --target zenutl_demo >build/release/build.log 2>&1; then
  cat build/release/build.log
  exit 1
fi
./build/release/examples/zenutl_demo
