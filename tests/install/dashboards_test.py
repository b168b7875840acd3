#!/usr/bin/python3
"""Checks the dashboards against the documented JSON model: members and their types, panels that do not overlap, and
data sources, variables and links that exist. No Grafana runs. Every figure in a query is one that metrics prints, or
one of the rules.

usage: dashboards_test.py GRAFANA RULES TOOLS SNAPSHOT: the folder of the dashboards; the file of the rules; the
directory of the tools; a snapshot from which all figures are written"""

import json
import os
import pathlib
import re
import subprocess
import sys

DATA_SOURCE = {"type": "prometheus", "uid": "${datasource}"}
DASHBOARD = {
    "id": type(None), "uid": str, "title": str, "description": str, "tags": list, "timezone": str, "editable": bool,
    "graphTooltip": int, "time": dict, "refresh": str, "schemaVersion": int, "version": int, "annotations": dict,
    "links": list, "templating": dict, "panels": list}
PANEL = {
    "id": int, "type": str, "title": str, "gridPos": dict, "datasource": dict, "targets": list, "fieldConfig": dict,
    "options": dict}
OPTIONAL_OF_PANEL = {"description": str, "transformations": list}
TARGET = {"refId": str, "datasource": dict, "expr": str}
OPTIONAL_OF_TARGET = {"legendFormat": str, "format": str, "instant": bool, "range": bool}
PANEL_TYPES = {"stat", "timeseries", "table", "state-timeline"}
COLUMNS = 24


def check(what, is_true):
    if not is_true:
        sys.exit(f"dashboards_test: {what}")


def check_members(what, value, required, optional=None):
    types = required | (optional or {})
    check(f"{what}: members {sorted(set(value) ^ set(required))}", set(required) <= set(value) <= set(types))
    for name, kind in types.items():
        if name in value:
            check(f"{what}: type of {name}", type(value[name]) is kind)


def check_panel(where, panel):
    check_members(where, panel, PANEL, OPTIONAL_OF_PANEL)
    check(f"{where}: type {panel['type']}", panel["type"] in PANEL_TYPES)
    check_members(f"{where}: gridPos", panel["gridPos"], {"x": int, "y": int, "w": int, "h": int})
    check_members(f"{where}: fieldConfig", panel["fieldConfig"], {"defaults": dict, "overrides": list})
    for override in panel["fieldConfig"]["overrides"]:
        check_members(f"{where}: override", override, {"matcher": dict, "properties": list})
    for transformation in panel.get("transformations", []):
        check_members(f"{where}: transformation", transformation, {"id": str, "options": dict})
    letters = [target["refId"] for target in panel["targets"]]
    check(f"{where}: refId {letters}", letters == list("ABCDEFGH"[:len(letters)]) and letters)
    for target in panel["targets"]:
        check_members(f"{where}: target", target, TARGET, OPTIONAL_OF_TARGET)
        check(f"{where}: data source", target["datasource"] == panel["datasource"] == DATA_SOURCE)
        check(f"{where}: a table shows one moment",
              (panel["type"] == "table") == (target.get("format") == "table" and target.get("instant") is True))


def cells(panel):
    at = panel["gridPos"]
    return {(x, y) for x in range(at["x"], at["x"] + at["w"]) for y in range(at["y"], at["y"] + at["h"])}


def check_dashboard(name, dashboard, uids, figures):
    check_members(name, dashboard, DASHBOARD)
    taken = set()
    for panel in dashboard["panels"]:
        check_panel(f"{name}, '{panel['title']}'", panel)
        check(f"{name}, '{panel['title']}': place", not cells(panel) & taken
              and all(x < COLUMNS for x, _ in cells(panel)))
        taken |= cells(panel)
    ids = [panel["id"] for panel in dashboard["panels"]]
    check(f"{name}: ids of panels", len(set(ids)) == len(ids))

    text = json.dumps(dashboard)
    variables = {variable["name"] for variable in dashboard["templating"]["list"]}
    used = {match for match in re.findall(r"\$\{?(\w+)", text) if not match.startswith("__")}
    check(f"{name}: variables {sorted(used ^ variables)}", used == variables)
    for uid in re.findall(r"/d/([\w-]+)", text):
        check(f"{name}: link to {uid}", uid in uids)
    for figure in set(re.findall(r"\boru[_:][a-z_:0-9]+", text)):
        check(f"{name}: no figure {figure}", figure in figures)


def main():
    folder, rules, tools, snapshot = sys.argv[1:]
    printed = subprocess.run([os.path.join(tools, "oru-snapshot"), "metrics", snapshot], check=True, text=True,
                             stdout=subprocess.PIPE).stdout
    figures = set(re.findall(r"(?m)^# TYPE (\S+)", printed))
    figures |= set(re.findall(r"record: (\S+)", pathlib.Path(rules).read_text(encoding="utf-8")))
    dashboards = {path.name: json.loads(path.read_text(encoding="utf-8"))
                  for path in sorted(pathlib.Path(folder).glob("*.json"))}
    uids = {dashboard["uid"] for dashboard in dashboards.values()}
    check("dashboards", len(uids) == len(dashboards) == 2)
    for name, dashboard in dashboards.items():
        check_dashboard(name, dashboard, uids, figures)
    print(f"dashboards_test: {len(dashboards)} dashboards, "
          f"{sum(len(dashboard['panels']) for dashboard in dashboards.values())} panels")


main()
