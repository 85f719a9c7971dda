#!/usr/bin/env bash
# Installs what building and testing zenutl needs on Debian 12, only what is missing, and makes
# sure the decimal-comma locales the tests rely on are generated. Safe to run again: a machine
# that has everything is left alone, quietly. With "--bench", also what the benchmarks compare
# against.
set -euo pipefail

packages=(
  build-essential cmake pkg-config git
  libboost1.74-dev libboost-thread1.74-dev libboost-filesystem1.74-dev
  libboost-system1.74-dev libboost-date-time1.74-dev
  libxerces-c-dev uuid-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  locales tzdata
  clang libclang-rt-14-dev
  libssl-dev  # the audit trail's seal (libcrypto), and the oracle of the digest tests
  chromium  # the trail viewer's test renders a saved trail in a real browser
)
if [[ "${1:-}" == "--bench" ]]; then
  packages+=(libspdlog-dev nlohmann-json3-dev rapidjson-dev)
fi

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get -o DPkg::Lock::Timeout=900 update -qq
  apt-get -o DPkg::Lock::Timeout=900 install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

# Decimal-comma locales for the separator tests, and the plain English one.
wanted_locales=(sv_SE.UTF-8 fr_FR.UTF-8 de_DE.UTF-8 en_US.UTF-8)
need_generate=0
for name in "${wanted_locales[@]}"; do
  if ! locale -a 2>/dev/null | grep -qi "^${name%%.*}\.utf-\?8$"; then
    if ! grep -q "^${name} UTF-8" /etc/locale.gen 2>/dev/null; then
      echo "${name} UTF-8" >>/etc/locale.gen
    fi
    need_generate=1
  fi
done
if ((need_generate)); then
  echo "setup: generating locales"
  locale-gen >/dev/null
fi
