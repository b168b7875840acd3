#!/bin/sh
# Installs our client libraries, builds the tools against them as if they were the device's own, and
# runs the end-to-end tests on that build.
# usage: system_client_test.sh CMAKE SOURCE BUILD CACHE TEST...
# CACHE is the initial cache of the second build; the tests are those of BUILD.
set -eu

cmake=$1
source=$2
build=$3
cache=$4
shift 4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$cmake" --install "$build" --component client --prefix "$scratch/device" >/dev/null
PKG_CONFIG_PATH=$(find "$scratch/device" -type d -name pkgconfig)
export PKG_CONFIG_PATH

# The sources without our client: there is no other to be found than what was installed.
mkdir "$scratch/source"
for part in CMakeLists.txt LICENSE CHANGELOG.md cmake docs packaging src; do
    cp -R "$source/$part" "$scratch/source"
done
rm -r "$scratch/source/src/video/snapshot" "$scratch/source/src/video/oru.h" \
    "$scratch/source/src/video/qwire.h"

"$cmake" -C "$cache" -S "$scratch/source" -B "$scratch/build" >/dev/null
"$cmake" --build "$scratch/build"
"$cmake" --install "$scratch/build" --prefix "$scratch/tools" >/dev/null

export ORU_TEST_BIN_DIR="$scratch/tools/bin"
for test; do
    "$test" --gtest_brief=1
done
echo 'system_client_test: the tools work with installed client libraries'
