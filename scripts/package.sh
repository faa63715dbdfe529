#!/usr/bin/env bash
# Builds both builds and packs what the agent's engineers receive: a ZIP of the Windows
# install tree, a TGZ and a DEB of the Linux one, all in build/packages/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
export JAVA_HOME=/usr/lib/jvm/java-17-openjdk-amd64
mkdir -p build/packages
for preset in linux windows; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  (cd "build/$preset" && cpack -B "$PWD/../packages" >/dev/null)
done
rm -rf build/packages/_CPack_Packages
ls -l build/packages
