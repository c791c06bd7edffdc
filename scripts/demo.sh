#!/usr/bin/env bash
# Sets up, builds and runs the demo round trip in a throw-away sandbox.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${MVGOZ_BUILD_DIR:-$ROOT/build}"

"$ROOT/scripts/setup.sh"
exec "$BUILD/bin/mvgoz-host" demo --plugin "$BUILD/plugin-folder/MVGoZBrush.so" "$@"
