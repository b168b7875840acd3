#!/usr/bin/python3
"""Compares the JSON Schema of the snapshot with oru-snapshot check: both accept every example and every
good snapshot below, and both reject every bad one below. (Some rules cannot be written in a schema.)

usage: schema_test.py SCHEMA EXAMPLES ORU_SNAPSHOT"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

import jsonschema

GOOD = [
    "{}",
    '{"system": {}, "mode": {}, "stream": {}, "channel": {}, "input": {}, "output": {}, "formats": {}}',
    '{"system": {"$error": "no system"}, "mode": {"$error": ""}}',
    '{"system": {"caps": {"output": true}}, "mode": {"info": {"$error": "no mode"}}}',
    '{"stream": {"debug": {"$error": "none"}, "quota": {}, "limit": {"a": 1}, "all": {"$error": "none"}}}',
    '{"stream": {"all": []}}',
    '{"stream": {"all": [{"id": 0}, {"id": 0}, {}]}}',
    '{"stream": {"all": [{"id": 4294967295, "info": {}, "settings": {"$error": "x"}, "debug": {}}]}}',
    '{"channel": {"filtered": {"$error": "no filter"}, "all": [], "info": {"input.count": 2}}}',
    '{"channel": {"all": [{"id": 0, "properties": {"key": "input"}, "info": {}, "crop": [0, 0, 1, 1],'
    ' "crop_max": [1, 1], "resolutions": {"available": [], "other": [[1, 2], [3, 4]]}}]}}',
    '{"channel": {"all": [{"crop": {"$error": "x"}, "crop_max": {"$error": "x"},'
    ' "resolutions": {"available": {"$error": "x"}}}, {"id": 1, "resolutions": {"$error": "x"}}]}}',
    '{"input": {"all": [{"id": 1, "crop": [0, 0, 1, 1], "resolution_unrotated": {"capture": [1, 2]}},'
    ' {"id": 2, "$error": "broken"}, {"id": 3, "resolution_unrotated": {"capture": {"$error": "x"}}}]}}',
    '{"output": {"all": [{"id": 0, "info": {}, "settings": {}}, {"id": 1, "$error": "broken"}]}}',
    '{"formats": {"h264": 0, "big": 4294967295}}',
    '{"version": 1, "recorded": "2026-11-22T07:14:32Z"}',
    '{"recorded": "0001-01-01T00:00:00Z"}',
    '{"recorded": "9999-12-31T23:59:59Z"}',
    '{"about": "unit 12, \u00e9", "channel": {"all": {"$error": "busy"}, "filtered": []}}',
    '{"channel": {"all": [{}], "filtered": [{"id": 3, "info": {"a": 1}}, {"crop_max": [1, 1]}]}}',
    '{"stream": {"quota": {"$error": 1, "a": 2}, "limit": {"$error": {"bytes": "78"}, "a": 2}}}',
    '{"channel": {"all": [{"properties": {"$error": "x", "key": "input"}}]}}',
    '{"mode": {"info": {"a": {"bytes": ""}, "b": {"bytes": "01c3ff"}, "c": {"double": "-nan"},'
    ' "d": {"other": null}, "e": {"other": [{"a": "\\u0000"}, {"$error": "x", "b": 1}]},'
    ' "f": {"other": {}}}}}',
    '{"mode": {"info": {"b": true, "s": "", "u": 4294967295, "i": -9223372036854775808, "d": 1.5,'
    ' "e": 1e300, "p": [0, 4294967295], "": {"uint16": 65535}, "w": {"uint32": 0},'
    ' "l": {"int64": 9223372036854775807}, "n": {"double": "nan"}, "m": {"double": "-inf"},'
    ' "x": {"double": 1}}}}',
]

BAD = [
    # not an object
    "[]",
    "null",
    '"text"',
    '{"stream": []}',
    '{"stream": {"all": [1]}}',
    '{"stream": {"all": {}}}',
    '{"mode": {"info": []}}',
    # unknown members
    '{"streams": {}}',
    '{"system": {"info": {}}}',
    '{"mode": {"caps": {}}}',
    '{"stream": {"info": {}}}',
    '{"stream": {"all": [{"crop": [0, 0, 1, 1]}]}}',
    '{"channel": {"all": [{"settings": {}}]}}',
    '{"input": {"info": {}}}',
    '{"input": {"all": [{"settings": {}}]}}',
    '{"output": {"all": [{"crop": [0, 0, 1, 1]}]}}',
    # failures
    '{"system": {"$error": 1}}',
    '{"system": {"$error": "x", "caps": {}}}',
    '{"stream": {"all": {"$error": "x", "id": 1}}}',
    '{"stream": {"$error": "x"}}',
    '{"channel": {"filtered": {}}}',
    '{"channel": {"filtered": [1]}}',
    '{"channel": {"filtered": {"$error": "x", "id": 1}}}',
    '{"stream": {"quota": {"$error": "x", "a": 1}}}',
    '{"stream": {"all": [{"info": {"a": 1, "$error": "x"}}]}}',
    '{"channel": {"all": [{"resolutions": {"available": [], "$error": "x"}}]}}',
    '{"channel": {"all": [{"resolutions": {"available": {"$error": "x", "a": []}}}]}}',
    '{"channel": {"all": [{"crop": {"$error": "x", "a": 1}}]}}',
    '{"input": {"all": [{"id": 1, "$error": "x", "info": {}}]}}',
    '{"output": {"all": [{"id": 1, "settings": {}, "$error": "x"}]}}',
    # ids
    '{"input": {"all": [{}]}}',
    '{"input": {"all": [{"$error": "x"}]}}',
    '{"output": {"all": [{"info": {}}]}}',
    # texts
    '{"about": 1}',
    '{"about": {"$error": "x"}}',
    '{"about": "\\u0000"}',
    # version and time
    '{"version": 0}',
    '{"version": 2}',
    '{"version": "1"}',
    '{"version": true}',
    '{"recorded": 1795331672}',
    '{"recorded": "2026-11-22"}',
    '{"recorded": "2026-11-22T07:14:32z"}',
    '{"recorded": "2026-11-22t07:14:32Z"}',
    '{"recorded": "2026-11-22T07:14:32"}',
    '{"recorded": "2026-11-22T07:14:32+00:00"}',
    '{"recorded": "2026-11-22T07:14:32.0Z"}',
    '{"recorded": " 2026-11-22T07:14:32Z"}',
    '{"recorded": "2026-11-22T07:14:32Z\\n"}',
    '{"recorded": "0000-11-22T07:14:32Z"}',
    '{"recorded": "2026-13-22T07:14:32Z"}',
    '{"recorded": "2026-00-22T07:14:32Z"}',
    '{"recorded": "2026-11-32T07:14:32Z"}',
    '{"recorded": "2026-11-00T07:14:32Z"}',
    '{"recorded": "2026-11-22T24:00:00Z"}',
    '{"recorded": "2026-11-22T07:60:32Z"}',
    '{"recorded": "2026-11-22T07:14:60Z"}',
    # numbers
    '{"stream": {"all": [{"id": -1}]}}',
    '{"stream": {"all": [{"id": 4294967296}]}}',
    '{"stream": {"all": [{"id": 1.5}]}}',
    '{"stream": {"all": [{"id": "1"}]}}',
    '{"formats": {"h264": -1}}',
    '{"formats": {"h264": "0"}}',
    # sizes and rectangles
    '{"channel": {"all": [{"crop": [0, 0, 1]}]}}',
    '{"channel": {"all": [{"crop": [0, 0, 1, 1, 1]}]}}',
    '{"channel": {"all": [{"crop": [0, 0, 1, -1]}]}}',
    '{"channel": {"all": [{"crop_max": [1]}]}}',
    '{"channel": {"all": [{"resolutions": {"available": [1, 2]}}]}}',
    '{"channel": {"all": [{"resolutions": []}]}}',
    '{"input": {"all": [{"resolution_unrotated": {"capture": [1, 2, 3]}}]}}',
    '{"input": {"all": [{"resolution_unrotated": [1, 2]}]}}',
    # map values
    '{"mode": {"info": {"a": null}}}',
    '{"mode": {"info": {"a": []}}}',
    '{"mode": {"info": {"a": [1]}}}',
    '{"mode": {"info": {"a": [1, 2, 3]}}}',
    '{"mode": {"info": {"a": [1, -2]}}}',
    '{"mode": {"info": {"a": [1, "2"]}}}',
    '{"mode": {"info": {"a": {}}}}',
    '{"mode": {"info": {"a": {"uint8": 1}}}}',
    '{"mode": {"info": {"a": {"uint16": 65536}}}}',
    '{"mode": {"info": {"a": {"uint16": -1}}}}',
    '{"mode": {"info": {"a": {"uint32": 4294967296}}}}',
    '{"mode": {"info": {"a": {"int64": 9223372036854775808}}}}',
    '{"mode": {"info": {"a": {"double": "NaN"}}}}',
    '{"mode": {"info": {"a": {"bytes": 6}}}}',
    '{"mode": {"info": {"a": {"bytes": "6"}}}}',
    '{"mode": {"info": {"a": {"bytes": "6F"}}}}',
    '{"mode": {"info": {"a": {"bytes": "6f00"}}}}',
    '{"mode": {"info": {"a": {"other": 1, "bytes": ""}}}}',
    '{"mode": {"info": {"a": {"double": true}}}}',
    '{"mode": {"info": {"a": {"uint16": 1, "uint32": 1}}}}',
    '{"mode": {"info": {"a": "\\u0000"}}}',
    '{"mode": {"info": {"\\u0000": 1}}}',
    '{"channel": {"all": [{"properties": {"a": null}}]}}',
]


def without_comments(text):
    """Returns the text with every comment replaced by a blank."""
    token = re.compile(r'"(?:\\.|[^"\\])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)
    return token.sub(lambda m: m[0] if m[0][0] == '"' else " ", text)


def main():
    schema_path, examples, oru_snapshot = sys.argv[1:]
    schema = json.loads(pathlib.Path(schema_path).read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)
    failed = 0

    def compare(path, name, expected):
        nonlocal failed
        text = without_comments(path.read_text(encoding="utf-8"))
        by_schema = validator.is_valid(json.loads(text))
        by_check = subprocess.run([oru_snapshot, "check", path], capture_output=True).returncode == 0
        if (by_schema, by_check) != (expected, expected):
            failed += 1
            print(f"{name}\n    expected {expected}, schema {by_schema}, oru-snapshot {by_check}")

    paths = sorted(pathlib.Path(examples).glob("*.json"))
    if not paths:
        sys.exit(f"no examples in {examples}")
    for path in paths:
        compare(path, path, True)
    with tempfile.TemporaryDirectory() as directory:
        path = pathlib.Path(directory) / "snapshot.json"
        for expected, texts in ((True, GOOD), (False, BAD)):
            for text in texts:
                path.write_text(text, encoding="utf-8")
                compare(path, text, expected)
    print(f"{len(paths)} examples, {len(GOOD)} good and {len(BAD)} bad snapshots; {failed} differ")
    sys.exit(failed != 0)


main()
