#!/usr/bin/env bash
# Builds the whole suite with AddressSanitizer and UndefinedBehaviorSanitizer (gcc) in its own
# build folder and runs it. Any finding fails: in a test, in a program a test starts, or in a
# test binary listed during the build. The last line is CTest's summary.
# Needs the packages of scripts/setup.sh (test.sh runs it first).
#
# The wine tests are left out: they run Windows programs cross-built by mingw-w64, which has
# no sanitizer runtime, under wine, which the sanitizers cannot see into. The same platform
# code is built natively here and runs under the sanitizers in the utilities tests.
# The fault campaign (tests/faults, FaultCampaign.*) is left out too: it runs the demo scripts
# again for every fault it injects, which under the sanitizers takes longer than its time
# limit and than the whole CI run may take; the normal run has it, and its other tests run here.
set -uo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${MVGOZ_ASAN_BUILD_DIR:-$ROOT/build-asan}"

# As in test.sh: what the run makes outside the build folder goes into one private folder.
private="$(mktemp -d "${TMPDIR:-/tmp}/mvgoz-asan.XXXXXX")" || exit 1
trap 'rm -rf "$private"' EXIT
mkdir -p "$private/runtime" "$private/tmp"
chmod 755 "$private" "$private/tmp"
chmod 700 "$private/runtime"
export XDG_RUNTIME_DIR="$private/runtime"
export TMPDIR="$private/tmp"

# Reports go to standard error. (Not to files: for log_path the runtime calls mkdir before it
# is ready, and the fault tests' program defines its own mkdir.)
export ASAN_OPTIONS="detect_leaks=1:detect_stack_use_after_return=1:check_initialization_order=1:strict_init_order=1"
export UBSAN_OPTIONS="print_stacktrace=1"
export LSAN_OPTIONS="suppressions=$ROOT/tests/sanitizers/lsan.supp:print_suppressions=0"

. "$ROOT/scripts/compiler-cache.sh"
if [ ! -f "$BUILD/build.ninja" ]; then
    # -O1: sanitized code runs several times faster than at -O0 and still reports exact lines.
    if ! cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" \
        -DMVGOZ_SANITIZE=ON -DMVGOZ_WINE_TESTS=OFF -DMVGOZ_BUILD_BENCH=OFF $cache_option >/dev/null; then
        echo "the sanitizer build could not be configured (run scripts/setup.sh first)"
        exit 1
    fi
fi
if ! cmake --build "$BUILD" -j2; then
    echo
    echo "no test summary: the sanitizer build failed"
    exit 1
fi

log="$private/ctest.log"
ctest --test-dir "$BUILD" --output-on-failure -j2 --exclude-regex 'FaultCampaign\.' 2>&1 | tee "$log"
status=${PIPESTATUS[0]}
summary="$(grep -E '^[0-9]+% tests passed' "$log" | tail -n 1)"
# A finding in a program that a test started in the background need not fail that test, but
# its report lands in the test's output, which CTest keeps for passing tests too.
findings="$(grep -E -B2 -A40 '^==[0-9]+==ERROR: |runtime error: |^SUMMARY: [A-Za-z]+Sanitizer' \
    "$BUILD/Testing/Temporary/LastTest.log" 2>/dev/null)"
if [ -n "$findings" ]; then
    echo "---- sanitizer reports in the tests' output ($BUILD/Testing/Temporary/LastTest.log)"
    echo "$findings" | head -n 400
    status=1
    summary="no test summary: the sanitizers reported the findings above"
fi
echo
echo "${summary:-no test summary: the sanitizer test run did not complete}"
exit "$status"
