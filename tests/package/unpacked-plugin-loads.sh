#!/bin/sh
# Builds the zip package, unpacks it into a fresh folder and has the reference host load the
# unpacked module and send a prop to the ZBrush stand-ins; prints what went wrong.
#   unpacked-plugin-loads.sh <cpack> <CPackConfig.cmake> <cmake> <mvgoz-host> <english .ts> <scene> <script>
set -u
cpack=${1:?}; config=${2:?}; cmake=${3:?}; host=${4:?}; ts=${5:?}; scene=${6:?}; script=${7:?}

tmp=$(mktemp -d "${TMPDIR:-/tmp}/mvgoz-package.XXXXXX") || exit 1
trap 'rm -rf "$tmp"' EXIT
fail() { echo "FAILED: $*"; exit 1; }

# The package, made in the temporary folder so that the build's own package/ stays as it is.
if ! "$cpack" --config "$config" -B "$tmp/out" >"$tmp/cpack.log" 2>&1; then
    cat "$tmp/cpack.log"; fail "cpack"
fi
set -- "$tmp"/out/MVGoZBrush-*.zip
[ $# -eq 1 ] && [ -f "$1" ] || { ls -l "$tmp/out"; fail "expected one MVGoZBrush-*.zip"; }
zip=$1
echo "package: $(basename "$zip") ($(wc -c <"$zip") bytes)"

mkdir "$tmp/unpacked" && (cd "$tmp/unpacked" && "$cmake" -E tar xf "$zip") || fail "cannot unpack $zip"
top="$tmp/unpacked/$(basename "$zip" .zip)"
folder="$top/plugins/MVGoZBrush"
module="$folder/MVGoZBrush.so"
for file in INSTALL.txt lib/libMVPluginQt.so plugins/MVGoZBrush/MVGoZBrush.so plugins/MVGoZBrush/MVGoZBrush.rcc \
        plugins/MVGoZBrush/GoZTextureSize.ini plugins/MVGoZBrush/mvgoz-doctor \
        plugins/MVGoZBrush/Figmora/GoZ_Config.txt plugins/MVGoZBrush/Figmora/GoZ_Info.txt \
        plugins/MVGoZBrush/Figmora/GoZBrushToFM.exe; do
    [ -f "$top/$file" ] || { (cd "$tmp/unpacked" && find . -type f); fail "the package lacks $file"; }
done
for program in plugins/MVGoZBrush/mvgoz-doctor plugins/MVGoZBrush/Figmora/GoZBrushToFM.exe; do
    [ -x "$top/$program" ] || fail "$program lost its execute permission in the package"
done

# The module finds the SDK library of the package, not the build's.
sdk=$(ldd "$module" | sed -n 's/^[[:space:]]*libMVPluginQt\.so[^=]*=> \([^ ]*\).*/\1/p')
[ -n "$sdk" ] && [ "$(realpath "$sdk")" = "$(realpath "$top/lib/libMVPluginQt.so")" ] ||
    { ldd "$module"; fail "the module resolves the SDK to '$sdk'"; }

"$folder/mvgoz-doctor" --help >"$tmp/doctor.txt" 2>&1 || { cat "$tmp/doctor.txt"; fail "mvgoz-doctor --help"; }

# The reference host loads the unpacked module; the send installs the bridge from its folder.
work="$tmp/work"
mkdir "$work" || exit 1
if ! "$host" run --plugin "$module" --scene "$scene" --script "$script" --report "$tmp/report.json" \
        --workdir "$work" --language en >"$tmp/host.log" 2>&1; then
    cat "$tmp/host.log"; cat "$tmp/report.json" 2>/dev/null; fail "mvgoz-host run with the unpacked module"
fi
grep -q '"loaded": true' "$tmp/report.json" || fail "the report does not say the plug-in loaded"
grep -qF "\"path\": \"$module\"" "$tmp/report.json" || fail "the report names another module than $module"
cmp -s "$folder/Figmora/GoZBrushToFM.exe" "$work/C:/Users/Public/Pixologic/GoZApps/Figmora/GoZBrushToFM.exe" ||
    fail "the bridge launcher in GoZApps/Figmora is not the package's"

# The translations travel in the package's .rcc: the LOD message shows in English.
english=$(sed -n '/<source>\[MVGoZBursh\] Lod mesh will remove.<\/source>/{n;s/.*<translation>\(.*\)<\/translation>.*/\1/p}' "$ts")
[ -n "$english" ] || fail "no English text for the LOD message in $ts"
grep -qF "\"text\": \"$english\"" "$tmp/report.json" || {
    grep -A3 '"message_boxes"' "$tmp/report.json"; fail "the LOD message is not the English text"
}
echo "the unpacked plug-in loaded, showed English messages and sent a prop"
