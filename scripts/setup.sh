#!/usr/bin/env bash
# Installs what the build needs (Debian 12), configures and builds. Safe to run again.
# Usage: setup.sh [target ...]   (no target: build everything)
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${MVGOZ_BUILD_DIR:-$ROOT/build}"

PACKAGES=(
    cmake ninja-build g++ pkg-config
    qtbase5-dev qttools5-dev qttools5-dev-tools
    libgtest-dev libgmock-dev libbenchmark-dev
    fonts-dejavu-core
    xvfb
    g++-mingw-w64-x86-64-posix wine wine64
    clang  # scripts/fuzz.sh: libFuzzer (the tests replay its inputs without it)
    ccache # a second build of the same sources takes its objects from the cache
)

missing=()
for pkg in "${PACKAGES[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$pkg")
    fi
done

if ((${#missing[@]})); then
    echo "Installing: ${missing[*]}"
    SUDO=""
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null 2>&1; then
            echo "These packages are missing and installing them needs root: ${missing[*]}" >&2
            echo "Run this command as root, or install sudo and give this user the right to use it." >&2
            exit 1
        fi
        SUDO="sudo"
    fi
    $SUDO apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

. "$ROOT/scripts/compiler-cache.sh"
if [ ! -f "$BUILD/build.ninja" ]; then
    cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo $cache_option >/dev/null
fi
if (($#)); then
    cmake --build "$BUILD" -j2 --target "$@"
else
    cmake --build "$BUILD" -j2
fi
