#!/usr/bin/env bash
# Sets up the machine (with the libraries compared against), builds the benchmarks in Release
# and runs them. Extra arguments go to every benchmark program, e.g. --benchmark_filter=Ini.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh --bench
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DZENUTL_BUILD_TESTS=OFF \
  -DZENUTL_BUILD_BENCH=ON >/dev/null
cmake --build build/release -j "$(nproc)"
for program in build/release/bench/bench_*; do
  [[ -x "$program" ]] || continue
  echo "== ${program##*/}"
  "$program" "$@"
done
