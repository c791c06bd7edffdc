# Sourced by the build scripts. Sets cache_option to the CMake option that puts ccache in front
# of the compiler, or to nothing when ccache is missing or its cache folder cannot be written
# (a build must never fail for want of a cache). Paths below the project count from its root,
# so a fresh clone elsewhere still finds what an earlier clone compiled.
cache_option=""
if command -v ccache >/dev/null 2>&1; then
    cache_dir="$(ccache --get-config cache_dir 2>/dev/null)" || cache_dir=""
    if [ -n "$cache_dir" ] && mkdir -p "$cache_dir" 2>/dev/null && [ -w "$cache_dir" ]; then
        cache_option="-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"
        export CCACHE_BASEDIR="$ROOT" CCACHE_NOHASHDIR=1
    fi
fi
