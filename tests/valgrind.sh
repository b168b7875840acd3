#!/bin/sh
# Runs both tools under valgrind, with all switches, the recorder and the probe, on every snapshot
# named, and on one that does not exist: valgrind.sh BIN SNAPSHOT...
# Any error, and any block that is lost, ends in a failure. A block that is lost "indirectly" is
# reported with the lost block that refers to it. A block that is "possibly" lost is not lost: the C++
# library's arenas are referred to by their last bytes alone.
set -eu
bin=$1
shift
status=0
runs=0

# check SNAPSHOT PROGRAM ARGUMENT...: a status above 1 is valgrind's or a signal's, and a failure. The
# program's own is left in $result.
check() {
    snapshot=$1
    program=$2
    shift 2
    result=0
    ORU_SNAPSHOT=$snapshot valgrind -q --error-exitcode=99 --leak-check=full \
        --errors-for-leak-kinds=definite --show-leak-kinds=definite --num-callers=40 \
        "$bin/$program" "$@" >/dev/null 2>"$log" ||
        result=$?
    runs=$((runs + 1))
    if [ "$result" -gt 1 ]; then
        echo "$program $* on $snapshot: status $result" >&2
        cat "$log" >&2
        status=1
    fi
}

# check_all SNAPSHOT TOOL SWITCH...: all switches in one run. If that run ends early, the sections
# behind its end were not reached: then once more without the first switch, and so on.
check_all() {
    check "$@"
    while [ "$result" -ne 0 ] && [ $# -gt 3 ]; do
        shift 3
        set -- "$snapshot" "$program" "$@"
        check "$@"
    done
}

log=$(mktemp)
trap 'rm -f "$log"' EXIT
for snapshot; do
    check_all "$snapshot" oru-tlm-tool -q -s -i
    check_all "$snapshot" oru-serverreport-tool -l -q -o -c -r -a -i
    check "$snapshot" oru-snapshot record
    check "$snapshot" oru-probe
done
for tool in oru-tlm-tool oru-serverreport-tool; do
    check "$1" "$tool" --help
    check "$1" "$tool" --foo
done
check /nowhere oru-tlm-tool -qsi
check /nowhere oru-serverreport-tool -i
check /nowhere oru-snapshot record
echo "$runs runs"
exit "$status"
