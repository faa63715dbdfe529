#!/usr/bin/env bash
# The demo: a simulated host agent loads the component, starts a real Java RMI message
# server on 127.0.0.1 and hands the component one piece of data of every kind; then it
# stops the server, shows the failing call, restarts it and shows the host carrying on.
# Pass --soak N to make N sample calls instead and watch references and memory.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
export JAVA_HOME=/usr/lib/jvm/java-17-openjdk-amd64

echo "== Building the component and the host simulator (preset linux)"
cmake --preset linux >/dev/null
cmake --build --preset linux --target tarnix-hostsim >/dev/null
echo
exec build/linux/tools/hostsim/tarnix-hostsim "$@"
