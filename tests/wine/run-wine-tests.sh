#!/bin/sh
# Runs the cross-compiled platform tests under wine, in a private prefix and home that are
# thrown away afterwards. Stops only the wineserver of that prefix.
#   run-wine-tests.sh <mvgoz_wine_platform_test.exe>
# Exit code 77 means skipped (no wine), as CTest's SKIP_RETURN_CODE expects.
set -u

exe=${1:?usage: run-wine-tests.sh <test .exe>}
wine=${MVGOZ_WINE:-wine}
wineserver=${MVGOZ_WINESERVER:-wineserver}

if ! command -v "$wine" >/dev/null 2>&1 || ! command -v "$wineserver" >/dev/null 2>&1; then
    echo "wine or wineserver not found: skipped"
    exit 77
fi
if [ ! -f "$exe" ]; then
    echo "test program not built: $exe"
    exit 1
fi
case $exe in
    /*) ;;
    *) exe=$(pwd)/$exe ;;
esac

started=$(date +%s)
tmp=$(mktemp -d "${TMPDIR:-/tmp}/mvgoz-wine.XXXXXX") || exit 1
# wine puts its server folder under TMPDIR: keep it in ours, so nothing is left in /tmp.
export TMPDIR="$tmp/tmp"
export WINEPREFIX="$tmp/prefix"
export HOME="$tmp/home"
export WINEARCH=win64
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
# wine turns the command line into Unicode through the locale: keep it UTF-8.
export LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY

server_started=0
cleanup() {
    if [ "$server_started" = 1 ]; then
        "$wineserver" -k >/dev/null 2>&1
        "$wineserver" -w >/dev/null 2>&1
    fi
    rm -rf "$tmp"
}
trap cleanup EXIT
trap 'exit 130' INT TERM HUP

mkdir -p "$WINEPREFIX" "$HOME" "$TMPDIR" "$tmp/work" || exit 1
"$wineserver" -p || { echo "wineserver did not start"; exit 1; }
server_started=1
"$wine" wineboot --init >"$tmp/wineboot.log" 2>&1 || { cat "$tmp/wineboot.log"; echo "wineboot failed"; exit 1; }

reg_add() {
    if ! "$wine" reg add "$@" /f >"$tmp/reg.log" 2>&1; then
        cat "$tmp/reg.log"
        echo "reg add failed: $*"
        exit 1
    fi
}
key='HKLM\SOFTWARE\MVGoZWineTest'
reg_add "$key" /v 'Main Program' /t REG_SZ /d 'C:\Program Files\Figmora\Figmora.exe' /reg:64
reg_add "$key" /v 'Accented' /t REG_SZ /d 'Café üß 中' /reg:64
reg_add "$key" /v 'Empty' /t REG_SZ /d '' /reg:64
reg_add "$key" /v 'Long' /t REG_SZ /d "$(printf '%0600d' 0 | tr 0 x)" /reg:64
reg_add "$key" /v 'Count' /t REG_DWORD /d 42 /reg:64
reg_add "$key" /v 'Expandable' /t REG_EXPAND_SZ /d '%PUBLIC%' /reg:64
ready=$(date +%s)

cd "$tmp/work" || exit 1
MvGoZ_Wine_Mixed=mixed "$wine" "$exe" >"$tmp/out.txt" 2>"$tmp/err.txt"
status=$?
finished=$(date +%s)
# wine writes CRLF.
tr -d '\r' <"$tmp/out.txt"
if ! tr -d '\r' <"$tmp/out.txt" | grep -Eq '^[0-9]+ passed, [0-9]+ failed$'; then
    echo "no summary line; wine said:"
    cat "$tmp/err.txt"
    [ "$status" -ne 0 ] || status=1
fi
echo "wine prefix ready in $((ready - started)) s, tests ran in $((finished - ready)) s"
exit "$status"
