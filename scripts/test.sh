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
echo
echo "${summary:-no test summary: the test run did not complete}"
exit "$status"
