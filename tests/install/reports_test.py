#!/usr/bin/python3
"""Compares oru-reports(5), the JSON Schema of reports, the reader and the tools. The rendered manual and the
schema have the same keys in the same order with the same descriptions. The reports of the examples contain
all of these keys and no others. The schema accepts these reports, and rejects them after the changes below.

usage: reports_test.py TOOLS TREE: the directory of the tools; the root of the source tree"""

import copy
import json
import os
import pathlib
import subprocess
import sys

from report_keys import KINDS, Reports

# Changes to the reports of the two-input encoder: a place, and a value that is invalid there.
DELETED = object()
STREAM = (3, "document", "streams", 0, "id/0x0001")
BASIC = (3, "document", "streaminfo", 0, "id/0x0001", "basic")
LEANFLOW = (3, "document", "streaminfo", 1, "id/0x0002", "leanflow")
STATISTICS = (3, "document", "streamstatistics", 0, "id/0x0001")
REJECTED = [
    # sections
    ((0, "title"), "stream-max-statistics"),
    ((0, "title"), DELETED),
    ((0, "text"), DELETED),
    ((0, "text"), ""),
    ((0, "text"), None),
    ((0, "document"), DELETED),
    ((0, "document"), None),  # without a failure
    ((0, "document"), []),
    ((0, "document"), "MaxBufferBytes=0"),
    ((0, "failure"), DELETED),
    ((0, "failure"), False),
    ((0, "title"), None),  # with a document
    ((0, "title"), "system-info"),
    ((0,), []),
    # the feeder tool
    ((0, "document", "MaxBufferBytes"), -2),
    ((0, "document", "MaxBufferBytes"), "67108864"),
    ((0, "document", "MaxRawStreams"), 4294967296),
    ((0, "document", "MaxRawStreams"), DELETED),
    ((0, "document", "Version"), 2),
    ((1, "document", "inputs"), -1),
    ((1, "document", "inputs"), 1.5),
    ((1, "document", "capturemodes"), DELETED),
    ((1, "document", "capturemodes"), []),
    ((1, "document", "capturemodes", "input0"), "1920x1080"),
    ((1, "document", "capturemodes", "input01"), "1920x1080"),
    ((1, "document", "capturemodes", "input1"), "1920 x 1080"),
    ((1, "document", "capturemodes", "input1"), [1920, 1080]),
    ((1, "document", "viewmode"), "none"),
    ((2, "document", "identities"), {}),
    ((2, "document", "identities", "recorder"), -1),
    ((2, "document", "identities", "recorder"), "12"),
    # streams
    ((3, "document", "streams"), {}),
    ((3, "document", "streams", 0), {}),
    ((3, "document", "streams", 0, "id/0x0002"), {}),  # two names
    ((3, "document", "streams", 0), {"id/0x01": {}}),
    ((3, "document", "streams", 0), {"id/1": {}}),
    ((3, "document", "streamstatistics"), DELETED),
    (STREAM + ("bitrate",), None),
    (STREAM + ("bitrate",), 0.5),
    (STREAM + ("duration",), "1:02:03"),
    (STREAM + ("duration",), "01:60:00"),
    (STREAM + ("duration",), 60),
    (STREAM + ("format",), 0),
    (STREAM + ("identity[8]",), "nine"),
    (STREAM + ("identity[0]",), None),
    (STREAM + ("peers",), 4294967296),
    (STREAM + ("resolution",), "1920x"),
    (STREAM + ("resolution",), "01920x1080"),
    (STREAM[:-1] + ("id/0x00001",), {}),
    (STREAM[:-1] + ("id/0x000A",), {}),
    # settings
    (BASIC, DELETED),
    (BASIC + ("framerate",), "30"),
    (BASIC + ("mirror",), 2),
    (BASIC + ("mirror",), DELETED),  # but compression is present
    (BASIC + ("compression",), DELETED),
    (BASIC + ("signed",), DELETED),  # but it has an encoder
    (BASIC + ("signed",), "yes"),
    (BASIC + ("rotation",), -90),
    (BASIC + ("view",), 1),  # beside input
    (BASIC + ("warp",), 1),
    (BASIC[:-1] + ("h26x", "profile"), "extended"),
    (BASIC[:-1] + ("h26x", "rcmode"), 0),
    (BASIC[:-1] + ("h26x", "rcprio"), "full"),
    (LEANFLOW + ("strength",), 15),
    (LEANFLOW + ("strength",), "25"),
    (LEANFLOW + ("skipmode",), "fixed"),
    (LEANFLOW + ("gopmode",), "none"),
    (LEANFLOW[:-1] + ("h26x",), DELETED),  # but leanflow is present
    # statistics
    (STATISTICS + ("actual-framerate",), -1),
    (STATISTICS + ("framerate",), 30),
    (STATISTICS + ("tlm[0].client_us",), [1]),
    (STATISTICS + ("tlm[0].client_us",), [1, 2, 3]),
    (STATISTICS + ("tlm[0].client_us",), 1),
    (STATISTICS + ("tlm[1].client_us",), [1, 2]),
    (STATISTICS + ("tlm[0].duration",), "-00:00:01"),
    (STATISTICS + ("tlm[8].duration",), "00:00:01"),
    (STATISTICS + ("tlm[0].reclaim_count",), 0),
    (STATISTICS + ("tlm[0].reclaim_count",), DELETED),  # but its histogram is present
    (STATISTICS + ("tlm[1].reclaim_histogram",), DELETED),
    (STATISTICS + ("tlm[1].reclaim_histogram",), None),
    # quotas and limits
    ((4, "document", "streammaximumquota"), []),
    ((4, "document", "streammaximumquota", 0, "hard"), 134217728),
    ((4, "document", "streammaximumquota", 0, "hard"), "0134217728"),
    ((4, "document", "streammaximumquota", 0, "hard"), "-1"),
    ((4, "document", "streammaximumquota", 0, "hard"), ""),
    ((4, "document", "streamcurrentquota"), DELETED),  # but the limits in use are present
    ((4, "document", "streamcurrentlimits"), DELETED),
    ((4, "document", "streammaximumlimits"), DELETED),
    # output
    ((5, "document", "enabled"), "no"),
    ((5, "document", "enabled"), True),
    ((5, "document", "enabled"), "No"),  # with the rest
    ((5, "document", "running"), "No"),
    ((5, "document", "running"), DELETED),
    ((5, "document", "width"), DELETED),
    ((5, "document", "framerate"), "60"),
    ((5, "document", "framerate"), "60.0000000"),
    ((5, "document", "vsdb"), "VGA"),
    ((5, "document", "current VIC"), "n/a"),
    # channels
    ((6, "document", "channels", 0, "id/0", "crop"), "No"),  # with the rest
    ((6, "document", "channels", 0, "id/0", "x"), DELETED),
    ((6, "document", "channels", 0, "id/0", "x"), "0"),
    ((6, "document", "channels", 0, "id/0x0000"), {"crop": "No"}),
    ((6, "document", "channels", 3), {"id/03": {"crop": "No"}}),
    ((6, "document", "channels", 3), {"id/3": {"crop": "Yes"}}),
    ((6, "document", "channels", 3), {"id/3": {}}),
    # resolutions
    ((7, "document", "available_resolutions", 0, "channel"), 0),
    ((7, "document", "available_resolutions", 0, "resolutions"), "1920x1080"),
    ((7, "document", "available_resolutions", 0, "resolutions"), "1920x1080,1280x720,"),
    ((7, "document", "available_resolutions", 0, "resolutions"), ","),
    ((7, "document", "available_resolutions", 0, "resolutions"), ["1920x1080"]),
    # inputs
    ((8, "document", "inputs", 0, "id/1", "maxwidth"), -1),
    ((8, "document", "inputs", 0, "id/1", "crop"), "yes"),
    ((8, "document", "inputs", 0), []),
    ((8, "document", "inputs"), 2),
]


def changed(sections, place, value):
    sections = copy.deepcopy(sections)
    at = sections
    for step in place[:-1]:
        at = at[step]
    if value is DELETED:
        del at[place[-1]]
    else:
        at[place[-1]] = value
    return sections


def main():
    tools, tree = map(pathlib.Path, sys.argv[1:])
    reports = Reports(tree)
    schema, manual = reports.schema, reports.manual
    failed = 0

    def check(good, *complaint):
        nonlocal failed
        if not good:
            failed += 1
            print(*complaint)

    # The manual and the schema
    check(len(manual) > 80, "keys in the manual:", len(manual))
    in_order = {}  # the keys' positions in the manual, by the path of their object
    for path, node in reports.keys.items():
        positions = reports.in_manual[path]
        check(len(positions) == 1, "in the schema, but not exactly once in the manual:", path)
        for position in positions:
            kind, description = list(manual.values())[position]
            same = description and node.get("description") == description
            check(same, f"{path}\n    schema: {node.get('description')}\n    manual: {description}")
            types = {node["type"]} if isinstance(node.get("type"), str) else set(node.get("type", []))
            types |= {"string" if isinstance(value, str) else "integer" for value in node.get("enum", [])}
            types |= {"integer"} if "const" in node else set()
            check(types and types <= KINDS[kind], f"{path}: {types} in the schema, {kind} in the manual")
        if not path[-1].startswith("^"):
            in_order.setdefault(path[:-1], []).extend(positions)
    for path, positions in in_order.items():
        check(positions == sorted(positions), "not in the manual's order:", path)
    in_schema = {position for positions in reports.in_manual.values() for position in positions}
    for position, key in enumerate(manual):
        check(position in in_schema, "in the manual, not in the schema:", key)
    opened = [node["description"].partition(":")[0] for node in schema.open_objects()]
    check(opened == ["View mode", "How many times each client started a stream"], "open to keys of any name:", opened)

    # The reports
    sections_by_example = {}
    for snapshot in sorted((tree / "examples").glob("*.json")):
        sections = []
        for tool, switches in (("tlm", "-qsi"), ("serverreport", "-lqo"), ("serverreport", "-cai")):
            environment = dict(os.environ, ORU_SNAPSHOT=str(snapshot))
            report = subprocess.run([tools / f"oru-{tool}-tool", switches], env=environment, capture_output=True).stdout
            read = subprocess.run([tree / "examples/read_report.py"], input=report, stdout=subprocess.PIPE, check=True)
            sections_of_run = json.loads(read.stdout)
            sections += [section for section in sections_of_run if section["title"] != "Previous DSP assertions"]
        for complaint in reports.complaints(sections):
            check(False, f"{snapshot.name}: {complaint}")
        sections_by_example[snapshot.name] = sections
    for path in sorted(reports.never_found):
        check(False, "in no report:", path)

    # The changed reports
    sections = sections_by_example["two-input-encoder.json"]
    check(len(sections) == 9 and all(section["document"] for section in sections), "the example lacks a document")
    extra = [
        ((index, "document", *place, "x"), None)
        for index, section in enumerate(sections)
        for place, closed, _ in schema.objects(section["title"], section["document"])
        if closed
    ]
    check(len(extra) > 40, "closed objects:", len(extra))
    for place, value in REJECTED + extra + [((0, "x"), None)]:
        check(not schema.accepts(changed(sections, place, value)), "the schema accepts", place, value)
    check(not schema.accepts({}) and schema.accepts([]), "the schema requires an array")
    changes = len(REJECTED) + len(extra) + 1
    print(f"{len(manual)} keys; {len(sections_by_example)} examples; {changes} changed reports; {failed} failures")
    sys.exit(failed != 0)


main()
