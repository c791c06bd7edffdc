#!/usr/bin/env bash
# Builds the libFuzzer programs (clang, -fsanitize=fuzzer,address,undefined) in their own build
# folder and runs each for the given seconds, starting from its saved inputs.
# Usage: fuzz.sh [seconds per target, default 60] [target ...]   (no target: all of them)
# MVGOZ_FUZZ_RUNS=N also stops each target after N executions (a long run: 10000000).
# New interesting inputs stay in the build folder; an input that crashes a target is saved in
# tests/fuzz/corpus/<target>/ as crash-<hash>, where the normal test run replays it from then on.
set -uo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${MVGOZ_FUZZ_BUILD_DIR:-$ROOT/build-fuzz}"
SECONDS_PER_TARGET="${1:-60}"
shift $(($# > 0 ? 1 : 0))
RUNS="${MVGOZ_FUZZ_RUNS:--1}"
if ! [[ "$SECONDS_PER_TARGET" =~ ^[0-9]+$ ]] || ((SECONDS_PER_TARGET < 1)) || ! [[ "$RUNS" =~ ^(-1|[1-9][0-9]*)$ ]]; then
    echo "usage: [MVGOZ_FUZZ_RUNS=executions] $0 [seconds per target] [target ...]" >&2
    exit 2
fi

if ! command -v clang++ >/dev/null 2>&1; then
    echo "clang++ is missing: scripts/setup.sh installs it (package clang, with libFuzzer)" >&2
    exit 1
fi

# The targets write their sandboxes under TMPDIR: a private folder, in memory where there is one
# (the key = value writer syncs every file it writes), removed at exit.
base="${TMPDIR:-/tmp}"
[ -d /dev/shm ] && [ -w /dev/shm ] && base=/dev/shm
private="$(mktemp -d "$base/mvgoz-fuzz.XXXXXX")" || exit 1
trap 'rm -rf "$private"' EXIT
export TMPDIR="$private"
export QT_QPA_PLATFORM=offscreen

. "$ROOT/scripts/compiler-cache.sh"
if [ ! -f "$BUILD/build.ninja" ]; then
    cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
        -DMVGOZ_FUZZ=ON -DMVGOZ_BUILD_TESTS=OFF -DMVGOZ_BUILD_BENCH=OFF -DMVGOZ_WINE_TESTS=OFF \
        $cache_option >/dev/null || exit 1
fi
cmake --build "$BUILD" -j2 --target mvgoz_fuzzers || exit 1

targets=("$@")
if ((${#targets[@]} == 0)); then
    for program in "$BUILD"/fuzz/mvgoz_fuzz_*; do
        targets+=("${program##*/mvgoz_fuzz_}")
    done
fi

export LSAN_OPTIONS="${LSAN_OPTIONS:-suppressions=$ROOT/tests/sanitizers/lsan.supp:print_suppressions=0}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}"

status=0
results=()
for target in "${targets[@]}"; do
    program="$BUILD/fuzz/mvgoz_fuzz_$target"
    seeds="$ROOT/tests/fuzz/corpus/$target"
    if [ ! -x "$program" ] || [ ! -d "$seeds" ]; then
        echo "unknown fuzz target: $target" >&2
        status=1
        continue
    fi
    work="$BUILD/fuzz-corpus/$target"
    mkdir -p "$work"
    log="$BUILD/fuzz-$target.log"
    echo "== $target: ${SECONDS_PER_TARGET} s"
    # Leaks in a single input are findings too. Not for the JSON readers: Qt's JSON parser
    # leaks on malformed text, under Qt frames that LeakSanitizer names (for the suppression)
    # only with a slow unwinder on every allocation, eight times fewer executions.
    case "$target" in
        scene | script) leaks=0 ;;
        *) leaks=1 ;;
    esac
    # The first folder receives new inputs; the saved ones are only read.
    ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=$leaks}" "$program" "$work" "$seeds" -max_total_time="$SECONDS_PER_TARGET" -runs="$RUNS" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$seeds/" >"$log" 2>&1
    code=$?
    runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)"
    if ((code != 0)); then
        status=1
        tail -n 40 "$log"
        results+=("$target: FAILED after ${runs:-?} executions (exit $code; log $log; input saved in $seeds/)")
    else
        took="$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$log" | tail -n 1)"
        results+=("$target: ${runs:-?} executions in ${took:-$SECONDS_PER_TARGET} s")
    fi
done

echo
printf '%s\n' "${results[@]}"
exit "$status"
