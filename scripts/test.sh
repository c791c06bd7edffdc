#!/usr/bin/env bash
# Sets up, builds and runs every test; the last line is CTest's summary.
set -uo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${MVGOZ_BUILD_DIR:-$ROOT/build}"

# Everything the run makes outside the build folder goes into one private folder that is
# removed at exit: Qt's runtime folder, wine's server folder, the tests' sandboxes.
private="$(mktemp -d "${TMPDIR:-/tmp}/mvgoz-test.XXXXXX")" || exit 1
trap 'rm -rf "$private"' EXIT
mkdir -p "$private/runtime" "$private/tmp"
# Some tests drop to an unprivileged user that must still reach their files.
chmod 755 "$private" "$private/tmp"
chmod 700 "$private/runtime"
export XDG_RUNTIME_DIR="$private/runtime"
export TMPDIR="$private/tmp"

"$ROOT/scripts/setup.sh" || exit 1

log="$private/ctest.log"
ctest --test-dir "$BUILD" --output-on-failure -j2 2>&1 | tee "$log"
status=${PIPESTATUS[0]}
summary="$(grep -E '^[0-9]+% tests passed' "$log" | tail -n 1)"

# Then the same suite built with AddressSanitizer and UndefinedBehaviorSanitizer, in its own
# build folder (about 11 minutes on 2 cores from an empty one); the last line sums both runs.
# MVGOZ_SANITIZERS=0 leaves it out.
if [ "${MVGOZ_SANITIZERS:-1}" != 0 ]; then
    echo
    echo "== The suite again, built with AddressSanitizer and UndefinedBehaviorSanitizer"
    sanitizerLog="$private/sanitizers.log"
    "$ROOT/scripts/test-sanitizers.sh" 2>&1 | tee "$sanitizerLog"
    sanitizerStatus=${PIPESTATUS[0]}
    sanitizerSummary="$(tail -n 1 "$sanitizerLog")"
    ((sanitizerStatus == 0)) || status=1
    pattern='^[0-9]+% tests passed, ([0-9]+) tests failed out of ([0-9]+)'
    if [[ "$summary" =~ $pattern ]]; then
        failed=${BASH_REMATCH[1]}
        total=${BASH_REMATCH[2]}
        if [[ "$sanitizerSummary" =~ $pattern ]]; then
            failed=$((failed + BASH_REMATCH[1]))
            total=$((total + BASH_REMATCH[2]))
            passed=$((total - failed))
            # Rounded as CTest rounds, and never 100% with a failure.
            percent=$(((passed * 200 + total) / (2 * total)))
            if ((failed > 0 && percent > 99)); then
                percent=99
            fi
            summary="${percent}% tests passed, ${failed} tests failed out of ${total}"
        else
            summary="${sanitizerSummary#no test summary: }"
            summary="no test summary: ${summary:-the sanitizer run did not complete}"
        fi
    fi
fi

echo
echo "${summary:-no test summary: the test run did not complete}"
exit "$status"
