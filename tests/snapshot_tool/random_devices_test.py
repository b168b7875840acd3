#!/usr/bin/python3
"""Runs show, graph and metrics on random devices, including hostile texts and broken snapshots, on the examples and on
a device with 64 streams. Checks that each command has the right status and prints no control or invisible characters,
that no line of show is wider than 79 columns of a terminal, that Graphviz draws every picture and that promtool accepts
all figures, both without a message. If Graphviz or promtool is missing, skips its part.

usage: random_devices_test.py TREE TOOLS FIRST COUNT: the root of the source tree; where the tools are;
the first seed and how many"""

import glob
import os
import shutil
import subprocess
import sys
import tempfile
import unicodedata
import xml.dom.minidom

sys.dont_write_bytecode = True  # beside the generator, among the sources


def run(*command, given=b""):
    return subprocess.run(command, input=given, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=60)


def columns(line):
    """Returns the width of a line on a terminal."""
    def of(char):
        if unicodedata.category(char) in ("Mn", "Me") or 0x1160 <= ord(char) < 0x1200:
            return 0
        return 2 if unicodedata.east_asian_width(char) in "WF" else 1
    return sum(map(of, line))


def with_long_texts(snapshot):
    """Returns a snapshot with long texts in place of some that are short, without blanks and of double width too."""
    return snapshot.replace('"north gate"', '"' + "\u65e5\u672c\u8a9e cafe\u0301 " * 40 + '"').replace(
        '"16:9"', '"' + "\U0001f3a5x" * 100 + '"')


def complaints(program, dot, promtool):
    """Yields the problems in the output of the program for the current service."""
    said = {command: run(program, command) for command in ("show", "graph", "metrics")}
    for command, got in said.items():
        for text in (got.stdout.decode(), got.stderr.decode()):
            if any(unicodedata.category(c) in ("Cc", "Cf", "Zl", "Zp") and c != "\n" for c in text):
                yield f"{command}: a control or invisible character"

    problems = run(program, "show", "--problems")
    if problems.returncode not in (0, 1, 2) or (problems.returncode == 2) != (said["show"].returncode == 1):
        yield f"show --problems: status {problems.returncode}"
    for line in (said["show"].stdout + problems.stdout).decode().splitlines():
        if columns(line) > 79:
            yield f"show: {columns(line)} columns: {line}"

    figures = said["metrics"].stdout.decode()
    is_up = "\noru_up 1\n" in figures
    for command, status in ("show", not is_up), ("graph", not is_up), ("metrics", 0):
        if said[command].returncode != status or bool(said[command].stderr) == is_up:
            yield f"{command}: status {said[command].returncode}, {said[command].stderr}"
    series = [line.rsplit(" ", 1)[0] for line in figures.splitlines() if not line.startswith("#")]
    if len(set(series)) != len(series):
        yield "metrics: a series is told twice"

    if promtool:
        got = run(promtool, "check", "metrics", given=figures.encode())
        if (got.returncode, got.stdout, got.stderr) != (0, b"", b""):
            yield f"promtool: {got}"
    if dot and is_up:
        got = run(dot, "-Tsvg", given=said["graph"].stdout)
        if (got.returncode, got.stderr) != (0, b""):
            yield f"dot: {got}"
        xml.dom.minidom.parseString(got.stdout)


def snapshots(tree, first, count):
    """Yields the names and texts of random snapshots, of the examples and of a device with 64 streams."""
    sys.path.insert(0, os.path.join(tree, "tests", "model"))
    import generator  # pylint: disable=import-outside-toplevel
    for seed in range(first, first + count):
        text = generator.snapshot(seed)
        yield f"seed {seed}", with_long_texts(text) if seed % 2 else text
    for path in glob.glob(os.path.join(tree, "examples", "*.json")):
        with open(path, encoding="utf-8") as file:
            yield path, file.read()
    yield "64 streams", run(os.path.join(tree, "bench", "make_snapshot"), "64").stdout.decode()


def main():
    tree, tools = sys.argv[1:3]
    first, count = map(int, sys.argv[3:])
    dot, promtool = shutil.which("dot"), shutil.which("promtool")
    failed = devices = 0
    with tempfile.TemporaryDirectory() as scratch:
        path = os.environ["ORU_SNAPSHOT"] = os.path.join(scratch, "snapshot.json")
        for name, text in snapshots(tree, first, count):
            with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
                file.write(text)
            devices += 1
            for complaint in complaints(os.path.join(tools, "oru-snapshot"), dot, promtool):
                failed += 1
                print(f"{name}: {complaint}")
    print(f"{devices} devices, {failed} complaints; drawn: {bool(dot)}, figures checked: {bool(promtool)}")
    sys.exit(failed != 0)


main()
