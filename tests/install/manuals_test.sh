#!/bin/sh
# Formats every manual with mandoc and man. Neither may print a warning.
# usage: manuals_test.sh DIRECTORY
set -eu
cd "$1"

status=0
for page in *; do
    # mandoc looks up references among the installed manuals, where ours may be missing.
    complaints=$(mandoc -T lint "$page" | grep -v 'STYLE: referenced manual not found' || true)
    complaints=$complaints$(MANWIDTH=80 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null || true)
    for reference in $(sed -n 's/^\.Xr \([^ ]*\) \([0-9]\).*/\1.\2/p' "$page"); do
        [ -f "$reference" ] || complaints="$complaints
$page: refers to $reference, which does not exist"
    done
    if [ -n "$complaints" ]; then
        printf '%s\n' "$complaints"
        status=1
    fi
done
[ $status -ne 0 ] || echo "manuals_test: no warnings"
exit $status
