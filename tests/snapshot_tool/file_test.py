#!/usr/bin/python3
"""Compares what oru-snapshot prints of a FILE with what it prints of the same snapshot as the client library answers
from it: for show, graph and metrics both streams and the status are the same. The snapshots are random ones, broken
ones among them, one that does not exist, one cut short and one from a FIFO.

usage: file_test.py TREE TOOLS ours|another FIRST COUNT: the root of the source tree; where the tools are; whose
client library they ask; the first seed and how many. The reader of another client library has messages of its own, so
standard error is compared only if oru-snapshot reads the snapshot. Such a library does not say where its answers come
from, so that the headings of show and graph and the figure for the time of recording are left out."""

import os
import re
import subprocess
import sys
import tempfile
import threading

sys.dont_write_bytecode = True  # beside the generator, among the sources


class Snapshot:
    """A snapshot at `path` with this text; without a text there is no file. A FIFO is filled for each run."""

    def __init__(self, path, text, is_fifo=False):
        self.path, self.text, self.is_fifo = path, text, is_fifo
        if is_fifo:
            os.mkfifo(path)
        elif text is not None:
            self.write()

    def write(self):
        with open(self.path, "wb") as file:
            file.write(self.text)

    def run(self, program, *arguments, **environment):
        writer = threading.Thread(target=self.write, daemon=True)
        if self.is_fifo:
            writer.start()
        environment = {name: value for name, value in os.environ.items() if name != "ORU_SNAPSHOT"} | environment
        got = subprocess.run([program, *arguments], env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                             timeout=60)
        if self.is_fifo:
            writer.join(timeout=60)
        return got.returncode, got.stdout, got.stderr


def without_origin(text):
    """Returns the output of show without the lines before the counts, that of graph without the title, that of metrics
    without the time of recording."""
    text = re.sub(rb"\A.*?^(?=(\?|\d+) streams?, )", b"", text, flags=re.DOTALL | re.MULTILINE)
    text = re.sub(rb"(?m)^ +graph \[label=.*, labelloc=t.*\n", b"", text)
    return re.sub(rb"(?m)^(# (HELP|TYPE) )?oru_snapshot_recorded_timestamp_seconds .*\n", b"", text)


def differences(program, snapshot, is_another):
    """Yields the commands that differ, each with what it prints of FILE and of the service."""
    is_read = snapshot.run(program, "check", snapshot.path)[0] == 0
    for command in ("show", "graph", "metrics"):
        of_file = snapshot.run(program, command, snapshot.path)
        of_service = snapshot.run(program, command, ORU_SNAPSHOT=snapshot.path)
        if is_another:
            of_file, of_service = ((got[0], without_origin(got[1]), got[2]) for got in (of_file, of_service))
        compared = 3 if is_read or not is_another else 2
        if of_file[:compared] != of_service[:compared]:
            yield command, of_file, of_service


def main():
    tree, tools, client = sys.argv[1:4]
    first, count = map(int, sys.argv[4:])
    sys.path.insert(0, os.path.join(tree, "tests", "model"))
    import generator  # pylint: disable=import-outside-toplevel
    program = os.path.join(tools, "oru-snapshot")
    with open(os.path.join(tree, "examples", "two-input-encoder.json"), "rb") as file:
        example = file.read()
    compared = different = 0
    with tempfile.TemporaryDirectory() as scratch:
        path = os.path.join(scratch, "snapshot.json")
        cases = [("a snapshot that does not exist", Snapshot(os.path.join(scratch, "missing.json"), None)),
                 ("a snapshot cut short", Snapshot(os.path.join(scratch, "short.json"), example[:-20])),
                 ("a FIFO", Snapshot(os.path.join(scratch, "fifo"), example, is_fifo=True))]
        texts = ((seed, generator.snapshot(seed)) for seed in range(first, first + count))
        random = ((f"seed {seed}", Snapshot(path, text.encode("utf-8", "surrogateescape"))) for seed, text in texts)
        for group in (cases, random):
            for name, snapshot in group:
                compared += 1
                for command, of_file, of_service in differences(program, snapshot, client == "another"):
                    different += 1
                    print(f"{name}: {command}\n  FILE:    {of_file}\n  service: {of_service}")
    print(f"{compared} snapshots, {different} differences")
    sys.exit(different != 0)


main()
