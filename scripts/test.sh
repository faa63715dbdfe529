#!/usr/bin/env bash
# Installs what is missing, builds the native and the Windows build, runs every suite
# and ends with one summary line.
set -uo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh || exit 1
export JAVA_HOME=/usr/lib/jvm/java-17-openjdk-amd64

passed=0; failed=0
run_ctest() {  # <label> <build dir> [ctest args...]
  local label=$1 dir=$2; shift 2
  local log="$dir/ctest-$label.log"
  (cd "$dir" && ctest --output-on-failure -j2 --timeout 300 "$@") 2>&1 | tee "$log" | grep -vE '^ *[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed' || true
  local total fails
  total=$(grep -oE 'tests failed out of [0-9]+' "$log" | grep -oE '[0-9]+$' || echo 0)
  fails=$(grep -oE '[0-9]+ tests failed' "$log" | grep -oE '^[0-9]+' || echo 0)
  [ -z "$total" ] && total=0; [ -z "$fails" ] && fails=0
  if ! grep -q 'tests passed' "$log"; then fails=$((fails > 0 ? fails : 1)); fi
  echo "== $label: $((total - fails)) passed, $fails failed"
  passed=$((passed + total - fails)); failed=$((failed + fails))
}

# Every C++ file in the layout of .clang-format: a file that is not fails the run.
echo "== Format"
unformatted=$(git ls-files '*.cpp' '*.h' | xargs clang-format-14 --dry-run 2>&1 | grep -oE '^[^:]+\.(cpp|h)' | sort -u)
if [ -z "$unformatted" ]; then echo "== format: 1 passed, 0 failed"; passed=1
else printf 'Not formatted (clang-format-14 -i <file>):\n%s\n' "$unformatted"; echo "== format: 0 passed, 1 failed"; failed=1; fi

echo "== Linux build"
cmake --preset linux >/dev/null && cmake --build --preset linux || { echo "0 passed, 1 failed"; exit 1; }
run_ctest linux build/linux
if [ -f build/linux/CTestTestfile.cmake ] && grep -rq 'jvm' build/linux/tests 2>/dev/null; then
  # The JVM reads JAVA_TOOL_OPTIONS when it is created, so the component's own options
  # stay as they are; each test appends its crash-log option to this.
  JAVA_TOOL_OPTIONS="-Xcheck:jni" run_ctest linux-xcheck-jni build/linux -L jvm
fi

# Every native suite again with AddressSanitizer and UndefinedBehaviorSanitizer
# (cmake/Sanitizers.cmake); TARNIX_SANITIZERS=0 leaves the stage out.
if [ "${TARNIX_SANITIZERS:-1}" != 0 ]; then
  echo "== Linux build with sanitizers"
  if cmake --preset linux-asan >/dev/null && cmake --build --preset linux-asan; then
    run_ctest linux-asan build/linux-asan
  else
    echo "== linux-asan: build failed"; failed=$((failed + 1))
  fi
fi

echo "== Windows build (under Wine)"
cmake --preset windows >/dev/null && cmake --build --preset windows || { echo "$passed passed, $((failed + 1)) failed"; exit 1; }
source scripts/wine-env.sh
wine_start
run_ctest windows build/windows
wine_stop

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
