#!/usr/bin/env bash
# Builds the benchmarks in Release (build/bench), runs them and prints one markdown table
# of figures. Not part of CI: figures depend on the machine and its load. CPU times are
# medians of interleaved repetitions, so that a comparison's two sides share the load.
#
#   bash scripts/bench.sh              # everything, the soak with 1,000,000 calls
#   SOAK_CALLS=100000 REPETITIONS=3 bash scripts/bench.sh
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh >&2
export JAVA_HOME=/usr/lib/jvm/java-17-openjdk-amd64
SOAK_CALLS=${SOAK_CALLS:-1000000}
FAILING_CALLS=${FAILING_CALLS:-100000}
REPETITIONS=${REPETITIONS:-5}
STARTS=${STARTS:-10}
build=build/bench
results=$build/results
mkdir -p "$results"

echo "building $build (Release) ..." >&2
cmake --preset linux -B "$build" -DCMAKE_BUILD_TYPE=Release -DTARNIX_BUILD_BENCH=ON >"$results/configure.log"
cmake --build "$build" -j2 --target convert_bench dumpdata_bench startup_bench soak_bench \
  failing_constructors_soak \
  >"$results/build.log"

interleaved=(--benchmark_repetitions="$REPETITIONS" --benchmark_enable_random_interleaving=true
             --benchmark_report_aggregates_only=true --benchmark_format=json)
echo "conversion: component, raw JNI, pure Java ..." >&2
"$build/bench/convert/convert_bench" "${interleaved[@]}" >"$results/convert.json"
echo "DumpData of every type, realistic sample against raw JNI ..." >&2
"$build/bench/manager/dumpdata_bench" "${interleaved[@]}" >"$results/dumpdata.json"
echo "start-up, $STARTS processes each ..." >&2
"$build/bench/startup/startup_bench" "$STARTS" >"$results/startup.txt"
echo "soak, $SOAK_CALLS calls ..." >&2
"$build/bench/soak/soak_bench" "$SOAK_CALLS" >"$results/soak.txt"
echo "soak of throwing constructors, $FAILING_CALLS calls ..." >&2
"$build/bench/soak/failing_constructors_soak" "$FAILING_CALLS" >"$results/failing-soak.txt"

python3 - "$results" <<'PY'
import json, re, sys
results = sys.argv[1]

def medians(name):
    with open(f"{results}/{name}") as f:
        data = json.load(f)
    out = {}
    for b in data["benchmarks"]:
        if b.get("aggregate_name") == "median":
            scale = {"ns": 1e-3, "us": 1.0, "ms": 1e3}[b["time_unit"]]
            out[b["run_name"]] = b["cpu_time"] * scale
    return out

convert = medians("convert.json")
dump = medians("dumpdata.json")
names = {0: "eUserSessionStart", 1: "eUserSessionLogon", 2: "eUserSessionLogoff",
         3: "eUserSessionRefresh", 4: "eUserSessionReconnect", 5: "eUserSessionDisconnect",
         6: "eUserSessionEnd", 7: "eExtendedData", 8: "eStartup", 9: "eSample",
         10: "eTraceRoute", 255: "eDesktopPoll"}
per_type = sorted((int(m.group(1)), us) for m, us in
                  ((re.match(r"BM_DumpData/type:(\d+)$", run), us) for run, us in dump.items()) if m)
rows = []
if per_type:
    rows.append(("`DumpData` per type, in-process stand-in client (no RMI; the sample has 3 sessions)",
                 "; ".join(f"{names[t]} {us:.1f} us" for t, us in per_type)))
real, raw = dump.get("BM_DumpDataRealisticSample"), dump.get("BM_RawJniRealisticSample")
if real and raw:
    rows.append(("`DumpData(eSample)`, realistic sample (50 + 20 x (30 + 3 x 5) metrics), "
                 "stand-in client; raw JNI of the same message", f"{real:.0f} us; raw JNI {raw:.0f} us ({real / raw:.2f}x)"))
get, rawc, java, host = (convert.get(k) for k in ("GetSample", "RawJni", "PureJava", "HostOnly"))
if get and rawc:
    rows.append(("`GetSample` of the realistic sample; raw JNI; pure Java; the host reads alone",
                 f"{get:.0f} us; raw JNI {rawc:.0f} us ({get / rawc:.2f}x); pure Java {java:.1f} us; host reads {host:.0f} us"))
with open(f"{results}/startup.txt") as f:
    startup = {m.group(1).strip(): m.group(2) for m in
               (re.match(r"(.*?)\s+median\s+([\d.]+) ms", line) for line in f) if m}
if startup:
    rows.append(("JVM start-up: `JNI_CreateJavaVM`; the component's `Initialize` (JVM, classes, client); "
                 "a host process with `Initialize`",
                 f"{startup.get('JNI_CreateJavaVM', '?')} ms; {startup.get('Initialize', '?')} ms; "
                 f"{startup.get('process with Initialize', '?')} ms"))
soak = []
per_call = None
with open(f"{results}/soak.txt") as f:
    for line in f:
        m = re.match(r"calls (\d+) rss_kb (\d+) global_refs (-?\d+) java_heap_kb (-?\d+) malloc_kb (-?\d+)", line)
        if m:
            soak.append(tuple(int(v) for v in m.groups()))
        m = re.match(r"failed (\d+) us_per_call ([\d.]+)", line)
        if m:
            per_call = (int(m.group(1)), float(m.group(2)))
if soak:
    last = soak[-1][0]
    picks = [row for row in soak if row[0] in (0, last // 10, last)]
    text = "; ".join(f"{calls:,} calls: RSS {rss / 1024:.0f} MB (Java heap {heap / 1024:.0f} MB, "
                     f"malloc in use {native / 1024:.0f} MB), {refs} global refs"
                     for calls, rss, refs, heap, native in picks)
    if per_call:
        text += f" ({per_call[1]:.0f} us per call wall, {per_call[0]} failed)"
    rows.append((f"RSS and JVM global references over {last:,} `DumpData(eSample)` (3 sessions), stand-in client", text))
failing = []
with open(f"{results}/failing-soak.txt") as f:
    for line in f:
        m = re.match(r"calls (\d+) local_refs (-?\d+) global_refs (-?\d+) rss_kb (\d+)", line)
        if m:
            failing.append(tuple(int(v) for v in m.groups()))
if failing:
    last = failing[-1][0]
    picks = [row for row in failing if row[0] in (0, last // 10, last)]
    rows.append((f"{last:,} `DumpData` calls whose data-model constructors throw in turn, on the thread "
                 "that started Java: its JNI local references, JVM global references, RSS",
                 "; ".join(f"{calls:,} calls: {local} local, {refs} global refs, RSS {rss / 1024:.0f} MB"
                           for calls, local, refs, rss in picks)))
print("| what | figure |")
print("|---|---|")
for what, figure in rows:
    print(f"| {what} | {figure} |")
PY
