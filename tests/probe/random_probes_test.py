#!/usr/bin/python3
"""Probes random devices that answer every query, through each client library. No check departs, the
output is the same with each client library, and each check except those of failures has a case on at
least one device.

usage: random_probes_test.py MODEL FIRST COUNT TOOLS...: the directory of the generator; the first seed
and the number of seeds; the directory of the programs for each client library"""

import os
import subprocess
import sys
import tempfile


def probe(tools, snapshot):
    return subprocess.run([os.path.join(tools, "oru-probe")], env=os.environ | {"ORU_SNAPSHOT": snapshot},
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=120)


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    model, first_seed, count, *clients = sys.argv[1:]
    sys.path.insert(0, model)
    import generator  # pylint: disable=import-outside-toplevel
    failures, checks, checks_with_cases = 0, set(), set()
    with tempfile.TemporaryDirectory() as scratch:
        path = os.path.join(scratch, "snapshot.json")
        for seed in range(int(first_seed), int(first_seed) + int(count)):
            with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
                file.write(generator.snapshot(seed, "whole"))
            runs = [probe(tools, path) for tools in clients]
            for tools, run in zip(clients, runs):
                departures = [line for line in run.stdout.splitlines() if b": departs: " in line]
                if run.returncode != 0 or run.stderr or departures or run.stdout != runs[0].stdout:
                    failures += 1
                    print(f"seed {seed}, {tools}: status {run.returncode}, {run.stderr}, {departures}")
                for line in run.stdout.decode().splitlines():
                    name, _, verdict = line.partition(": ")
                    checks.add(name)
                    if not verdict.startswith("not seen"):
                        checks_with_cases.add(name)
    missing = sorted(name for name in checks - checks_with_cases if not name.endswith(", failing"))
    print(f"{count} devices, {len(clients)} client libraries, {len(checks)} checks, {failures} failures; "
          f"checks without a case: {missing}")
    sys.exit(failures != 0 or missing != [] or not checks)


main()
