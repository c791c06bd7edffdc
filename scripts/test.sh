#!/usr/bin/env bash
# Sets up, builds and runs every test; the last line is CTest's summary.
set -uo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${MVGOZ_BUILD_DIR:-$ROOT/build}"

"$ROOT/scripts/setup.sh" || exit 1

log="$(mktemp)"
trap 'rm -f "$log"' EXIT
ctest --test-dir "$BUILD" --output-on-failure -j2 2>&1 | tee "$log"
status=${PIPESTATUS[0]}
summary="$(grep -E '^[0-9]+% tests passed' "$log" | tail -n 1)"
echo
echo "${summary:-no test summary: the test run did not complete}"
exit "$status"
