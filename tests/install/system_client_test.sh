#!/bin/sh
# Builds and installs our client libraries as a device has its own: shared. Builds the programs with
# these, and runs the test programs in TESTS on them. Nothing is optimized, to save time:
# scripts/test-sysroot builds the programs as they are shipped.
# usage: system_client_test.sh CMAKE TESTS SOURCE CACHE
# CACHE is the initial cache of all builds: compiler and flags.
set -eu

cmake=$1
tests=$2
source=$3
cache=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$cmake" -C "$cache" -DBUILD_SHARED_LIBS=ON -DBUILD_TESTING=OFF -S "$source" \
    -B "$scratch/libraries" >/dev/null
"$cmake" --build "$scratch/libraries" --target oru qwire
"$cmake" --install "$scratch/libraries" --component client --prefix "$scratch/device" >/dev/null
PKG_CONFIG_PATH=$(find "$scratch/device" -type d -name pkgconfig)
LD_LIBRARY_PATH=$(dirname "$PKG_CONFIG_PATH")
export PKG_CONFIG_PATH LD_LIBRARY_PATH

# What the libraries contain of src/snapshot, no program may call, nor the reverse.
exports() {
    nm -D -C --defined-only "$LD_LIBRARY_PATH/lib$1.so" | cut -d ' ' -f 3-
}
if exports oru | grep -v -e '^oru_' -e '^replay::answers_origin()$' || exports qwire | grep -v '^qw::map::' ||
    [ "$(exports oru | grep -c '^replay::')" -ne 1 ] || ! exports qwire | grep -q '^qw::map::size() const$'; then
    echo 'system_client_test: a library exports another symbol, or one too few' >&2
    exit 1
fi

# The sources without our client library: only the installed one can be found.
mkdir "$scratch/source"
(cd "$source" && tar -c --exclude=./build --exclude=./.git --exclude='./src/replay/*.cpp' \
    --exclude=./src/video/oru.h --exclude=./src/video/qwire.h .) | tar -x -C "$scratch/source"

"$cmake" -C "$cache" -DORU_CLIENT=system -DBUILD_TESTING=OFF -S "$scratch/source" \
    -B "$scratch/build" >/dev/null
"$cmake" --build "$scratch/build"
# The loader takes no library from the scratch folder for a program with more rights than its caller. Lost
# output at every byte is the same with every client library.
echo dispatch tlm serverreport golden device snapshot_program arguments writes | tr ' ' '\n' |
    xargs -P 2 -I NAME env ORU_TEST_BIN_DIR="$scratch/build/bin" "$tests/NAME_test" --gtest_brief=1 \
    --gtest_filter='-*privileged_program*:writes/*'
# Such a build can be configured with its tests.
"$cmake" -C "$cache" -DORU_CLIENT=system -DBUILD_TESTING=ON -S "$scratch/source" \
    -B "$scratch/tests" >/dev/null

# The program must share the C++ library of the client libraries.
if ! readelf -W -d "$scratch/build/bin/oru-cgi-applet" | grep -Eq 'NEEDED.*\[lib(std)?c\+\+\.so'; then
    echo 'system_client_test: the program does not share its C++ library' >&2
    exit 1
fi
echo 'system_client_test: the tools start and work with installed client libraries'
