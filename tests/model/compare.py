#!/usr/bin/python3
"""Compares the built tools with the model, on random snapshots and command lines.

usage: compare.py BIN_DIR REDIRECT_ETC_ORU FIRST COUNT

Seeds FIRST to FIRST + COUNT - 1. $ORU_TEST_BIN_DIR takes the place of BIN_DIR. A snapshot on which
the two differ is kept in the working directory."""

import multiprocessing
import os
import pathlib
import subprocess
import sys
import tempfile

import generator
import model

# What the tools of the trade need from the environment, as in tests/support/run.cpp.
PASSED_THROUGH = ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "G_SLICE", "LLVM_PROFILE_FILE", "LD_LIBRARY_PATH", "QEMU_LD_PREFIX")


class Bench:
    """A directory in which a worker puts what the tools find, and runs them."""

    def __init__(self, bin_dir, redirect):
        self.bin_dir, self.redirect = os.path.abspath(bin_dir), os.path.abspath(redirect)
        self.scratch = tempfile.TemporaryDirectory(prefix="oru-model-")
        self.snapshot = pathlib.Path(self.scratch.name, "snapshot.json")
        self.etc = pathlib.Path(self.scratch.name, "etc")
        self.etc.mkdir()
        # Nothing can be put in the place of a file that a program without a dynamic loader opens.
        self.put_record(b"")
        self.records = self.run("oru-serverreport-tool", []).stdout != b""

    def put_record(self, record):
        path = self.etc / "dsp-assertion"
        path.is_dir() and path.rmdir()
        path.unlink(missing_ok=True)
        if record == "directory":
            path.mkdir()
        elif record is not None:
            path.write_bytes(b"" if record == "unreadable" else record)
            path.chmod(0 if record == "unreadable" else 0o644)

    def run(self, name, arguments, locale="C"):
        environment = {key: os.environ[key] for key in PASSED_THROUGH if key in os.environ}
        environment |= {"LC_ALL": locale, "ORU_SNAPSHOT": str(self.snapshot), "ORU_TEST_ETC": str(self.etc), "LD_PRELOAD": self.redirect,
                        "ASAN_OPTIONS": environment.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}
        return subprocess.run([f"{self.bin_dir}/{name}", *arguments], env=environment, capture_output=True, stdin=subprocess.DEVNULL,
                              timeout=120)

    def message(self):
        """Returns with what every query fails on a snapshot that cannot be read, as oru-snapshot tells it."""
        told = self.run("oru-snapshot", ["check", str(self.snapshot)])
        return told.stderr.decode("utf-8", "surrogateescape").removesuffix("\n")

    def differences(self, seed):
        """Runs both tools on what the seed draws. Returns a text for each run in which they differ from the model."""
        kind, text = generator.kind_of(seed), generator.snapshot(seed)
        record = generator.assertions(seed) if self.records else None
        self.put_record(record)
        self.snapshot.unlink(missing_ok=True)
        if kind != "broken" or seed % 10 != 0:
            self.snapshot.write_bytes(text.encode("utf-8", "surrogateescape"))
        unreachable = self.message() if kind == "broken" else None
        told = []
        for tool, every in (("oru-tlm-tool", "-qsi"), ("oru-serverreport-tool", "-lqocrai")):
            for arguments in ([every], generator.command_line(seed, tool)):
                wanted = model.run([tool, *arguments], text, record, unreachable)
                got = self.run(tool, arguments, "C" if seed % 2 else "C.UTF-8")
                for what, of_model, of_tool in (("stdout", wanted.stdout, got.stdout), ("stderr", wanted.stderr, got.stderr),
                                                ("status", b"%d" % wanted.status, b"%d" % got.returncode)):
                    if of_model != of_tool:
                        told.append(f"seed {seed} ({kind}), {tool} {arguments}, {what}:" + first_difference(of_model, of_tool))
        if told:
            kept = pathlib.Path(f"model-{seed}.json")
            kept.write_bytes(self.snapshot.read_bytes() if self.snapshot.exists() else b"")
            told.append(f"kept as {kept.resolve()}" + (f", the record was {record!r}" if record is not None else ""))
        return told


def first_difference(of_model, of_tool):
    lines = zip(of_model.splitlines(True) + [b""], of_tool.splitlines(True) + [b""])
    number, (first, second) = next((at, pair) for at, pair in enumerate(lines, 1) if pair[0] != pair[1])
    return f" line {number}\n  model: {first!r}\n  tool:  {second!r}"


def start(bin_dir, redirect):
    global bench
    bench = Bench(bin_dir, redirect)


def differences(seed):
    return bench.differences(seed)


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    bin_dir = os.environ.get("ORU_TEST_BIN_DIR", sys.argv[1])
    seeds = range(int(sys.argv[3]), int(sys.argv[3]) + int(sys.argv[4]))
    different = 0
    if not Bench(bin_dir, sys.argv[2]).records:
        print("compare.py: without records of assertions, for these tools look them up in /etc/oru only")
    with multiprocessing.Pool(2, start, (bin_dir, sys.argv[2])) as pool:
        for told in pool.imap(differences, seeds, chunksize=5):
            different += bool(told)
            print("\n".join(told), end="\n" if told else "")
    print(f"compare.py: {len(seeds)} snapshots, {different} on which the tools and the model differ")
    sys.exit(different != 0)


if __name__ == "__main__":
    main()
