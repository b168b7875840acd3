#!/usr/bin/python3
"""Compares the built tools with the model on random snapshots, records of assertions and command lines.

usage: compare.py [--reader] REDIRECT_ETC_ORU FIRST COUNT BIN_DIR...

Draws the seeds FIRST to FIRST + COUNT - 1 and runs the tools in each BIN_DIR: in the first with drawn command lines,
in the others with all switches. With --reader, compares also what examples/read_report.py reads from the reports of the
first BIN_DIR with the model, the JSON Schema and the manual. A snapshot on which tools and model differ is kept in the
working directory."""

import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import generator
import model
import processes
import recording
from read_reports import Reader

# Variables of sanitizers, coverage and emulator, as in tests/support/run.cpp.
PASSED_THROUGH = ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "G_SLICE", "LLVM_PROFILE_FILE", "LD_LIBRARY_PATH",
                  "QEMU_LD_PREFIX")


class Bench:
    """A directory with the files of a seed, on which the tools run."""

    def __init__(self, bin_dir, redirect):
        self.bin_dir, self.redirect = os.path.abspath(bin_dir), os.path.abspath(redirect)
        self.scratch = tempfile.TemporaryDirectory(prefix="oru-model-")
        self.snapshot = pathlib.Path(self.scratch.name, "snapshot.json")
        self.record = pathlib.Path(self.scratch.name, "dsp-assertion")
        self.snapshot.write_text("1")  # only our client library says at which place a snapshot is wrong
        self.ours = b"snapshot.json:1:1: " in self.run("oru-serverreport-tool", ["-l"]).stderr

    def run(self, name, arguments, locale="C"):
        environment = {key: os.environ[key] for key in PASSED_THROUGH if key in os.environ} | {
            "LC_ALL": locale, "ORU_SNAPSHOT": str(self.snapshot), "ORU_TEST_ETC": self.scratch.name,
            "LD_PRELOAD": self.redirect, "SOURCE_DATE_EPOCH": str(recording.NOW[0]),
            "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}
        return subprocess.run([f"{self.bin_dir}/{name}", *arguments], env=environment, stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=120)

    def put_snapshot(self, text):
        # If a file is truncated and rewritten instead, some file systems flush it to the disk.
        self.snapshot.unlink(missing_ok=True)
        if text is not None:
            self.snapshot.write_bytes(text)

    def put_record(self, record):
        if self.record.is_dir():
            self.record.rmdir()
        self.record.unlink(missing_ok=True)
        if record == "directory":
            self.record.mkdir()
        elif record is not None:
            self.record.write_bytes(b"" if record == "unreadable" else record)
            self.record.chmod(0 if record == "unreadable" else 0o644)

    def reads_records(self):
        """Returns whether the tools read the record here. A static program always reads the one in /etc/oru."""
        self.put_record(b'"the bench"')
        return b'"the bench"' in self.run("oru-serverreport-tool", []).stdout

    def message(self):
        """Returns the message with which every query fails if the snapshot cannot be read: that of oru-snapshot or,
        with another client library than ours, that of the first query."""
        command = ("oru-snapshot", ["check", str(self.snapshot)]) if self.ours else ("oru-serverreport-tool", ["-l"])
        text = self.run(*command).stderr.decode("utf-8", "surrogateescape").removesuffix("\n")
        return text.rpartition("Failed to get all streams: ")[2]

    def comparable(self, text):
        """Returns the text that is compared: without another client library's own messages that an answer is not
        recorded or that a number is not finite."""
        messages = rb": [^:\n]*(: [^:\n]*)? not recorded|[^:\n]*'[^:\n]* finite[^\n]*"
        return text if self.ours else re.sub(messages, b": (its own words)", text)

    def runs(self, seed, with_record, draws=True):
        """Runs both tools on the files of the seed, with all switches and a drawn command line. Yields the tool, its
        arguments, the expected run and the actual run. If not `draws`, a command line is drawn only if the run with all
        switches ends early."""
        kind, text = generator.kind_of(seed), generator.snapshot(seed)
        record = generator.assertions(seed) if with_record else None
        self.put_record(record)
        exists = kind != "broken" or seed % 8 != 0
        self.put_snapshot(text.encode("utf-8", "surrogateescape") if exists else None)
        unreachable = self.message() if kind == "broken" else None
        for tool, all_switches in (("oru-tlm-tool", "-qsi"), ("oru-serverreport-tool", "-lqocrai")):
            for arguments in ([all_switches], generator.command_line(seed, tool)):
                expected = model.run((tool, *arguments), text, record, unreachable)
                yield tool, arguments, expected, self.run(tool, arguments, "C" if seed % 2 else "C.UTF-8")
                if not draws and expected.status == 0:
                    break

    def differences(self, seed, with_record, reader=None, draws=True):
        """Returns a text for each difference between the tools and the model on the files of the seed, and for each
        complaint about what the reader, if one is given, reads from the reports."""
        found, complaints = [], []
        for tool, arguments, expected, got in self.runs(seed, with_record, draws):
            for output, by_model, by_tool in (
                    ("stdout", expected.stdout, got.stdout), ("stderr", expected.stderr, got.stderr),
                    ("status", b"%d" % expected.status, b"%d" % got.returncode)):
                if by_model != by_tool:
                    by_model, by_tool = self.comparable(by_model), self.comparable(by_tool)
                if by_model != by_tool:
                    found.append(f"seed {seed} ({generator.kind_of(seed)}), {tool} {arguments}, {output}, "
                                 + first_difference(by_model, by_tool))
            if reader is not None:
                complaints += [f"seed {seed}, {tool} {arguments}: {complaint}"
                               for complaint in reader.complaints(expected.sections, got.stdout)]
        if found:
            path = pathlib.Path(f"model-{seed}.json").resolve()
            path.write_bytes(self.snapshot.read_bytes() if self.snapshot.exists() else b"")
            record = generator.assertions(seed) if with_record else None
            found.append(f"kept as {path}" + (f"; the record is {record!r}" if record is not None else ""))
        return found + complaints


def first_difference(by_model, by_tool):
    lines = zip(by_model.splitlines(True) + [b""], by_tool.splitlines(True) + [b""])
    at, (first, second) = next((at, pair) for at, pair in enumerate(lines, 1) if pair[0] != pair[1])
    return f"line {at}:\n  model: {first!r}\n  tool:  {second!r}"


def comparison(bin_dirs, redirect, with_record, reader):
    benches = [Bench(bin_dir, redirect) for bin_dir in bin_dirs]

    def compare(seed):
        found = benches[0].differences(seed, with_record, reader)
        for bench in benches[1:]:
            found += bench.differences(seed, with_record, draws=False)
        return found, reader and reader.take_counts(), reader and reader.reports.never_found

    return compare


def main():
    has_reader = sys.argv[1:2] == ["--reader"]
    arguments = sys.argv[1 + has_reader:]
    if len(arguments) < 4:
        sys.exit(__doc__)
    redirect, first, count, *bin_dirs = arguments
    reader = Reader() if has_reader else None
    seeds = range(int(first), int(first) + int(count))
    with_record = Bench(bin_dirs[0], redirect).reads_records()
    if not with_record:
        print("compare.py: without records of assertions, because these tools do not read the record of a test")
    different, counts, never_found = 0, collections.Counter(), set(reader.reports.keys) if reader else set()
    for differences, in_seed, not_found in processes.results(
            lambda: comparison(bin_dirs, redirect, with_record, reader), seeds):
        different += differences != []
        print("\n".join(differences), end="\n" if differences else "", flush=True)
        if reader:
            counts += in_seed
            never_found &= not_found
    for what, count in sorted(counts.items()):
        print(f"{count:8} {what}")
    for path in sorted(never_found):
        print("in no report:", path)
    print(f"compare.py: {len(seeds)} snapshots, {different} on which the tools and the model differ")
    sys.exit(different != 0 or never_found != set())


if __name__ == "__main__":
    main()
