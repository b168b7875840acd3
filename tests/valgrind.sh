#!/bin/sh
# Runs both tools under valgrind, with every switch, the recorder and the probe, on every snapshot
# named: valgrind.sh BIN SNAPSHOT...
# Any error, and any block that is lost, ends in a failure; tests/support/valgrind.supp names the
# only exception. Blocks that are lost "indirectly" hang on one that is lost and is told of, or is
# the exception: a client may give its maps memory whenever they are asked for something. Blocks that
# are "possibly" lost are not: the C++ library's arenas are held by their last bytes alone, which is
# what that means.
set -eu
bin=$1
shift
here=$(dirname "$0")
status=0
runs=0

# check SNAPSHOT TOOL [SWITCH]: as valgrind says, the tool's own status being 0 or 1.
check() {
    result=0
    ORU_SNAPSHOT=$1 valgrind -q --error-exitcode=99 --leak-check=full \
        --errors-for-leak-kinds=definite --show-leak-kinds=definite --num-callers=40 \
        --suppressions="$here/support/valgrind.supp" "$bin/$2" ${3:+"$3"} >/dev/null 2>"$log" || result=$?
    runs=$((runs + 1))
    if [ "$result" -gt 1 ]; then
        echo "$2 ${3:-} on $1: status $result" >&2
        cat "$log" >&2
        status=1
    fi
}

log=$(mktemp)
trap 'rm -f "$log"' EXIT
for snapshot; do
    for switch in -q -s -i; do
        check "$snapshot" oru-tlm-tool "$switch"
    done
    for switch in -l -q -o -c -r -a -i; do
        check "$snapshot" oru-serverreport-tool "$switch"
    done
    check "$snapshot" oru-snapshot record
    check "$snapshot" oru-probe
done
for switch in -qsi --help --foo; do
    check "$1" oru-tlm-tool "$switch"
done
for switch in -lqcai --help --foo; do
    check "$1" oru-serverreport-tool "$switch"
done
echo "$runs runs"
exit "$status"
