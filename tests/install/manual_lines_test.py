#!/usr/bin/python3
"""Searches the manuals, as man renders them, for the messages of the tools: the lines below, and every
literal that the sources print. (The formatter silently drops an argument that it takes for a macro,
for example "No inputs.")

usage: manual_lines_test.py TREE: the root of the source tree"""

import os
import pathlib
import re
import subprocess
import sys

LINES = {
    "oru-cgi-applet.1": [
        "oru-cgi-applet: Invoke 'oru-tlm-tool' or 'oru-serverreport-tool'!",
        "“oru-cgi-applet:”",
    ],
    "oru-reports.5": [
        "No channels.",
        "No inputs.",
        "Failed to get all channels: reason",
        "Failed to get inputs: reason",
        "Failed to get channel info: reason",
        "Failed to get resolutions: reason",
        "Failed to create new OruMap.",
        "Failed to get input N: reason",
        "Failed to get input info: reason",
        "Failed reading '/etc/oru/dsp-assertion': reason",
        "oru-serverreport-tool: Failed to get all streams: reason",
        "oru-serverreport-tool: Failed to get quota: reason",
        "oru-serverreport-tool: Failed to get limit: reason",
        "oru-serverreport-tool: Failed to get output: reason",
        "oru-serverreport-tool: Failed to get output settings: reason",
        "oru-serverreport-tool: Failed to get output info: reason",
        "oru-serverreport-tool: Exception reason",
        "oru-serverreport-tool: Failed t parse options: reason",
        "oru-serverreport-tool: Failed to create option context.",
        "oru-tlm-tool: Exception: reason",
        "oru-tlm-tool: Option parsing failed: reason",
        "oru-tlm-tool: Failed creating option context",
    ],
    "oru-serverreport-tool.1": [
        "No channels.",
        "No inputs.",
        "Failed to get all channels: reason",
        "Failed to get inputs: reason",
        "Failed to get channel info: reason",
        "Failed to get resolutions: reason",
        "Failed to get input number: reason",
        "Failed to get input info: reason",
        "Failed to create new OruMap.",
        "Failed to get all streams: reason",
        "Failed to get quota: reason",
        "Failed to get limit: reason",
        "Failed to get output: reason",
        "Failed to get output settings: reason",
        "Failed to get output info: reason",
        "“Failed reading '/etc/oru/dsp-assertion':”",
        "“Failed t parse options:”",
        "“Failed to create option context.”",
        "“Exception”",
        "“cannot write standard output:”",
        "“cannot write standard error:”",
        "oru-serverreport-tool: Failed t parse options: Unknown option --everything.",
    ],
    "oru-probe.1": ["ok: text", "departs: text", "not seen", "see text"],
    "oru-snapshot.1": ["“ok”", "typo.json:1:13: unknown member 'al'"],
    "oru-tlm-tool.1": [
        "MaxBufferBytes=-1 MaxEncodeStreams=-1 MaxRawStreams=-1 Version=1",
        '{ "inputs": 0, "capturemodes": , "viewmode": }',
        "“Option parsing failed:”",
        "“Option --system-info takes no value”",
        "“Exception:”",
        "“cannot write standard output:”",
        "“Failed creating option context”",
        "oru-tlm-tool: Option parsing failed: Unknown option --everything",
    ],
}
# Directories whose sources print literals, and the pages of which one must contain each literal.
SOURCES = {
    "src/applet": ["oru-cgi-applet.1", "oru-serverreport-tool.1", "oru-tlm-tool.1"],
    "src/report": ["oru-serverreport-tool.1", "oru-tlm-tool.1"],
    "src/serverreport": ["oru-serverreport-tool.1"],
    "src/tlm": ["oru-tlm-tool.1"],
}
PRINTS = re.compile(r"\b(?:g_)?(?:f?puts|f?printf?|print_line|print_section_header|format|error_new"
                    r"|tlm_fatal|serverreport_fatal|system_error|throw_output_error|parse_options)\(")
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')


def as_shown(page):
    """Returns the text of a manual with single blanks and without hyphenation."""
    environment = dict(os.environ, LC_ALL="C.UTF-8", MANWIDTH="80")
    text = subprocess.run(["man", "-l", page], env=environment, encoding="utf-8", check=True,
                          stdout=subprocess.PIPE).stdout
    return " ".join(re.sub(r"‐\n *", "", text).split())


def printed_in(source):
    """Returns the words of every literal that a source passes to a function in PRINTS."""
    found = set()
    for call in PRINTS.finditer(source):
        end = call.end()
        depth = 1
        while depth > 0:
            literal = LITERAL.match(source, end)
            if literal:
                end = literal.end()
                # The text between placeholders, without the tool's name at the beginning.
                for part in re.split(r"%\w|\{[^{}]*\}|\\n", re.sub(r"^oru-[\w-]+: ", "", literal[1])):
                    if re.search(r"[A-Z][a-z]{2}|[A-Za-z]{2} [a-z]", part):
                        found.add(part.strip(" '"))
            else:
                depth += {"(": 1, ")": -1}.get(source[end], 0)
                end += 1
    return found


def main():
    tree = pathlib.Path(sys.argv[1])
    shown = {page: as_shown(tree / "docs/man" / page) for page in LINES}
    expected = [(line, [page], "the list") for page, lines in LINES.items() for line in lines]
    for directory, pages in SOURCES.items():
        in_directory = 0
        for source in sorted((tree / directory).glob("*.cpp")):
            for line in sorted(printed_in(source.read_text(encoding="utf-8"))):
                expected.append((line, pages, source))
                in_directory += 1
        if in_directory == 0:
            sys.exit(f"{directory}: prints nothing")
    failed = 0
    for line, pages, origin in expected:
        if not any(line in shown[page] for page in pages):
            failed += 1
            print(f"{origin}: {' or '.join(pages)} does not show: {line}")
    print(f"{len(expected)} lines, {failed} failures")
    sys.exit(failed != 0)


main()
