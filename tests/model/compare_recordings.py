#!/usr/bin/python3
"""Records the service on random snapshots and on hand-written ones, and holds against each recording: what the model
says of it, `oru-snapshot check`, the recording's own recording, and every report of both tools, which must be what
the service itself gives.

usage: compare_recordings.py BIN_DIR REDIRECT_ETC_ORU FIRST COUNT [SNAPSHOT...]

Seeds FIRST to FIRST + COUNT - 1, then the files; BIN_DIR is where the programs are, unless $ORU_TEST_BIN_DIR says
otherwise. $ORU_TEST_SERVICE_BIN_DIR is where the programs are that ask the service, for instance through another client:
they record it, and theirs are the reports that the recording's are compared with. A snapshot whose recording is wrong
is kept in the working directory."""

import os
import pathlib
import re
import sys

import generator
import processes
import recording
from compare import Bench

ABOUT = 'gate "north", caf\u00e9\n'


class Recorded:
    """The recordings of one snapshot, and what is wrong with them."""

    def __init__(self, service, replay, snapshot):
        self.service, self.replay, self.snapshot, self.wrong = service, replay, snapshot, []
        service.put_snapshot(snapshot)

    def expect(self, what, wanted, got):
        if wanted != got:
            pairs = zip(wanted.splitlines() + [b""], got.splitlines() + [b""])
            first = next(((ours, theirs) for ours, theirs in pairs if ours != theirs), (wanted, got))
            self.wrong.append(f"{what}:\n  wanted: {first[0][:500]!r}\n  got:    {first[1][:500]!r}")

    def record(self, *arguments, **options):
        """Returns a recording, after holding it against the model's. How another client than ours says what is not
        recorded, or that it can read nothing, is not stated there."""
        refused = self.replay.run("oru-snapshot", ["check", str(self.service.snapshot)])
        got = self.service.run("oru-snapshot", ["record", *arguments])
        what = " ".join(["record", *arguments])
        if self.service.bin_dir != self.replay.bin_dir:
            self.expect(f"{what}: whether it fails", b"%d" % (got.returncode != 0), b"%d" % (got.stdout == b""))
            return got
        unreachable = None
        if refused.returncode != 0:
            unreachable = refused.stderr.decode("utf-8", "surrogateescape").removesuffix("\n")
        try:
            wanted = recording.record(self.snapshot.decode("utf-8", "surrogateescape"), **options, unreachable=unreachable)
        except ValueError:
            return got  # JSON of a form that the model's reader is too plain for
        self.expect(f"{what}: stdout", wanted.stdout, got.stdout)
        self.expect(f"{what}: status", b"%d" % wanted.status, b"%d" % got.returncode)
        if not re.fullmatch(wanted.stderr, got.stderr):
            self.wrong.append(f"{what}: stderr: {got.stderr[:500]!r}")
        return got

    def compare(self, command_lines):
        """Returns whether there was anything to record."""
        plain = self.record()
        self.record("--redact", "--about", ABOUT, redact=True, about=ABOUT)
        if plain.returncode != 0:
            return False
        self.replay.put_snapshot(plain.stdout)
        checked = self.replay.run("oru-snapshot", ["check", str(self.replay.snapshot)])
        self.expect("check", b"%s: ok\n" % str(self.replay.snapshot).encode(), checked.stdout + checked.stderr)
        again = self.replay.run("oru-snapshot", ["record"])
        self.expect("recording of the recording", plain.stdout + plain.stderr, again.stdout + again.stderr)
        for tool, arguments in command_lines:
            for what, wanted, got in zip(("stdout", "stderr", "status"),
                                         *(self.report(bench, tool, arguments) for bench in (self.service, self.replay))):
                self.expect(f"{tool} {arguments}: {what}", wanted, got)
        return True

    @staticmethod
    def report(bench, tool, arguments):
        run = bench.run(tool, arguments)
        return run.stdout, run.stderr, b"%d" % run.returncode


TOOLS = {"oru-tlm-tool": "qsi", "oru-serverreport-tool": "lqocrai"}
EVERYTHING = [(tool, [f"-{given}"]) for tool, letters in TOOLS.items() for given in (*letters, letters)]


def compare(benches, source):
    """Compares the recording of a seed's or a file's snapshot. Returns what is wrong, and whether there was one."""
    if isinstance(source, int):
        snapshot = generator.snapshot(source).encode("utf-8", "surrogateescape")
        commands = EVERYTHING + [(tool, generator.command_line(source, tool)) for tool in TOOLS]
    else:
        snapshot, commands = pathlib.Path(source).read_bytes(), EVERYTHING
    compared = Recorded(*benches, snapshot)
    answered = compared.compare(commands)
    if compared.wrong:
        kept = pathlib.Path(f"recording-{pathlib.Path(str(source)).stem}.json").resolve()
        kept.write_bytes(snapshot)
        compared.wrong.append(f"kept as {kept}")
    return [f"{source}, {what}" for what in compared.wrong], answered


def comparing(*directories, redirect):
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
    for told, answered in processes.results(lambda: comparing(service, own, redirect=sys.argv[2]), sources):
        wrong += told != []
        recorded += answered
        print("\n".join(told), end="\n" if told else "", flush=True)
    print(f"compare_recordings.py: {len(sources)} snapshots, {recorded} of them with an answer to record; {wrong} are wrong")
    sys.exit(wrong != 0 or recorded == 0)


if __name__ == "__main__":
    main()
