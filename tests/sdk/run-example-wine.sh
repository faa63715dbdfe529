#!/usr/bin/env bash
# Runs the installed example host, built for the MSVC ABI, under Wine against the
# stand-in Java runtime (a machine that finds none of the agent's classes): the
# configuration calls answer from the registry, and start-up fails with the codes and
# lines the component defines for it. The keys it writes go again at the end.
#   run-example-wine.sh <wine> <example-host.exe> <stand-in jvm.dll>
set -uo pipefail
wine=$1 host=$2 stub_jvm=$3
stub_home=$(dirname "$(dirname "$(dirname "$stub_jvm")")")  # <home>/bin/server/jvm.dll
agent='HKLM\Software\Corvane, Inc.\TarnixExample\Desktop Agent'
legacy='HKLM\Software\Corvane, Inc.\Corvane Palisade\Node Manager'
winpath() { "$wine" winepath -w "$1" 2>/dev/null | tr -d '\r'; }
reg() { "$wine" reg "$@" >/dev/null 2>&1; }
cleanup() { reg delete "$agent" /f; reg delete "$legacy" /v "Zelmar Server URL" /f; }
trap cleanup EXIT

reg add "$agent" /v JrePath /d "$(winpath "$stub_home")" /f
reg add "$agent" /v ClassPath /d "$(winpath "$(dirname "$host")")" /f
reg add "$legacy" /v "Zelmar Server URL" /d "rmi://127.0.0.1:1099/MessageServer|agent-7|MIIBexampleCertificate" /f

output=$("$wine" "$host" --product=TarnixExample 2>&1 | tr -d '\r'); status=$?
echo "$output"
failed=0
expect() {
  grep -qF -- "$1" <<<"$output" || { echo "MISSING: $1"; failed=1; }
}
expect "CoRegisterClassObject(host system service) -> 0x00000000"
expect "CRMIConfigLoader::GetServerInfo -> 0x00000000"
expect "url=rmi://127.0.0.1:1099/MessageServer second=agent-7 certificate=MIIBexampleCertificate"
expect "log info [tarnix-rmi] Using message server 'rmi://127.0.0.1:1099/MessageServer'."
expect "RegisterDataDumpCallback -> 0x00000000"
expect "log error [tarnix-rmi] Failed to load class "
expect "log error [tarnix-rmi] Failed to initialize CRMICommManagerImpl in long __cdecl CRMICommManagerImpl::SetCurrentServerConfig(const wchar_t *,const wchar_t *,const wchar_t *)  Error code 0x80004005"
expect "DumpData(eStartup) -> 0x80004005"
expect "log error [tarnix-rmi] Failed to SetCurrentServerConfig in long __cdecl CRMICommManagerImpl::SetCurrentServerConfig(const wchar_t *,const wchar_t *,const wchar_t *) because of previous RMI manager initialization failure"
expect "DumpData(eSample) -> 0x80004005"
expect "UnregisterDataDumpCallback -> 0x00000000"
[ "$status" -eq 0 ] || { echo "the example host ended with status $status"; failed=1; }
exit $failed
