#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang (AddressSanitizer and UBSan) and runs them.
#
#   scripts/fuzz.sh --replay           replay every kept corpus and past crash input once
#   scripts/fuzz.sh --list             the targets
#   scripts/fuzz.sh TARGET [SECONDS]   fuzz one target (default 60 s)
#   scripts/fuzz.sh all [SECONDS]      fuzz every target in turn
#
# A fuzzing run starts from fuzz/corpus/TARGET and works in build/fuzz/work/TARGET; inputs that
# crash are written to fuzz/crashes/TARGET, to be kept as regression inputs once fixed. With
# ZENUTL_FUZZ_MERGE=1 the new interesting inputs are merged back into fuzz/corpus/TARGET
# (minimised), which is how the kept corpus grows. The last line of each target's log in
# build/fuzz/logs says how many executions it ran.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

build=build/fuzz
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DZENUTL_BUILD_FUZZ=ON -DZENUTL_BUILD_TESTS=OFF -DZENUTL_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j "$(nproc)"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

targets() { find "$build/fuzz" -maxdepth 1 -name '*_fuzz' -type f -executable -printf '%f\n' | sed 's/_fuzz$//' | sort; }

case "${1:-}" in
  --replay)
    ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
    exit 0 ;;
  --list)
    targets
    exit 0 ;;
  "")
    sed -n '2,13p' "$0"
    exit 2 ;;
esac

seconds="${2:-60}"
if [[ "$1" == all ]]; then selected=$(targets); else selected="$1"; fi
mkdir -p "$build/logs"
for target in $selected; do
  program="$build/fuzz/${target}_fuzz"
  [[ -x "$program" ]] || { echo "fuzz: no target '$target'" >&2; exit 2; }
  work="$build/work/$target"
  mkdir -p "$work" "fuzz/corpus/$target" "fuzz/crashes/$target"
  options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1
           -artifact_prefix="fuzz/crashes/$target/")
  [[ -f "fuzz/$target.dict" ]] && options+=(-dict="fuzz/$target.dict")
  echo "== $target for ${seconds}s"
  status=0
  "$program" "${options[@]}" "$work" "fuzz/corpus/$target" >"$build/logs/$target.log" 2>&1 || status=$?
  grep -E '^stat::number_of_executed_units|^Done' "$build/logs/$target.log" || true
  if ((status != 0)); then
    echo "fuzz: $target failed, see $build/logs/$target.log and fuzz/crashes/$target" >&2
    exit "$status"
  fi
  if [[ "${ZENUTL_FUZZ_MERGE:-0}" == 1 ]]; then
    "$program" -merge=1 "fuzz/corpus/$target" "$work" >>"$build/logs/$target.log" 2>&1
  fi
done
