#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks for building and testing both builds.
set -euo pipefail
packages=(cmake ninja-build g++ googletest libgtest-dev libbenchmark-dev libxml2-dev
          openjdk-17-jdk-headless libssl-dev wine wine64 g++-mingw-w64-x86-64-posix
          clang-14 clang-format-14 lld-14 llvm-14 dpkg-dev python3)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
