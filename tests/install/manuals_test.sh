#!/bin/sh
# Formats every manual with both formatters and wants no word of complaint from either.
# usage: manuals_test.sh DIRECTORY
set -eu
cd "$1"

status=0
for page in *; do
    # References are looked up among the manuals of the machine, where ours need not be.
    complaints=$(mandoc -T lint "$page" | grep -v 'STYLE: referenced manual not found' || true)
    complaints=$complaints$(MANWIDTH=80 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null || true)
    for reference in $(sed -n 's/^\.Xr \([^ ]*\) \([0-9]\).*/\1.\2/p' "$page"); do
        [ -f "$reference" ] || complaints="$complaints
$page: refers to $reference, which there is not"
    done
    if [ -n "$complaints" ]; then
        printf '%s\n' "$complaints"
        status=1
    fi
done
[ $status -ne 0 ] || echo "manuals_test: no complaints"
exit $status
