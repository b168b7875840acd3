#!/usr/bin/python3
"""Reads what oru-tlm-tool or oru-serverreport-tool printed, and prints its sections as a JSON array with
one object for each section, on a line of its own:

    title     the title in the header; stream-max-stats, system-info or identity-info if there is no header;
              null for lines in place of a section, such as "No channels."
    text      the section as it was printed: the joined texts are the input, byte for byte. A byte that is
              not valid UTF-8 becomes a character as with Python's "surrogateescape".
    document  the contents of the section, or null if it breaks off or is not JSON
    failure   the line that breaks it off, or what is wrong with it, or null

oru-reports(5) describes the documents, and which sections cannot be distinguished."""

import argparse
import json
import math
import re
import signal
import sys
from collections import namedtuple

# A kind of section: its document's first bytes, how its last line ends, and the line feeds after it.
Kind = namedtuple("Kind", "title header opening closing line_feeds", defaults=("", 1))


def titled(title, opening, closing=r"^    \]\n\}$", line_feeds=1):
    return Kind(title, f"----- {title} -----\n\n", opening, closing, line_feeds)


def lines(none, failed):
    """Lines in place of a section. GLib marks a message that is not valid UTF-8."""
    return [Kind(None, "", line) for line in (none, failed, "[Invalid UTF-8] " + failed)]


NO_CHANNELS = lines("No channels.", "Failed to get all channels: ")
NO_INPUTS = [*lines("No inputs.", "Failed to get inputs: "), Kind(None, "", "Failed to create new OruMap.")]

# In the order in which they are printed, with one row for each option.
ROWS = [
    [Kind("stream-max-stats", "", "MaxBufferBytes=", "^Version=1$")],
    [Kind("system-info", "", '{\n    "inputs": ', r"^\}$")],
    [Kind("identity-info", "", '{\n    "identities": {', r"^\}$")],
    [titled("Previous DSP assertions", "")],
    [titled("Snapshot of all running streams", '{\n    "streams" : [\n', line_feeds=2)],
    [titled("Stream Quotas and Limits", '{\n    "streammaximumquota" : [\n', line_feeds=2)],
    [titled("HDMI output", '    {"', r"\}$", line_feeds=2)],
    [titled("Snapshot of channel settings", '{\n    "channels" : [\n'), *NO_CHANNELS],
    [titled("Available resolutions", '{\n    "available_resolutions" : [\n'), *NO_CHANNELS],
    [titled("Snapshot of input settings", '{\n    "inputs" : [\n'), *NO_INPUTS],
]
FIRST_BYTE = re.compile(r"^[MNF\[{-]", re.M)  # of any of these

# What breaks off a document of channels, resolutions or inputs.
BREAK = re.compile(
    r"^(\[Invalid UTF-8\] )?Failed to get (channel info|resolutions|input [0-9]+|input info): "
    r"|^Failed to create new OruMap\.$", re.M)

NO_VALUE = re.compile(r'^    "(capturemodes|viewmode)": (?=,?$)', re.M)

# A histogram is pasted unchanged: it ends where the next one, or the next element, begins.
HISTOGRAM = re.compile(
    r'"(tlm\[[0-7]\]\.reclaim_histogram)":(\[(?:(?!"tlm\[[0-7]\]\.reclaim_histogram":\[).)*?\])'
    r'(?=,"tlm\[[0-7]\]\.reclaim_histogram":\[|\} \}(,\n        \{ "id/0x|\n    \]\n\}))', re.S)


def number(digits):
    """A whole number as an integer, in any form (3e+1 is 30); a number too large for a double as text."""
    if len(digits) <= 300 and digits.lstrip("-").isdigit():
        return int(digits)
    value = float(digits)
    if math.isinf(value):
        return digits
    return int(value) if value.is_integer() and abs(value) < 2**53 else value


# Accepts control characters in texts. NaN and Infinity are not numbers: int() rejects them.
DECODER = json.JSONDecoder(parse_float=number, parse_int=number, parse_constant=int, strict=False)


def from_json(text):
    try:
        value = DECODER.decode(text)
        json.dumps([[[value]]])  # as deep as it will be printed
        return value
    except RecursionError:
        raise ValueError("nested too deep") from None


def read_document(title, text):
    """Returns the contents of a document, and what is malformed in it or None. Raises ValueError if it
    is not JSON."""
    wrong = []

    def null_for(name):
        wrong.append(name[1] + " has no value")
        return name[0] + "null"

    def histogram(member):
        try:
            from_json(member[2])
            return member[0]
        except ValueError:
            wrong.append(member[1] + " is not JSON")
            return f'"{member[1]}":{json.dumps(member[2][1:-1])}'

    if title == "stream-max-stats":
        pairs = (line.split("=") for line in text.split("\n"))
        return {name: int(value) for name, value in pairs}, None
    if title == "system-info":
        text = NO_VALUE.sub(null_for, text)
    elif title == "Snapshot of all running streams":
        text = HISTOGRAM.sub(histogram, text)
    elif title == "Snapshot of input settings" and text.endswith(",\n    ]\n}"):
        wrong.append("the last input is left out")
        text = text[: -len(",\n    ]\n}")] + "\n    ]\n}"
    return from_json(text), "; ".join(dict.fromkeys(wrong)) or None


def section_at(report, at, row_before=-1):
    """Returns the row and the kind of the section that begins at `at`, or -1 and None. Lines in place of
    a section are found in later rows only."""
    for row, kinds in enumerate(ROWS):
        for kind in kinds:
            whole = kind.header + kind.opening
            there = report[at : at + len(whole)]
            cut_off = 0 < len(kind.header) <= len(there) and whole.startswith(there)
            if (there == whole or cut_off) and (kind.title or row > row_before):
                return row, kind
    return -1, None


def next_section(report, start, row, before="\n"):
    """Returns where the next section after `start` begins, or the end of the report."""
    for first in FIRST_BYTE.finditer(report, start + 1):
        at = first.start()
        if report.startswith(before, at - len(before)) and section_at(report, at, row)[1]:
            return at
    return len(report)


def read_section(report, at):
    """Returns the end of the section that begins at `at`, its title, its document and its failure."""
    row, kind = section_at(report, at)
    if kind is None:
        return next_section(report, at, row), None, None, "not a section of a report"
    if kind.title is None:
        end = next_section(report, at, row)  # a message may have several lines
        return end, None, None, report[at:end].removesuffix("\n")
    start = at + len(kind.header)
    if kind.title == "Previous DSP assertions":  # may hold anything
        end = next_section(report, start, row, before="\n\n")
        try:
            return end, kind.title, from_json(report[start:end]), None
        except ValueError as error:
            return end, kind.title, None, f"not JSON: {error}"

    closing = re.compile(kind.closing, re.M).search(report, start)
    if closing:
        closed = closing.end()
        for _ in range(kind.line_feeds):
            closed += report.startswith("\n", closed)
        try:
            return closed, kind.title, *read_document(kind.title, report[start : closing.end()])
        except ValueError as error:  # malformed, or closed by the end of a later section
            malformed = f"not JSON: {error}"
    end = next_section(report, start, row)
    # One of these lines may also be in place of the inputs: then it is at the end.
    broken = BREAK.search(report, start, max(end, report.find("\n", end)))
    if broken:
        end = next_section(report, broken.start(), row)
        return end, kind.title, None, report[broken.start() : end].removesuffix("\n")
    if closing and closed <= end:
        return closed, kind.title, None, malformed
    return end, kind.title, None, "not closed"


def read_report(report):
    """Returns the sections of a report. `report` is bytes."""
    report = report.decode("utf-8", "surrogateescape")
    sections, at = [], 0
    while at < len(report):
        end, title, document, failure = read_section(report, at)
        sections.append(dict(title=title, text=report[at:end], document=document, failure=failure))
        at = end
    return sections


def main():
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)
    parser = argparse.ArgumentParser(description="Print the sections of a report as JSON; see oru-reports(5).")
    parser.add_argument("file", nargs="?", default="-", help="the report (default: standard input)")
    name = parser.parse_args().file
    try:
        with sys.stdin.buffer if name == "-" else open(name, "rb") as file:
            report = file.read()
    except OSError as error:
        sys.exit(f"read_report.py: {error}")
    print("[" + ",".join("\n" + json.dumps(section) for section in read_report(report)) + "\n]")


if __name__ == "__main__":
    main()
