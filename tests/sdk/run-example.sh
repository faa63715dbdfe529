#!/usr/bin/env bash
# Runs the installed example host against the real Java runtime, the agent's Java
# stand-ins and the RMI message server on 127.0.0.1, and holds its output to the calls
# succeeding and the component's log reaching the host.
#   run-example.sh <example-host> <work dir> <java home> <agent jar dir> <server class path>
set -uo pipefail
host=$1 work=$2 java_home=$3 jars=$4 server_classpath=$5
rm -rf "$work" && mkdir -p "$work/logs" "$work/config"

coproc server { exec "$java_home/bin/java" -cp "$server_classpath" com.tarnix.messageserver.Main \
  --port 0 --answer 'onStartup=<policy version="3"/>'; }
read -r -t 60 listening <&"${server[0]}" || { echo "the message server did not start"; exit 1; }
port=${listening##*:}
stop_server() { exec {server[1]}>&-; wait "$server_PID" 2>/dev/null; }
trap stop_server EXIT

cat > "$work/registry.reg" <<REG
Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\\Software\\Corvane, Inc.\\TarnixExample\\Desktop Agent]
"JrePath"="$java_home"
"ClassPath"="$jars"
"LogDirectory"="$work/logs"
"ConfigDirectory"="$work/config"

[HKEY_LOCAL_MACHINE\\Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager]
"Zelmar Server URL"="rmi://127.0.0.1:$port/MessageServer|agent-7|MIIBexampleCertificate"
REG

output=$(TARNIX_RMI_REGISTRY="$work/registry.reg" "$host" --product=TarnixExample 2>&1); status=$?
echo "$output"
failed=0
expect() {
  grep -qF -- "$1" <<<"$output" || { echo "MISSING: $1"; failed=1; }
}
expect "CoRegisterClassObject(host system service) -> 0x00000000"
expect "CRMIConfigLoader::GetServerInfo -> 0x00000000"
expect "url=rmi://127.0.0.1:$port/MessageServer second=agent-7 certificate=MIIBexampleCertificate"
expect "log info [tarnix-rmi] Using message server 'rmi://127.0.0.1:$port/MessageServer'."
expect "log info [tarnix-rmi] Initialized communication manager."
expect "DumpData(eStartup) -> 0x00000000"
expect "DumpData(eSample) -> 0x00000000"
expect "callback for data type 8: <policy version=\"3\"/>"
[ "$status" -eq 0 ] || { echo "the example host ended with status $status"; failed=1; }
exit $failed
