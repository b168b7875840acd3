#!/bin/sh
# Has promtool take what is shipped for Prometheus, and looks each figure up in the manual.
# usage: prometheus_test.sh PACKAGING TOOLS MANUAL SNAPSHOT: the folder of what is shipped; where the
# tools are; the manual of oru-snapshot; a snapshot that has every figure
set -eu

packaging=$1
tools=$2
manual=$3
snapshot=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cp "$packaging"/*.yml "$scratch"
cd "$scratch"
echo '- targets: [localhost:9100]' >oru-devices.yml
promtool test rules oru.rules.test.yml
promtool check config prometheus.yml

# Every figure that an alert looks at is told, and every one that is told is in the manual.
"$tools/oru-snapshot" metrics "$snapshot" >figures
promtool check metrics <figures
for figure in $(grep -o 'oru_[a-z_]*' oru.rules.yml | sort -u); do
    grep -q "^$figure[ {]" figures || { echo "oru.rules.yml: no figure '$figure'" >&2; exit 1; }
done
mandoc -T ascii -O width=1000 "$manual" | sed "s/.$(printf '\b')//g" >manual
for figure in $(sed -n 's/^# TYPE \([^ ]*\) .*/\1/p' figures); do
    grep -q -w "$figure" manual || { echo "$manual: nothing about '$figure'" >&2; exit 1; }
done
echo 'prometheus_test: promtool is content'
