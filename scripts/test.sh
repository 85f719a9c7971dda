#!/usr/bin/env bash
# Sets up the machine, builds zenutl with AddressSanitizer and UndefinedBehaviorSanitizer and
# warnings as errors, and runs the whole test suite (including a build against the installed
# package), then builds the test programs that start threads with ThreadSanitizer and runs them
# again, and replays the fuzz targets' kept inputs.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
jobs=$(nproc)
cmake -S . -B build/asan -DCMAKE_BUILD_TYPE=Debug -DZENUTL_SANITIZE=ON -DZENUTL_WERROR=ON \
  -DZENUTL_BUILD_TESTS=ON -DZENUTL_BUILD_EXAMPLES=ON >/dev/null
cmake --build build/asan -j "$jobs"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir build/asan --output-on-failure -j "$jobs"
# ThreadSanitizer can't share a build with AddressSanitizer: the threaded tests get their own.
cmake -S . -B build/tsan -DCMAKE_BUILD_TYPE=Debug -DZENUTL_TSAN=ON -DZENUTL_WERROR=ON \
  -DZENUTL_BUILD_TESTS=ON -DZENUTL_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/tsan --target threaded_tests -j "$jobs"
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  ctest --test-dir build/tsan -L threaded --output-on-failure -j "$jobs"
bash scripts/fuzz.sh --replay
