#!/usr/bin/env bash
# Sets up, builds what the demo needs and runs it in a throw-away sandbox.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${MVGOZ_BUILD_DIR:-$ROOT/build}"
LOG="$(mktemp)"

echo "Setting up and building the demo (the first run installs packages and takes a few minutes)..."
if ! "$ROOT/scripts/setup.sh" MVGoZBrush mvgoz-host mvgoz_standins >"$LOG" 2>&1; then
    tail -n 40 "$LOG"
    echo "The set-up failed; the lines above say why."
    rm -f "$LOG"
    exit 1
fi
rm -f "$LOG"
echo

# Qt warns without a runtime folder; give it a private one, removed with the run.
runtime=""
trap '[ -z "$runtime" ] || rm -rf "$runtime"' EXIT
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    runtime="$(mktemp -d)"
    export XDG_RUNTIME_DIR="$runtime"
fi
"$BUILD/bin/mvgoz-host" demo --plugin "$BUILD/plugin-folder/MVGoZBrush.so" "$@"
