#!/usr/bin/python3
"""Compares the built tools with the model on random snapshots, records of assertions and command lines.

usage: compare.py BIN_DIR REDIRECT_ETC_ORU FIRST COUNT

Seeds FIRST to FIRST + COUNT - 1; BIN_DIR is where the tools are, unless $ORU_TEST_BIN_DIR says otherwise. A snapshot
on which the two differ is kept in the working directory."""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

import generator
import model
import processes

# What the tools of the trade need from the environment, as in tests/support/run.cpp.
PASSED_THROUGH = ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "G_SLICE", "LLVM_PROFILE_FILE", "LD_LIBRARY_PATH",
                  "QEMU_LD_PREFIX")


class Bench:
    """A directory in which the tools find what a seed draws."""

    def __init__(self, bin_dir, redirect):
        self.bin_dir, self.redirect = os.path.abspath(bin_dir), os.path.abspath(redirect)
        self.scratch = tempfile.TemporaryDirectory(prefix="oru-model-")
        self.snapshot = pathlib.Path(self.scratch.name, "snapshot.json")
        self.record = pathlib.Path(self.scratch.name, "dsp-assertion")
        self.snapshot.write_text("{")  # about which another client library than ours has another message
        self.ours = (os.path.exists(f"{self.bin_dir}/oru-snapshot")
                     and self.run("oru-snapshot", ["check", str(self.snapshot)]).stderr
                     in self.run("oru-serverreport-tool", ["-l"]).stderr)

    def run(self, name, arguments, locale="C"):
        environment = {key: os.environ[key] for key in PASSED_THROUGH if key in os.environ} | {
            "LC_ALL": locale, "ORU_SNAPSHOT": str(self.snapshot), "ORU_TEST_ETC": self.scratch.name,
            "LD_PRELOAD": self.redirect,
            "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}
        return subprocess.run([f"{self.bin_dir}/{name}", *arguments], env=environment, stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=120)

    def put_snapshot(self, text):
        # A file that is emptied and written anew is forced to the disk by some file systems.
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

    def records_are_found(self):
        """A program without a dynamic loader opens /etc/oru/dsp-assertion, and no other."""
        self.put_record(b'"the bench"')
        return b'"the bench"' in self.run("oru-serverreport-tool", []).stdout

    def message(self):
        """Returns the message with which every query fails on a snapshot that cannot be read: what oru-snapshot says
        of it, or, with another client library than ours, what the first query says."""
        asked = ("oru-snapshot", ["check", str(self.snapshot)]) if self.ours else ("oru-serverreport-tool", ["-l"])
        told = self.run(*asked)
        text = told.stderr.decode("utf-8", "surrogateescape").removesuffix("\n")
        return text.rpartition("Failed to get all streams: ")[2]

    def comparable(self, text):
        """What is compared: all of it, but not the words in which another client library than ours says that an
        answer is not recorded or that a figure is not finite."""
        words = rb": [^:\n]*(: [^:\n]*)? not recorded|[^:\n]*'[^:\n]* finite[^\n]*"
        return text if self.ours else re.sub(words, b": (its own words)", text)

    def runs(self, seed, with_record):
        """Runs both tools on what the seed draws. Yields the tool and its arguments, and the run that the model wants
        and the one that there was."""
        kind, text = generator.kind_of(seed), generator.snapshot(seed)
        record = generator.assertions(seed) if with_record else None
        self.put_record(record)
        is_there = kind != "broken" or seed % 8 != 0
        self.put_snapshot(text.encode("utf-8", "surrogateescape") if is_there else None)
        unreachable = self.message() if kind == "broken" else None
        for tool, every in (("oru-tlm-tool", "-qsi"), ("oru-serverreport-tool", "-lqocrai")):
            for arguments in ([every], generator.command_line(seed, tool)):
                wanted = model.run([tool, *arguments], text, record, unreachable)
                yield tool, arguments, wanted, self.run(tool, arguments, "C" if seed % 2 else "C.UTF-8")

    def differences(self, seed, with_record):
        """Returns a text for each run that differs from the model's, on what the seed draws."""
        told = []
        for tool, arguments, wanted, got in self.runs(seed, with_record):
            for what, of_model, of_tool in (
                    ("stdout", wanted.stdout, got.stdout), ("stderr", wanted.stderr, got.stderr),
                    ("status", b"%d" % wanted.status, b"%d" % got.returncode)):
                of_model, of_tool = self.comparable(of_model), self.comparable(of_tool)
                if of_model != of_tool:
                    told.append(f"seed {seed} ({generator.kind_of(seed)}), {tool} {arguments}, {what}, "
                                + first_difference(of_model, of_tool))
        if told:
            kept = pathlib.Path(f"model-{seed}.json").resolve()
            kept.write_bytes(self.snapshot.read_bytes() if self.snapshot.exists() else b"")
            record = generator.assertions(seed) if with_record else None
            told.append(f"kept as {kept}" + (f"; the record is {record!r}" if record is not None else ""))
        return told


def first_difference(of_model, of_tool):
    lines = zip(of_model.splitlines(True) + [b""], of_tool.splitlines(True) + [b""])
    at, (first, second) = next((at, pair) for at, pair in enumerate(lines, 1) if pair[0] != pair[1])
    return f"line {at}:\n  model: {first!r}\n  tool:  {second!r}"


def comparing(where, with_record):
    bench = Bench(*where)
    return lambda seed: bench.differences(seed, with_record)


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    where = os.environ.get("ORU_TEST_BIN_DIR", sys.argv[1]), sys.argv[2]
    seeds = range(int(sys.argv[3]), int(sys.argv[3]) + int(sys.argv[4]))
    with_record = Bench(*where).records_are_found()
    if not with_record:
        print("compare.py: without records of assertions: these tools cannot be given any")
    different = 0
    for told in processes.results(lambda: comparing(where, with_record), seeds):
        different += told != []
        print("\n".join(told), end="\n" if told else "", flush=True)
    print(f"compare.py: {len(seeds)} snapshots, {different} on which the tools and the model differ")
    sys.exit(different != 0)


if __name__ == "__main__":
    main()
