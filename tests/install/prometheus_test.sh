#!/bin/sh
# Checks the Prometheus files with promtool, and searches the manual for each metric and the page about
# fleets for each alert.
# usage: prometheus_test.sh PACKAGING TOOLS MANUAL SNAPSHOT FLEET: the folder of the Prometheus files; the
# directory of the tools; the manual of oru-snapshot; a snapshot from which all metrics are written; the page
set -eu

packaging=$1
tools=$2
manual=$3
snapshot=$4
fleet=$5
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cp "$packaging"/*.yml "$scratch"
cd "$scratch"
echo '- targets: [localhost:9100]' >oru-devices.yml
promtool test rules oru.rules.test.yml
promtool check config prometheus.yml

# Every metric that an alert uses is written, and every metric that is written is in the manual.
"$tools/oru-snapshot" metrics "$snapshot" >metrics
promtool check metrics <metrics
for metric in $(grep -o 'oru_[a-z_]*' oru.rules.yml | sort -u); do
    grep -q "^$metric[ {]" metrics || { echo "oru.rules.yml: no metric '$metric'" >&2; exit 1; }
done
mandoc -T ascii -O width=1000 "$manual" | sed "s/.$(printf '\b')//g" >manual
for metric in $(sed -n 's/^# TYPE \([^ ]*\) .*/\1/p' metrics); do
    grep -q -w "$metric" manual || { echo "$manual: no metric '$metric'" >&2; exit 1; }
done
for alert in $(sed -n 's/.* alert: //p' oru.rules.yml); do
    anchor=fleet.md#$(echo "$alert" | tr '[:upper:]' '[:lower:]')
    grep -q "runbook_url: file:///usr/share/doc/oru-cgi-applet/$anchor\$" oru.rules.yml &&
        grep -q "^### $alert\$" "$fleet" || { echo "$fleet: no section '$alert'" >&2; exit 1; }
done
echo 'prometheus_test: promtool reports no errors'
