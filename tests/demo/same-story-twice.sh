#!/bin/sh
# Runs the demo twice and compares the two stories; prints the difference when they differ.
#   same-story-twice.sh <mvgoz-host> <MVGoZBrush module>
set -u
host=${1:?usage: same-story-twice.sh <mvgoz-host> <module>}
module=${2:?usage: same-story-twice.sh <mvgoz-host> <module>}

tmp=$(mktemp -d "${TMPDIR:-/tmp}/mvgoz-demo.XXXXXX") || exit 1
trap 'rm -rf "$tmp"' EXIT

for run in 1 2; do
    if ! "$host" demo --plugin "$module" >"$tmp/story$run.txt" 2>&1; then
        cat "$tmp/story$run.txt"
        echo "demo run $run failed"
        exit 1
    fi
done
if ! cmp -s "$tmp/story1.txt" "$tmp/story2.txt"; then
    diff "$tmp/story1.txt" "$tmp/story2.txt"
    echo "the two runs told different stories"
    exit 1
fi
if grep -q 'QStandardPaths' "$tmp/story1.txt"; then
    grep 'QStandardPaths' "$tmp/story1.txt"
    echo "the demo printed a Qt runtime warning"
    exit 1
fi
echo "the same story twice ($(wc -l <"$tmp/story1.txt") lines)"
