#!/usr/bin/python3
"""Runs the shipped reader on hand-written reports and compares its output with the expected output; then on reports
that are cut off or changed, and on random bytes: it must never lose any of its input.

usage: read_report_test.py READER GOLDEN_DIRECTORY"""

import importlib.util
import json
import pathlib
import random
import subprocess
import sys

RECORD = "Previous DSP assertions"
STREAMS = "Snapshot of all running streams"
QUOTAS = "Stream Quotas and Limits"
OUTPUT = "HDMI output"
CHANNELS = "Snapshot of channel settings"
RESOLUTIONS = "Available resolutions"
INPUTS = "Snapshot of input settings"


# A section is what the reader must return: title, text, document and failure.

def whole(title, text, document, failure=None):
    return title, f"----- {title} -----\n\n{text}", document, failure


def broken(title, text, failure):
    """The reader may return any text in place of three dots at the end of the failure."""
    return title, f"----- {title} -----\n\n{text}", None, failure


def line(text):
    return None, text + "\n", None, text


def other(text):
    return None, text, None, "not a section of a report"


def record(text, document):
    return whole(RECORD, text + "\n\n", document)


def bad_record(text, failure="not JSON: ..."):
    return broken(RECORD, text + "\n\n", failure)


def streams(text, members, failure=None):
    """A report whose streamstatistics has one stream: a counter, then these members. Its other arrays are empty."""
    return whole(
        STREAMS,
        '{\n    "streams" : [\n    ],\n\n    "streaminfo" : [\n    ],\n\n    "streamstatistics" : [\n'
        '        { "id/0x0001" : {"bitrate":1e+1' + text + "} }\n    ]\n}\n\n",
        {"streams": [], "streaminfo": [], "streamstatistics": [{"id/0x0001": {"bitrate": 10, **members}}]},
        failure,
    )


def histogram(*texts):
    return "".join(f',"tlm[{n}].reclaim_histogram":[{text}]' for n, text in enumerate(texts))


def histograms(*values):
    return {f"tlm[{n}].reclaim_histogram": value for n, value in enumerate(values)}


MAXIMA = (
    "stream-max-stats",
    "MaxBufferBytes=4294967295\nMaxEncodeStreams=0\nMaxRawStreams=10\nVersion=1\n",
    {"MaxBufferBytes": 4294967295, "MaxEncodeStreams": 0, "MaxRawStreams": 10, "Version": 1},
    None,
)
SYSTEM = (
    "system-info",
    '{\n    "inputs": 1,\n    "capturemodes": {\n        "input1": "1x2"\n    },\n    "viewmode": {}\n}\n',
    {"inputs": 1, "capturemodes": {"input1": "1x2"}, "viewmode": {}},
    None,
)
IDENTITIES = ("identity-info", '{\n    "identities": {\n        "a": 1e+1\n    }\n}\n', {"identities": {"a": 10}}, None)
NO_STREAMS = whole(
    STREAMS,
    '{\n    "streams" : [\n    ],\n\n    "streaminfo" : [\n    ],\n\n    "streamstatistics" : [\n    ]\n}\n\n',
    {"streams": [], "streaminfo": [], "streamstatistics": []},
)
FIGURES = whole(
    QUOTAS,
    '{\n    "streammaximumquota" : [\n        {"buffering":"0","hard":"10","soft":"0"}\n    ],\n\n'
    '    "streammaximumlimits" : [\n        {"encode":"0","other":"0"}\n    ]\n}\n\n',
    {
        "streammaximumquota": [{"buffering": "0", "hard": "10", "soft": "0"}],
        "streammaximumlimits": [{"encode": "0", "other": "0"}],
    },
)
DISABLED = whole(OUTPUT, '    {"enabled":"No"}\n\n', {"enabled": "No"})
CHANNEL = whole(
    CHANNELS,
    '{\n    "channels" : [\n        {"id/0":{"crop":"No"}}\n    ]\n}\n',
    {"channels": [{"id/0": {"crop": "No"}}]},
)
RESOLUTION = whole(
    RESOLUTIONS,
    '{\n    "available_resolutions" : [\n        {"channel":"0","resolutions":"640x360,"}\n    ]\n}\n',
    {"available_resolutions": [{"channel": "0", "resolutions": "640x360,"}]},
)
NO_INPUT = whole(INPUTS, '{\n    "inputs" : [\n    ]\n}\n', {"inputs": []})

SOME_CHANNELS = '{\n    "channels" : [\n        {"id/0":{"crop":"No"}},\n'
SOME_RESOLUTIONS = '{\n    "available_resolutions" : [\n        {"channel":"0",'
SOME_INPUTS = '{\n    "inputs" : [\n        {"id/1":{"crop":"No"}},\n'

# The sections of each report. The reader reads their texts, joined.
CASES = {
    "nothing": [],
    "all of the feeder tool": [MAXIMA, SYSTEM, IDENTITIES],
    "all of the server report": [
        record('{"a":[1.50,null]}', {"a": [1.5, None]}), NO_STREAMS, FIGURES, DISABLED, CHANNEL, RESOLUTION, NO_INPUT,
    ],
    "several runs": [CHANNEL, NO_STREAMS, line("No inputs."), record("{}", {}), NO_STREAMS, MAXIMA, DISABLED],
    "as a shell's $(...) gives it": [(STREAMS, NO_STREAMS[1][:-2], NO_STREAMS[2], None)],
    "without an empty line": [(STREAMS, NO_STREAMS[1][:-1], NO_STREAMS[2], None), DISABLED],
    # Lines instead of a section
    "no channels, asked for twice": [line("No channels."), line("No channels.")],
    "no inputs after a section": [DISABLED, line("No inputs.")],
    "no list": [
        line("Failed to get all channels: down"),
        line("Failed to get all channels: down"),
        line("Failed to get inputs: "),
    ],
    "messages of several lines": [
        line("Failed to get all channels: one\n\ntwo"),
        RESOLUTION,
        line("Failed to get inputs: No inputs.\nNo inputs."),
    ],
    "messages that are not UTF-8": [
        line("[Invalid UTF-8] Failed to get all channels: \\xff"), line("[Invalid UTF-8] Failed to get inputs: \\x80"),
    ],
    # Lines that end a document early
    "channel info": [
        broken(CHANNELS, SOME_CHANNELS + "Failed to get channel info: busy\n", "Failed to get channel info: busy"),
        RESOLUTION,
    ],
    "a message that looks like the end": [
        broken(
            CHANNELS,
            SOME_CHANNELS + "Failed to get channel info: a\n    ]\n}\n",
            "Failed to get channel info: a\n    ]\n}",
        ),
        NO_INPUT,
    ],
    "a line instead of the next channel": [
        broken(
            CHANNELS,
            SOME_CHANNELS + "[Invalid UTF-8] Failed to get channel info: \\xc3\n",
            "[Invalid UTF-8] Failed to get channel info: \\xc3",
        ),
        line("No channels."),
    ],
    "resolutions": [
        broken(RESOLUTIONS, SOME_RESOLUTIONS + "\nFailed to get resolutions: \n", "Failed to get resolutions: "),
        line("No inputs."),
    ],
    "resolutions, not UTF-8": [
        broken(
            RESOLUTIONS,
            SOME_RESOLUTIONS + "[Invalid UTF-8] \nFailed to get resolutions: \\xff\n",
            "Failed to get resolutions: \\xff",
        ),
    ],
    "no map": [
        broken(
            RESOLUTIONS,
            '{\n    "available_resolutions" : [\nFailed to create new OruMap.\n',
            "Failed to create new OruMap.",
        ),
    ],
    "no map at all": [
        broken(
            RESOLUTIONS,
            '{\n    "available_resolutions" : [\nFailed to create new OruMap.\n',
            "Failed to create new OruMap.",
        ),
        line("Failed to create new OruMap."),
    ],
    "no map for the inputs": [RESOLUTION, line("Failed to create new OruMap.")],
    "no map for the inputs alone": [line("Failed to create new OruMap.")],
    "input": [
        broken(
            INPUTS,
            SOME_INPUTS + "Failed to get input 4294967295: No inputs.\nNo inputs.\n",
            "Failed to get input 4294967295: No inputs.\nNo inputs.",
        ),
    ],
    "input info": [broken(INPUTS, SOME_INPUTS + "Failed to get input info: x\n", "Failed to get input info: x")],
    "channel info of an input": [
        broken(INPUTS, SOME_INPUTS + "Failed to get channel info: x\n", "Failed to get channel info: x")
    ],
    # Reports that are malformed by design
    "no value at all": [
        (
            "system-info",
            '{\n    "inputs": 0,\n    "capturemodes": ,\n    "viewmode": \n}\n',
            {"inputs": 0, "capturemodes": None, "viewmode": None},
            "capturemodes has no value; viewmode has no value",
        ),
        IDENTITIES,
    ],
    "no view mode": [
        (
            "system-info",
            '{\n    "inputs": 0,\n    "capturemodes": {},\n    "viewmode": \n}\n',
            {"inputs": 0, "capturemodes": {}, "viewmode": None},
            "viewmode has no value",
        ),
    ],
    "the last input left out": [
        whole(INPUTS, SOME_INPUTS + "    ]\n}\n", {"inputs": [{"id/1": {"crop": "No"}}]}, "the last input is left out")
    ],
    "a good histogram": [streams(histogram("1, 2 ,\n3.0"), histograms([1, 2, 3]))],
    "bad histograms": [
        streams(
            histogram("1,", "7", '"] \\}', "}", "]} },"),
            histograms("1,", [7], '"] \\}', "}", "]} },"),
            "tlm[0].reclaim_histogram is not JSON; tlm[2].reclaim_histogram is not JSON; "
            "tlm[3].reclaim_histogram is not JSON; tlm[4].reclaim_histogram is not JSON",
        ),
    ],
    "the same bad histogram of two streams": [
        whole(
            STREAMS,
            '{\n    "streams" : [\n    ],\n\n    "streaminfo" : [\n    ],\n\n    "streamstatistics" : [\n'
            '        { "id/0x0001" : {"tlm[2].reclaim_histogram":[a]} },\n'
            '        { "id/0x0002" : {"tlm[2].reclaim_histogram":[b]} }\n    ]\n}\n\n',
            {
                "streams": [],
                "streaminfo": [],
                "streamstatistics": [
                    {"id/0x0001": {"tlm[2].reclaim_histogram": "a"}},
                    {"id/0x0002": {"tlm[2].reclaim_histogram": "b"}},
                ],
            },
            "tlm[2].reclaim_histogram is not JSON",
        ),
    ],
    "a histogram that would add a key": [
        streams(histogram('1],"evil":[2'), histograms('1],"evil":[2'), "tlm[0].reclaim_histogram is not JSON")
    ],
    "a histogram that looks like a section": [
        streams(
            histogram("\n" + DISABLED[1] + "No inputs.\n"),
            histograms("\n" + DISABLED[1] + "No inputs.\n"),
            "tlm[0].reclaim_histogram is not JSON",
        ),
        line("No inputs."),
    ],
    "a histogram that is not a number, and one that is not closed": [
        streams(
            histogram("NaN", 100000 * "["),
            histograms("NaN", 100000 * "["),
            "tlm[0].reclaim_histogram is not JSON; tlm[1].reclaim_histogram is not JSON",
        ),
    ],
    "many beginnings of a histogram": [
        (STREAMS, streams(histogram(10000 * histogram("")[:-1]), {})[1], None, "not JSON: ..."), DISABLED,
    ],
    "a text that quotes a histogram": [
        streams(
            ',"identity":"\\"tlm[0].reclaim_histogram\\":[1,] }"' + histogram("1"),
            {"identity": '"tlm[0].reclaim_histogram":[1,] }', **histograms([1])},
        ),
    ],
    "two streams of one id": [
        broken(
            STREAMS,
            '{\n    "streams" : [\n        { "id/0x0001" : {} }\n        { "id/0x0001" : {} }\n    ],\n\n'
            '    "streaminfo" : [\n    ],\n\n    "streamstatistics" : [\n    ]\n}\n\n',
            "not JSON: ...",
        ),
        DISABLED,
    ],
    "a view mode that nests too deep": [
        (
            "system-info",
            '{\n    "inputs": 1,\n    "capturemodes": {},\n    "viewmode": {\n        "a": [[\n',
            None,
            "not closed",
        ),
        IDENTITIES,
    ],
    "a document that ends early without a line, then one with a line": [
        ("system-info", '{\n    "inputs": 1,\n', None, "not closed"),
        broken(INPUTS, SOME_INPUTS + "Failed to get input info: x\n", "Failed to get input info: x"),
    ],
    # Texts and numbers
    "bytes that are not UTF-8, and control characters": [
        (
            "identity-info",
            '{\n    "identities": {\n        "\udcff\udcc3\x01\x1b\u2028\\"": 1,\n        "\u65e5": 2e-5\n    }\n}\n',
            {"identities": {'\udcff\udcc3\x01\x1b\u2028"': 1, "\u65e5": 0.00002}},
            None,
        ),
    ],
    "numbers": [
        record(
            "[3e+1,29.969999999999999,0.1,-0,1e22,9223372036854775807,-123456789012345678901234567890,1e999,-1E+999]",
            [30, 29.97, 0.1, 0, 1e22, 9223372036854775807, -123456789012345678901234567890, "1e999", "-1E+999"],
        ),
    ],
    "a whole number of many digits": [record(5000 * "9", 5000 * "9")],
    # The record of assertions
    "null is a record": [record("null", None)],
    "a record with a line feed in a text": [record('{ "a": "b\nc"\n}', {"a": "b\nc"})],
    "an empty record": [bad_record(""), DISABLED],
    "two values are not a record": [bad_record('{"a":1}\n\n{"b":2}\n'), DISABLED],
    "a record that contains headers of sections": [
        bad_record("----- HDMI output -----\nNo inputs.\n\n----- HDMI output -----\n\nnothing"), line("No inputs."),
    ],
    "a record nested too deep": [bad_record(100000 * "[", "not JSON: nested too deep")],
    "a record of bytes": [bad_record("\0\udcff\r\n\x0b")],
    # Reports that are cut off
    "only a header": [broken(OUTPUT, "", "not closed")],
    "half an opening": [broken(CHANNELS, "{\n    ", "not closed")],
    "half a header": [other("----- HDMI outp")],
    "three lines": [(MAXIMA[0], MAXIMA[1][:-10], None, "not closed")],
    # Other texts
    "the help": [other("Usage:\n  oru-tlm-tool [OPTION?]\n")],
    "a brace": [other("{")],
    "other JSON": [other('{\n    "a": 1\n}\n')],
    "other line ends": [other(DISABLED[1].replace("\n", "\r\n"))],
    "a number that is not one": [(MAXIMA[0], "MaxBufferBytes=a\nVersion=1\n", None, "not JSON: ...")],
    "other text between sections": [
        other("a log\n"), MAXIMA, other("\n"), SYSTEM, other("\n"), DISABLED, other("\nmore\n"), CHANNEL, other("\n"),
    ],
}


def same(expected, got):
    title, text, document, failure = expected
    failure_read = got["failure"]
    if failure is not None and failure.endswith("...") and failure_read is not None:
        failure_read = failure_read[: len(failure) - 3] + "..."
    # Documents are compared as JSON, where 1, 1.0 and true differ.
    wanted = {"title": title, "text": text, "document": json.dumps(document), "failure": failure}
    return wanted == {**got, "document": json.dumps(got["document"]), "failure": failure_read}


def lost(reader, report):
    """Returns whether the reader loses any of these bytes or returns an empty section."""
    sections = json.loads(json.dumps(reader.read_report(report)))
    joined = "".join(section["text"] for section in sections).encode("utf-8", "surrogateescape")
    return joined != report or not all(section["text"] for section in sections)


def mutated(draw, report):
    """Returns the report with a few bytes changed, removed, inserted or repeated."""
    report = bytearray(report)
    for _ in range(draw.choice((1, 1, 3, 20))):
        at = draw.randrange(len(report) + 1)
        to = at + draw.choice((0, 1, 1, 2, 30))
        inserted = (b"\n", b'"', b"}", b"[", b"\xff", b"\n\n", b"No channels.\n", b"----- HDMI output -----\n\n    {")
        report[at:to] = draw.choice((b"", bytes(report[at:to] * 2), draw.randbytes(1), draw.choice(inserted)))
    return bytes(report)


def main():
    path, golden = sys.argv[1:]
    spec = importlib.util.spec_from_file_location("read_report", path)
    reader = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(reader)
    failed = 0

    def check(good, *complaint):
        nonlocal failed
        if not good:
            failed += 1
            print(*complaint)

    for name, expected in CASES.items():
        report = "".join(text for _, text, _, _ in expected).encode("utf-8", "surrogateescape")
        got = reader.read_report(report)
        good = len(got) == len(expected) and all(map(same, expected, got))
        check(good, f"{name}:", *(f"\n    {str(section)[:1000]}" for section in got))
        check(not lost(reader, report), f"{name}: lost something")

    # The reader as a program: from a file, from standard input, and on empty input.
    report = b"No channels.\nNo inputs.\n\xff"
    printed = (
        '[\n{"title": null, "text": "No channels.\\n", "document": null, "failure": "No channels."},\n'
        '{"title": null, "text": "No inputs.\\n\\udcff", "document": null, "failure": "No inputs.\\n\\udcff"}\n]\n'
    )
    for arguments in ([], ["-"], ["/dev/stdin"]):
        run = subprocess.run([path, *arguments], input=report, capture_output=True)
        good = (run.returncode, run.stdout, run.stderr) == (0, printed.encode(), b"")
        check(good, f"as a program {arguments}:", run)
    run = subprocess.run([path], stdin=subprocess.DEVNULL, capture_output=True)
    check((run.returncode, run.stdout, run.stderr) == (0, b"[\n]\n", b""), "as a program, of nothing:", run)
    for arguments, status in ((["/nowhere"], 1), (["/"], 1), (["a", "b"], 2)):
        run = subprocess.run([path, *arguments], stdin=subprocess.DEVNULL, capture_output=True)
        good = run.returncode == status and run.stdout == b"" and run.stderr != b"" and b"Traceback" not in run.stderr
        check(good, f"as a program {arguments}:", run)

    reports = [golden_report.read_bytes() for golden_report in sorted(pathlib.Path(golden).glob("*.txt"))]
    check(len(reports) >= 4, f"reports in {golden}: {len(reports)}")
    tried = 0
    for report in reports:
        whole_report = reader.read_report(report)
        for end in range(0, len(report), 3):  # as if the rest of the output was lost
            tried += 1
            cut = reader.read_report(report[:end])
            check(not lost(reader, report[:end]), f"lost something of {end} bytes")
            complete = whole_report[: len(cut) - 1 if cut else 0]
            check(cut[:-1] == complete, f"a complete section in {end} bytes is read differently")
    for depth in range(900, 1020):  # around the recursion limit of Python
        tried += 1
        check(not lost(reader, record(depth * "[" + depth * "]", None)[1].encode()), f"lost something {depth} deep")
    draw = random.Random("read_report")
    for _ in range(3000):
        tried += 1
        report = mutated(draw, draw.choice(reports)) if draw.random() < 0.9 else draw.randbytes(draw.randrange(200))
        check(not lost(reader, report), f"lost something of {report!r}")
    print(f"{len(CASES)} reports, {tried} that are cut or changed; {failed} failures")
    sys.exit(failed != 0)


main()
