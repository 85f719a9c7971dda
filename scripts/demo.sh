#!/usr/bin/env bash
# Sets up the machine, builds zenutl, the demo program and the zenutl tool in Release, and runs a
# short tour: an application records an audit trail, the tool verifies it clean, the trail is
# edited by hand, and the tool names the session that was tampered with.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DZENUTL_BUILD_TESTS=OFF \
  -DZENUTL_BUILD_EXAMPLES=ON -DZENUTL_BUILD_TOOL=ON >/dev/null
echo "demo: building (log in build/release/build.log)"
if ! cmake --build build/release -j "$(nproc)" --target zenutl_demo zenutl_tool \
  >build/release/build.log 2>&1; then
  cat build/release/build.log
  exit 1
fi

folder=$(mktemp -d "${TMPDIR:-/tmp}/zenutl-demo-XXXX")
./build/release/examples/zenutl_demo "$folder"
zenutl="$PWD/build/release/tools/zenutl/zenutl"
cd "$folder"

# Shows a command, runs it, and shows its exit status.
step() {
  echo "\$ zenutl $*"
  local status=0
  "$zenutl" "$@" || status=$?
  echo "(exit status $status)"
}

echo "== the auditor checks the trail"
step audit verify trail.xml
echo "== someone edits the first session's result by hand: 12.5 mg/l becomes 10.5 mg/l"
sed -i '0,/12\.5 mg\/l/s//10.5 mg\/l/' trail.xml
step audit verify trail.xml
echo "== the session as the trail now shows it"
"$zenutl" audit show trail.xml | sed -n '3,12p'
echo "== 'zenutl audit html trail.xml -o trail.html' in $folder makes a web page of the trail"
