#!/usr/bin/python3
"""Records the service on random and hand-written snapshots. Each recording must be what the model expects, pass
`oru-snapshot check`, be identical to its own recording, and give the same reports of both tools as the service itself.
So must each recording of the snapshot as FILE, except that it may contain more than the tools query.

usage: compare_recordings.py BIN_DIR REDIRECT_ETC_ORU FIRST COUNT [SNAPSHOT...]

Draws the seeds FIRST to FIRST + COUNT - 1, then reads the files, and runs the programs in BIN_DIR, or in
$ORU_TEST_BIN_DIR if it is set. The programs in $ORU_TEST_SERVICE_BIN_DIR, if it is set, record the service and print
its reports, for example through another client library. A snapshot whose recording is wrong is kept in the working
directory."""

import os
import pathlib
import re
import sys

import generator
import processes
import recording
from compare import Bench

ABOUT = 'gate "north", caf\u00e9\n'
KEY = bytes(range(32))


class Recorded:
    """The recordings of one snapshot, and the errors in them."""

    def __init__(self, service, replay, snapshot):
        self.service, self.replay, self.snapshot, self.errors = service, replay, snapshot, []
        service.put_snapshot(snapshot)
        self.key = pathlib.Path(service.scratch.name, "key")
        self.key.write_bytes(KEY)
        check = replay.run("oru-snapshot", ["check", str(service.snapshot)])
        self.unreachable = check.stderr.decode("utf-8", "surrogateescape").removesuffix("\n") or None

    def expect(self, what, expected, got):
        if expected != got:
            pairs = zip(expected.splitlines() + [b""], got.splitlines() + [b""])
            first = next(((ours, theirs) for ours, theirs in pairs if ours != theirs), (expected, got))
            self.errors.append(f"{what}:\n  expected: {first[0][:500]!r}\n  got:      {first[1][:500]!r}")

    def record(self, *arguments, **options):
        """Returns a recording, after comparing it with the model's. The model does not have the messages of another
        client library, so that of its recordings only success or failure is checked here."""
        got = self.service.run("oru-snapshot", ["record", *arguments])
        what = " ".join(["record", *arguments])
        if self.service.bin_dir != self.replay.bin_dir:
            self.expect(f"{what}: whether it fails", b"%d" % (got.returncode != 0), b"%d" % (got.stdout == b""))
            return got
        try:
            text = self.snapshot.decode("utf-8", "surrogateescape")
            expected = recording.record(text, **options, unreachable=self.unreachable)
        except ValueError:
            return got  # valid, but not supported by the model's simple reader
        self.expect(f"{what}: stdout", expected.stdout, got.stdout)
        self.expect(f"{what}: status", b"%d" % expected.status, b"%d" % got.returncode)
        if not re.fullmatch(expected.stderr, got.stderr):
            self.errors.append(f"{what}: stderr: {got.stderr[:500]!r}")
        return got

    def record_file(self, *arguments, **options):
        """Returns the recording of the snapshot as FILE, after comparing it with the model's."""
        got = self.service.run("oru-snapshot", ["record", *arguments, str(self.service.snapshot)])
        what = " ".join(["record", *arguments, "FILE"])
        try:
            expected = recording.record_file(self.snapshot.decode("utf-8", "surrogateescape"), **options)
        except ValueError:
            return got
        self.expect(f"{what}: stdout", expected, got.stdout)
        self.expect(f"{what}: stderr and status", b"0", got.stderr + b"%d" % got.returncode)
        return got

    def compare_files(self):
        """Compares the recordings of the snapshot as FILE, if it can be read."""
        if self.unreachable is not None:
            return
        plain = self.record_file()
        self.record_file("--redact", redact=True)
        self.record_file(f"--redact-key={self.key}", "--about", ABOUT, redact=True, key=KEY, about=ABOUT)
        self.replay.put_snapshot(plain.stdout)
        again = self.replay.run("oru-snapshot", ["record", str(self.replay.snapshot)])
        self.expect("FILE of the recording of FILE", plain.stdout, again.stdout + again.stderr)

    def compare(self, command_lines):
        """Compares all recordings, and the reports of all switches and of these command lines. Returns whether there was
        an answer to record."""
        plain = self.record()
        self.record("--redact", "--about", ABOUT, redact=True, about=ABOUT)
        self.record(f"--redact-key={self.key}", redact=True, key=KEY)
        self.compare_files()
        if plain.returncode != 0:
            return False
        self.replay.put_snapshot(plain.stdout)
        checked = self.replay.run("oru-snapshot", ["check", str(self.replay.snapshot)])
        self.expect("check", b"%s: ok\n" % str(self.replay.snapshot).encode(), checked.stdout + checked.stderr)
        again = self.replay.run("oru-snapshot", ["record"])
        self.expect("recording of the recording", plain.stdout + plain.stderr, again.stdout + again.stderr)
        again = self.replay.run("oru-snapshot", ["record", str(self.replay.snapshot)])
        self.expect("FILE of the recording", plain.stdout, again.stdout + again.stderr)
        for tool, switches in TOOLS.items():
            # A run that ends early does not reach the sections behind its end.
            if self.compare_reports(tool, [f"-{switches}"]) != 0:
                for switch in switches:
                    self.compare_reports(tool, [f"-{switch}"])
        for tool, arguments in command_lines:
            self.compare_reports(tool, arguments)
        return True

    def compare_reports(self, tool, arguments):
        """Compares what a tool prints for the service with what it prints for the recording. Returns the status."""
        expected, got = (bench.run(tool, arguments) for bench in (self.service, self.replay))
        self.expect(f"{tool} {arguments}: stdout", expected.stdout, got.stdout)
        self.expect(f"{tool} {arguments}: stderr", expected.stderr, got.stderr)
        self.expect(f"{tool} {arguments}: status", b"%d" % expected.returncode, b"%d" % got.returncode)
        return expected.returncode


TOOLS = {"oru-tlm-tool": "qsi", "oru-serverreport-tool": "lqocrai"}


def compare(benches, source):
    """Compares the recordings of a seed or a file. Returns the errors, and whether there was an answer to record."""
    if isinstance(source, int):
        snapshot = generator.snapshot(source).encode("utf-8", "surrogateescape")
        command_lines = [(tool, generator.command_line(source, tool)) for tool in TOOLS]
    else:
        snapshot, command_lines = pathlib.Path(source).read_bytes(), []
    recorded = Recorded(*benches, snapshot)
    answered = recorded.compare(command_lines)
    if recorded.errors:
        path = pathlib.Path(f"recording-{pathlib.Path(str(source)).stem}.json").resolve()
        path.write_bytes(snapshot)
        recorded.errors.append(f"kept as {path}")
    return [f"{source}, {error}" for error in recorded.errors], answered


def comparison(*directories, redirect):
    benches = [Bench(directory, redirect) for directory in directories]
    return lambda source: compare(benches, source)


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    own = os.environ.get("ORU_TEST_BIN_DIR", sys.argv[1])
    service = os.environ.get("ORU_TEST_SERVICE_BIN_DIR", own)
    first, count, *files = *map(int, sys.argv[3:5]), *sys.argv[5:]
    sources = [*range(first, first + count), *files]
    wrong = recorded = 0
    for errors, answered in processes.results(lambda: comparison(service, own, redirect=sys.argv[2]), sources):
        wrong += errors != []
        recorded += answered
        print("\n".join(errors), end="\n" if errors else "", flush=True)
    print(f"compare_recordings.py: {len(sources)} snapshots, {recorded} of them with an answer to record; {wrong} are wrong")
    sys.exit(wrong != 0 or recorded == 0)


if __name__ == "__main__":
    main()
