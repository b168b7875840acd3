#!/bin/sh
# Installs the build into an empty prefix, with and without DESTDIR, and uses what is there.
# usage: install_test.sh CMAKE BUILD COMPILER...: a C++ compiler with the flags of the build
set -eu

cmake=$1
build=$2
shift 2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

fail() {
    echo "install_test: $*" >&2
    exit 1
}

# same WHAT EXPECTED GOT
same() {
    [ "$2" = "$3" ] || fail "$1: expected
$2
got
$3"
}

# Runs the tools of a prefix through their links.
use() {
    bin=$1/bin
    same 'link' oru-cgi-applet "$(readlink "$bin/oru-tlm-tool")"
    same 'link' oru-cgi-applet "$(readlink "$bin/oru-serverreport-tool")"
    echo '{"stream": {"debug": {"global.capacity.peak": 7}, "quota": {}, "limit": {}},
           "channel": {"all": []}}' >"$scratch/snapshot.json"
    same 'oru-snapshot' "$scratch/snapshot.json: ok" "$("$bin/oru-snapshot" check "$scratch/snapshot.json")"
    export ORU_SNAPSHOT="$scratch/snapshot.json"
    same 'oru-tlm-tool' 'MaxBufferBytes=7
MaxEncodeStreams=0
MaxRawStreams=0
Version=1' "$("$bin/oru-tlm-tool" -q)"
    same 'oru-serverreport-tool' 'No channels.' "$(PATH="$bin:$PATH" oru-serverreport-tool -c)"
    same 'read_report.py' '[
{"title": null, "text": "No channels.\n", "document": null, "failure": "No channels."}
]' "$("$bin/oru-serverreport-tool" -c | "$1/share/doc/oru-cgi-applet/examples/read_report.py")"
    same 'oru-cgi-applet' "oru-cgi-applet: Invoke 'oru-tlm-tool' or 'oru-serverreport-tool'!" \
        "$("$bin/oru-cgi-applet" 2>&1 || [ $? -eq 1 ] || echo 'status is not 1')"
    for example in "$1"/share/doc/oru-cgi-applet/examples/*.json; do
        "$bin/oru-snapshot" check "$example" >/dev/null
    done
}

everything='bin/oru-cgi-applet
bin/oru-serverreport-tool
bin/oru-snapshot
bin/oru-tlm-tool
lib/systemd/system/oru-metrics.service
lib/systemd/system/oru-metrics.timer
lib/systemd/system/oru-snapshot.socket
lib/systemd/system/oru-snapshot@.service
share/bash-completion/completions/oru-serverreport-tool
share/bash-completion/completions/oru-snapshot
share/bash-completion/completions/oru-tlm-tool
share/doc/oru-cgi-applet/fleet.md
share/doc/oru-cgi-applet/grafana/oru-dashboards.yml
share/doc/oru-cgi-applet/grafana/oru-device.json
share/doc/oru-cgi-applet/grafana/oru-fleet.json
share/doc/oru-cgi-applet/prometheus/oru.rules.test.yml
share/doc/oru-cgi-applet/prometheus/oru.rules.yml
share/doc/oru-cgi-applet/prometheus/prometheus.yml
share/man/man1/oru-cgi-applet.1
share/man/man1/oru-serverreport-tool.1
share/man/man1/oru-snapshot.1
share/man/man1/oru-tlm-tool.1
share/man/man5/oru-reports.5
share/man/man5/oru-snapshot.5
share/oru/reports.schema.json
share/oru/snapshot.schema.json'

# Lists the files of a prefix, without the examples, whose number may change.
files() {
    (cd "$1" && find . ! -type d ! -path '*/examples/*') | sed 's:^\./::' | sort
}

"$cmake" --install "$build" --prefix "$scratch/first" >/dev/null
same 'files' "$everything
share/zsh/site-functions/_oru" "$(files "$scratch/first")"
use "$scratch/first"

mv "$scratch/first" "$scratch/moved"
use "$scratch/moved"

DESTDIR=$scratch/stage "$cmake" --install "$build" --prefix /usr >/dev/null
same 'files under DESTDIR' "$everything
share/zsh/vendor-completions/_oru" "$(files "$scratch/stage/usr")"
same 'roots under DESTDIR' usr "$(ls -A "$scratch/stage")"
use "$scratch/stage/usr"

"$cmake" --install "$build" --component client --prefix "$scratch/client" >/dev/null
same 'files of the client' 'include/oru/oru.h
include/oru/qwire.h
include/oru/snapshot/value.h
liboru.a
libqwire.a
pkgconfig/oru.pc
pkgconfig/qwire.pc' "$(files "$scratch/client" | sed 's:^lib/\([^/]*-linux-gnu[^/]*/\)\{0,1\}::')"
# Each header alone, in a folder without others, with the flags of its own .pc file.
(
    cd "$scratch/stage"
    PKG_CONFIG_PATH=$(find "$scratch/client" -name pkgconfig)
    export PKG_CONFIG_PATH
    for library in oru qwire; do
        # shellcheck disable=SC2046 # several flags
        echo "#include <$library.h>" |
            "$@" -std=c++23 -x c++ -fsyntax-only -Wall -Wextra -Werror $(pkg-config --cflags $library) -
    done
) || fail 'the headers of the client do not compile'
# Machine code, not only what one compiler's link-time optimiser reads.
for symbol in liboru.a:oru_map_new libqwire.a:_ZNK2qw3map4sizeEv; do
    library=$(find "$scratch/client" -name "${symbol%:*}")
    readelf -W -s "$library" 2>/dev/null | grep -q "FUNC .* ${symbol#*:}\$" ||
        fail "no function ${symbol#*:} in ${symbol%:*}"
done

"$cmake" --install "$build" --component probe --prefix "$scratch/probe" >/dev/null
same 'files of the probe' 'bin/oru-probe
share/man/man1/oru-probe.1' "$(files "$scratch/probe")"
same 'oru-probe' 'oru_stream_get_quota: ok' \
    "$(ORU_SNAPSHOT="$scratch/snapshot.json" "$scratch/probe/bin/oru-probe" | grep '^oru_stream_get_quota:')"

echo 'install_test: installed, moved and staged'
