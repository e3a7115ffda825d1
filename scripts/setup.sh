#!/usr/bin/env bash
# Installs what the host build, its tests and tools need from Debian 12; does nothing when present.
set -euo pipefail

packages=(
  cmake g++ clang libclang-rt-14-dev make python3 valgrind
  libgtest-dev libgmock-dev libbenchmark-dev
  android-libutils-dev android-libbase-dev android-liblog-dev android-libcutils-dev
  hidl-gen
  libcpp-httplib-dev nlohmann-json3-dev libedit-dev chromium chromium-driver python3-selenium
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi
