#!/usr/bin/env bash
# Builds the benchmarks in Release (build/bench), runs them and prints one markdown table
# of figures. Not part of CI: figures depend on the machine and its load. CPU times are
# medians of interleaved repetitions, so that a comparison's two sides share the load;
# each figure a ratio is made of shows its coefficient of variation over the repetitions
# (cv), and a ratio of figures that vary by more than 5% says little. The own-work ratio
# takes the bench host's reads (measured alone in the same run) out of both sides:
# (component - host reads) / (raw JNI - host reads).
#
#   bash scripts/bench.sh              # everything, the soak with 1,000,000 calls
#   SOAK_CALLS=100000 REPETITIONS=3 bash scripts/bench.sh
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh >&2
export JAVA_HOME=/usr/lib/jvm/java-17-openjdk-amd64
SOAK_CALLS=${SOAK_CALLS:-1000000}
FAILING_CALLS=${FAILING_CALLS:-100000}
REPETITIONS=${REPETITIONS:-9}
STARTS=${STARTS:-10}
build=build/bench
results=$build/results
mkdir -p "$results"

echo "building $build (Release) ..." >&2
cmake --preset linux -B "$build" -DCMAKE_BUILD_TYPE=Release -DTARNIX_BUILD_BENCH=ON >"$results/configure.log"
cmake --build "$build" -j2 --target bridge_bench convert_bench dumpdata_bench startup_bench soak_bench \
  failing_constructors_soak \
  >"$results/build.log"

# A second per repetition: the pairs' medians then move by less than their ratio's margin.
interleaved=(--benchmark_repetitions="$REPETITIONS" --benchmark_enable_random_interleaving=true
             --benchmark_min_time=1 --benchmark_report_aggregates_only=true --benchmark_format=json)
echo "bridge primitives against raw JNI ..." >&2
"$build/bench/bridge_bench" "${interleaved[@]}" \
  --benchmark_filter='^(Bridge|Raw)(NewString|NewLocalObject|NewObjectLocal|NewObject|NewObjectGlobal|CallVoidMethod)(/threads:1)?$' \
  >"$results/bridge.json"
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

# Each run's median CPU time in microseconds, and its coefficient of variation.
def figures(name):
    with open(f"{results}/{name}") as f:
        data = json.load(f)
    out, spread, mean, stddev = {}, {}, {}, {}
    for b in data["benchmarks"]:
        scale = {"ns": 1e-3, "us": 1.0, "ms": 1e3}[b["time_unit"]]
        run = b["run_name"].replace("/threads:1", "")
        kind = b.get("aggregate_name")
        if kind == "median":
            out[run] = b["cpu_time"] * scale
        elif kind == "cv":
            spread[run] = b["cpu_time"]
        elif kind in ("mean", "stddev"):
            (mean if kind == "mean" else stddev)[run] = b["cpu_time"]
    for run in mean:
        if run not in spread and run in stddev and mean[run]:
            spread[run] = stddev[run] / mean[run]
    return out, spread

bridge, bridge_cv = figures("bridge.json")
convert, convert_cv = figures("convert.json")
dump, dump_cv = figures("dumpdata.json")
cvs = {**bridge_cv, **convert_cv, **dump_cv}

def cv(run):
    return f"cv {100 * cvs[run]:.1f}%" if run in cvs else "cv ?"

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
def own_work(component, raw, host):
    return (component - host) / (raw - host) if raw and host and raw > host else float("nan")

real, raw, reads = (dump.get(k) for k in ("BM_DumpDataRealisticSample", "BM_RawJniRealisticSample",
                                          "BM_HostOnlyRealisticSample"))
if real and raw and reads:
    rows.append(("`DumpData(eSample)`, realistic sample (50 + 20 x (30 + 3 x 5) metrics), "
                 "stand-in client; raw JNI of the same message; the host reads alone",
                 f"{real:.0f} us ({cv('BM_DumpDataRealisticSample')}); raw JNI {raw:.0f} us "
                 f"({cv('BM_RawJniRealisticSample')}); host reads {reads:.0f} us "
                 f"({cv('BM_HostOnlyRealisticSample')}); whole calls {real / raw:.2f}x; "
                 f"**own work {own_work(real, raw, reads):.2f}x**"))
get, rawc, java, host = (convert.get(k) for k in ("GetSample", "RawJni", "PureJava", "HostOnly"))
if get and rawc and host:
    rows.append(("`GetSample` of the realistic sample; raw JNI; pure Java; the host reads alone",
                 f"{get:.0f} us ({cv('GetSample')}); raw JNI {rawc:.0f} us ({cv('RawJni')}); "
                 f"pure Java {java:.1f} us; host reads {host:.0f} us ({cv('HostOnly')}); "
                 f"whole calls {get / rawc:.2f}x; **own work {own_work(get, rawc, host):.2f}x**"))
pairs = [("`NewString` (20 characters), a local string", "BridgeNewString", "RawNewString"),
         ("`NewObject` by handle, a local object", "BridgeNewLocalObject", "RawNewObjectLocal"),
         ("`NewObject` by handle, pinned by a global reference", "BridgeNewObject",
          "RawNewObjectGlobal"),
         ("`CallVoidMethod` by handle", "BridgeCallVoidMethod", "RawCallVoidMethod")]
for what, mine, theirs in pairs:
    if mine in bridge and theirs in bridge:
        rows.append((f"Bridge: {what}; raw JNI with cached ids and the same exception check",
                     f"{1000 * bridge[mine]:.1f} ns ({cv(mine)}); raw JNI {1000 * bridge[theirs]:.1f} ns "
                     f"({cv(theirs)}); **{bridge[mine] / bridge[theirs]:.2f}x**"))
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
