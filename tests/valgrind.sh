#!/bin/sh
# Runs both tools under valgrind, with every switch, the recorder and the probe, on every snapshot
# named: valgrind.sh BIN SNAPSHOT...
# Any error, and any block that is lost, ends in a failure. A block that is lost "indirectly" is
# reported with the lost block that refers to it. A block that is "possibly" lost is not lost: the C++
# library's arenas are referred to by their last bytes alone.
set -eu
bin=$1
shift
status=0
runs=0

# check SNAPSHOT TOOL SWITCH: as valgrind says, the tool's own status being 0 or 1.
check() {
    result=0
    ORU_SNAPSHOT=$1 valgrind -q --error-exitcode=99 --leak-check=full \
        --errors-for-leak-kinds=definite --show-leak-kinds=definite --num-callers=40 \
        "$bin/$2" "$3" >/dev/null 2>"$log" || result=$?
    runs=$((runs + 1))
    if [ "$result" -gt 1 ]; then
        echo "$2 $3 on $1: status $result" >&2
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
    check "$snapshot" oru-snapshot probe
done
for switch in -qsi --help --foo; do
    check "$1" oru-tlm-tool "$switch"
done
for switch in -lqcai --help --foo; do
    check "$1" oru-serverreport-tool "$switch"
done
echo "$runs runs"
exit "$status"
