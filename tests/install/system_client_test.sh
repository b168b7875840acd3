#!/bin/sh
# Builds and installs our client libraries as shared libraries, like those of a device. Then builds the
# project against them like the release preset, and runs its programs with the test programs in TESTS.
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

# The sources without our client, so that the build can only use the installed one.
mkdir "$scratch/source"
(cd "$source" && tar -c --exclude=./build --exclude=./.git --exclude=./src/replay \
    --exclude=./src/video/oru.h --exclude=./src/video/qwire.h .) | tar -x -C "$scratch/source"

"$cmake" -C "$cache" -DORU_CLIENT=system -DBUILD_TESTING=OFF -S "$scratch/source" \
    -B "$scratch/build" >/dev/null
"$cmake" --build "$scratch/build"
echo dispatch tlm serverreport golden device snapshot_program arguments writes | tr ' ' '\n' |
    ORU_TEST_BIN_DIR=$scratch/build/bin xargs -P 2 -I NAME env "$tests/NAME_test" --gtest_brief=1
# Configuring such a build with tests works. Its tests are those that just ran.
"$cmake" -C "$cache" -DORU_CLIENT=system -DBUILD_TESTING=ON -S "$scratch/source" \
    -B "$scratch/tests" >/dev/null

# The program must use the C++ library of the client libraries: two copies in one process conflict.
if ! readelf -W -d "$scratch/build/bin/oru-cgi-applet" | grep -Eq 'NEEDED.*\[lib(std)?c\+\+\.so'; then
    echo 'system_client_test: the program does not share its C++ library' >&2
    exit 1
fi
echo 'system_client_test: the tools start and work with installed client libraries'
