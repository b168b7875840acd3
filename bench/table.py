#!/usr/bin/env python3
"""Measures the built programs and prints tables: table.py RELEASE_BIN STATIC_BIN WORK_DIRECTORY.

Programs that are compared run in turn, so that other load on the machine changes all alike.
"""

import os
import re
import subprocess
import sys
from pathlib import Path

RELEASE, STATIC, WORK = (Path(argument).resolve() for argument in sys.argv[1:])
BENCH = Path(__file__).resolve().parent
REPORT = "oru-serverreport-tool -lqocrai"
FEEDER = "oru-tlm-tool -qsi"


def snapshot(streams):
    path = WORK / f"{streams}.json"
    if not path.exists():
        text = subprocess.run([BENCH / "make_snapshot", str(streams)], stdout=subprocess.PIPE,
                              check=True).stdout
        path.write_bytes(text)
    os.environ["ORU_SNAPSHOT"] = str(path)
    return path


def printed(command):
    return len(subprocess.run(command.split(), stdout=subprocess.PIPE, check=True).stdout)


def measure(rounds, *commands):
    """Per command: median, lower and upper quartile of wall time, processor time (us), peak KiB."""
    lines = subprocess.run([RELEASE / "measure", str(rounds), *commands], text=True,
                           stdout=subprocess.PIPE, check=True).stdout.splitlines()
    return [[int(field) for field in line.split()] for line in lines]


def instructions(command):
    report = subprocess.run(
        ["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null",
         *command.split()], text=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
        check=True).stderr
    return int(re.search(r"I +refs: +([\d,]+)", report)[1].replace(",", ""))


def row(*cells):
    print("| " + " | ".join(str(cell) for cell in cells) + " |")


def head(title, *cells):
    print(f"\n{title}\n")
    row(*cells)
    row("---", *["---:"] * (len(cells) - 1))


def times(wall, low, high, processor):
    return f"{wall / 1000:.2f} ms", f"{low / 1000:.2f} to {high / 1000:.2f}", \
        f"{processor / 1000:.2f} ms"


def start_up():
    snapshot(16)
    head("Start-up: every switch on 16 streams, 4 channels and 4 inputs, against the floor that "
         "prints as many bytes; in the last column the floor and this program alone in turn", "program",
         "wall time", "quartiles", "processor", "peak", "wall / floor", "processor / floor",
         "peak - floor", "wall / floor, two in turn")
    for tool in (REPORT, FEEDER):
        floor = f"{RELEASE}/floor --bytes {printed(f'{RELEASE}/{tool}')}"
        results = measure(1000, floor, f"{RELEASE}/{tool}", f"{STATIC}/{tool}")
        base = results[0]
        names = (f"floor for {tool}", tool, f"{tool}, static")
        in_turn = ["1.00"]
        for program in (f"{RELEASE}/{tool}", f"{STATIC}/{tool}"):
            (of_floor, *_), (of_program, *_) = measure(1500, floor, program)
            in_turn.append(f"{of_program / of_floor:.2f}")
        for name, (*time, peak), alone in zip(names, results, in_turn):
            row(name, *times(*time), f"{peak} KiB", f"{time[0] / base[0]:.2f}",
                f"{time[3] / base[3]:.2f}", f"{peak - base[4]} KiB", alone)


def commands():
    head("Commands of oru-snapshot: the snapshot read by our client library and by the program itself, "
         "against the floor that prints as many bytes", "streams", "command", "wall time", "quartiles",
         "processor", "peak", "wall / floor", "processor / floor", "instructions")
    for streams, rounds in ((16, 1000), (1000, 50)):
        path = snapshot(streams)
        for command in ("show", "metrics"):
            program = f"{RELEASE}/oru-snapshot {command}"
            lines = {f"ORU_SNAPSHOT=FILE oru-snapshot {command}": program,
                     f"oru-snapshot {command} FILE": f"{program} {path}"}
            floor = f"{RELEASE}/floor --bytes {printed(program)}"
            base, *results = measure(rounds, floor, *lines.values())
            row(f"{streams:,}", f"floor for {command}", *times(*base[:4]), f"{base[4]} KiB", "1.00",
                "1.00", f"{instructions(floor):,}")
            for (name, line), (*time, peak) in zip(lines.items(), results):
                row(f"{streams:,}", name, *times(*time), f"{peak} KiB", f"{time[0] / base[0]:.2f}",
                    f"{time[3] / base[3]:.2f}", f"{instructions(line):,}")


def work():
    head("Work: the server report, every switch", "streams", "wall time", "quartiles", "processor",
         "processor / stream", "instructions / stream", "peak / stream", "peak / file")
    snapshot(0)
    ((*_, processor_0, peak_0),) = measure(100, f"{RELEASE}/{REPORT}")
    instructions_0 = instructions(f"{RELEASE}/{REPORT}")
    for streams, rounds in ((10, 200), (100, 100), (1000, 50), (10_000, 20), (100_000, 5)):
        size = snapshot(streams).stat().st_size
        ((*time, peak),) = measure(rounds, f"{RELEASE}/{REPORT}")
        executed = instructions(f"{RELEASE}/{REPORT}")
        row(f"{streams:,}", *times(*time), f"{(time[3] - processor_0) / streams:.1f} us",
            f"{(executed - instructions_0) / streams:,.0f}",
            f"{(peak - peak_0) / streams:.2f} KiB", f"{peak * 1024 / size:.2f}")


def peers():
    path = snapshot(10_000)
    head("Peers: 10,000 streams", "program", "wall time", "quartiles", "processor", "peak",
         "report / program, wall", "report / program, processor")
    report, *others = measure(20, f"{RELEASE}/{REPORT}", f"{RELEASE}/glaze_roundtrip {path}",
                              f"/usr/bin/jq -c . {path}")
    for name, (*time, peak) in zip((REPORT, "glaze to sorted generic JSON and back", "jq -c ."),
                                   (report, *others)):
        row(name, *times(*time), f"{peak} KiB", f"{report[0] / time[0]:.2f}",
            f"{report[3] / time[3]:.2f}")


WORK.mkdir(parents=True, exist_ok=True)
start_up()
commands()
work()
peers()
