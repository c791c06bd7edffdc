#!/usr/bin/env bash
# Prints the CMake option that puts ccache in front of the compiler, or nothing when ccache is
# missing or its cache folder cannot be written (a build must never fail for want of a cache).
command -v ccache >/dev/null 2>&1 || exit 0
dir="$(ccache --get-config cache_dir 2>/dev/null)" || exit 0
if [ -n "$dir" ] && mkdir -p "$dir" 2>/dev/null && [ -w "$dir" ]; then
    echo "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"
fi
