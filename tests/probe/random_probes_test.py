#!/usr/bin/python3
"""Probes random devices that answer everything, through each of the clients: nothing departs, all clients are told of
alike, and every check but those of failures is tried on one device at least.

usage: random_probes_test.py MODEL FIRST COUNT TOOLS...: the directory of the generator; the first seed and how many; where the
tools of each client are"""

import os
import subprocess
import sys
import tempfile


def probe(tools, snapshot):
    return subprocess.run([os.path.join(tools, "oru-snapshot"), "probe"], env=os.environ | {"ORU_SNAPSHOT": snapshot},
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=120)


def main():
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    model, first, count, *clients = sys.argv[1:]
    sys.path.insert(0, model)
    import generator  # pylint: disable=import-outside-toplevel
    complaints, checks, tried = 0, set(), set()
    with tempfile.TemporaryDirectory() as scratch:
        path = os.path.join(scratch, "snapshot.json")
        for seed in range(int(first), int(first) + int(count)):
            with open(path, "w", encoding="utf-8", errors="surrogateescape") as file:
                file.write(generator.snapshot(seed, "whole"))
            told = [probe(tools, path) for tools in clients]
            for tools, got in zip(clients, told):
                wrong = [line for line in got.stdout.splitlines() if b": departs: " in line]
                if got.returncode != 0 or got.stderr or wrong or got.stdout != told[0].stdout:
                    complaints += 1
                    print(f"seed {seed}, {tools}: status {got.returncode}, {got.stderr}, {wrong}")
                for line in got.stdout.decode().splitlines():
                    name, _, found = line.partition(": ")
                    checks.add(name)
                    if not found.startswith("not seen"):
                        tried.add(name)
    never = sorted(name for name in checks - tried if not name.endswith(", failing"))
    print(f"{count} devices, {len(clients)} clients, {len(checks)} checks, {complaints} complaints; never tried: {never}")
    sys.exit(complaints != 0 or never != [] or not checks)


main()
