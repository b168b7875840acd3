#!/usr/bin/python3
"""Runs every ssh command in the README, the pages and the manuals, with a stand-in for ssh that joins its arguments
with blanks and passes them to a shell, as ssh and the device do. What a command writes into a file must be a snapshot
with the text that the command gives for people.

usage: ssh_examples_test.py TREE TOOLS: the root of the source tree; the directory of the tools"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

# Of the options, only those in the examples. With -N there is no command.
SSH = """#!/bin/sh
command=required
while getopts fNL: option; do
    [ "$option" != N ] || command=none
done
shift "$OPTIND"
[ "$command" = none ] || exec sh -c "${*:?without a command, ssh starts a shell}"
"""
EXAMPLE = re.compile(r"^(?:    |desk|\s*\$ )*(ssh .*)$", re.M)


def main():
    tree, tools = map(pathlib.Path, sys.argv[1:])
    pages = [tree / "README.md", *sorted(tree.glob("docs/*.md")), *sorted(tree.glob("docs/man/*"))]
    commands = [(page, command) for page in pages for command in EXAMPLE.findall(page.read_text(encoding="utf-8"))]
    written = failed = 0
    with tempfile.TemporaryDirectory() as scratch:
        stand_in = pathlib.Path(scratch, "ssh")
        stand_in.write_text(SSH)
        stand_in.chmod(0o755)
        environment = os.environ | {"PATH": f"{scratch}:{tools.resolve()}:{os.environ['PATH']}",
                                    "ORU_SNAPSHOT": str(tree.resolve() / "examples/two-input-encoder.json")}
        for page, command in commands:
            run = subprocess.run(command, shell=True, cwd=scratch, env=environment, stdin=subprocess.DEVNULL,
                                 capture_output=True, text=True)
            wrong = run.stderr if run.returncode != 0 else ""
            if file := re.search(r"> *([^ >]+)$", command):
                written += 1
                text = pathlib.Path(scratch, file[1]).read_text(encoding="utf-8")
                about = re.search(r"""--about[ =]["']([^"']*)""", command)
                if not wrong and json.loads(text).get("about") != (about and about[1]):
                    wrong = text[:200]
            if wrong:
                failed += 1
                print(f"{page}: {command}\n{wrong}")
    print(f"{len(commands)} commands, {written} of which write a file; {failed} failures")
    sys.exit(failed != 0 or written < 2)


main()
