#!/usr/bin/env bash
# Builds the libFuzzer targets (clang-14, ASan and UBSan) in build/fuzz and runs each for a
# given time on a scratch copy of its seeds.
#
#   scripts/fuzz.sh [seconds-per-target] [target...]
#
# Seconds default to 600; 0 runs every seed once (a quick check). Targets default to all
# of them (fuzz_product_name, fuzz_registry_path, ...). One line per target reports the
# executions, the corpus size and the findings; the exit status is non-zero when any
# target left a crash, leak, timeout or out-of-memory input, or failed to run.
# Several runs may share build/fuzz: the build is taken in turn.
set -uo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build/fuzz"
seconds="${1:-600}"
[[ $# -gt 0 ]] && shift
targets=("$@")
if [[ ${#targets[@]} -eq 0 ]]; then
  targets=()
  for source in "$root"/fuzz/fuzz_*.cpp; do targets+=("$(basename "$source" .cpp)"); done
fi
if ! [[ "$seconds" =~ ^[0-9]+$ ]]; then
  echo "usage: scripts/fuzz.sh [seconds-per-target] [target...]" >&2
  exit 2
fi

bash "$root/scripts/install-deps.sh" >&2 || exit 1
export JAVA_HOME=/usr/lib/jvm/java-17-openjdk-amd64
export CC=clang-14 CXX=clang++-14

build_targets() {
  mkdir -p "$build"
  (
    flock 9
    cd "$root" &&
      cmake --preset fuzz >"$build/configure.log" 2>&1 &&
      cmake --build "$build" -j2 --target "${targets[@]}" >"$build/build.log" 2>&1
  ) 9>"$build/.build.lock"
}
if ! build_targets; then
  echo "fuzz build failed; see $build/configure.log and $build/build.log" >&2
  tail -20 "$build/build.log" >&2 2>/dev/null
  exit 1
fi

# A stamp per invocation keeps runs of the same target apart.
stamp="$(date +%Y%m%d-%H%M%S)-$$"
failed=0
for target in "${targets[@]}"; do
  seeds="$root/fuzz/corpus/$target"
  run="$build/runs/$target-$stamp"
  mkdir -p "$run/corpus" "$run/findings"
  cp "$seeds"/* "$run/corpus/" 2>/dev/null
  options=(-artifact_prefix="$run/findings/" -print_final_stats=1 -timeout=25 -max_len=4096)
  [[ -f "$root/fuzz/$target.dict" ]] && options+=(-dict="$root/fuzz/$target.dict")
  if [[ "$seconds" -eq 0 ]]; then
    options+=(-runs=0)
  else
    options+=(-max_total_time="$seconds")
  fi
  (cd "$run" && "$build/fuzz/$target" "${options[@]}" "$run/corpus" >"$run/fuzz.log" 2>&1)
  status=$?
  executions="$(grep -o 'stat::number_of_executed_units: [0-9]*' "$run/fuzz.log" | tail -1 | grep -o '[0-9]*$')"
  corpus="$(find "$run/corpus" -type f | wc -l)"
  findings="$(find "$run/findings" -type f | wc -l)"
  printf '%-24s %4ss  executions %-10s corpus %-5s findings %s  (%s)\n' \
    "$target" "$seconds" "${executions:-?}" "$corpus" "$findings" "$run"
  if [[ "$findings" -ne 0 || "$status" -ne 0 ]]; then
    failed=1
    [[ "$findings" -eq 0 ]] && echo "  $target ended with status $status; see $run/fuzz.log"
    find "$run/findings" -type f -printf '  finding: %p\n'
  fi
done
exit "$failed"
