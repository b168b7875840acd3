#!/usr/bin/python3
"""Runs every command in the examples of the manuals and the README, and compares its output with the
example: a line that begins with "$ " is a command, the lines up to the next command are its output on
both streams, and a line of three dots matches any number of lines. Every snapshot in an example must
pass `oru-snapshot check`. The commands of the README run as if pasted one after the other, in a clone
after scripts/demo: they find the programs only in build/demo/bin.

usage: examples_test.py TOOLS TREE: the directory of the tools; the root of the source tree"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

INSTALLED_EXAMPLES = "/usr/share/doc/oru-cgi-applet/examples"


def shown_in_manual(path):
    """Returns the literal displays of a manual, without markup."""
    source = pathlib.Path(path).read_text(encoding="utf-8")
    displays = re.findall(r"^\.Bd -literal\n(.*?)^\.Ed$", source, re.DOTALL | re.MULTILINE)
    return [re.sub(r"\\(.)", lambda m: {"&": "", "e": "\\"}.get(m[1], m[1]), text) for text in displays]


def shown_in_markdown(path):
    source = pathlib.Path(path).read_text(encoding="utf-8")
    return re.findall(r"^```console\n(.*?)^```$", source, re.DOTALL | re.MULTILINE)


def clone_after_demo(tree, tools):
    """Returns a new folder like the root of the source tree, with the tools where scripts/demo puts them."""
    clone = pathlib.Path(tempfile.mkdtemp())
    for entry in pathlib.Path(tree).resolve().iterdir():
        if entry.name != "build":
            (clone / entry.name).symlink_to(entry)
    (clone / "build/demo").mkdir(parents=True)
    (clone / "build/demo/bin").symlink_to(pathlib.Path(tools).resolve())
    return str(clone)


def exported(command, directory, environment):
    """Returns the environment after an export command."""
    run = subprocess.run(command + "\nenv -0", shell=True, cwd=directory, env=environment, text=True,
                         stdout=subprocess.PIPE, check=True)
    return dict(variable.split("=", 1) for variable in run.stdout.split("\0") if variable)


def commands(display):
    """Returns the commands of a display, each with the lines of its output."""
    found = []
    for line in display.splitlines():
        if line.startswith("$ "):
            found.append((line[2:], []))
        elif found:
            found[-1][1].append(line.rstrip())
    return found


def matches(lines, got):
    pattern = "".join(r"(?:.*\n)*?" if line.strip() == "..." else re.escape(line) + r"\n" for line in lines)
    return re.fullmatch(pattern, got) is not None


def passes_check(snapshot, environment):
    """Returns whether oru-snapshot accepts the text. Otherwise its message is on standard error."""
    with tempfile.NamedTemporaryFile("w", encoding="utf-8") as file:
        file.write(snapshot)
        file.flush()
        check = ["oru-snapshot", "check", file.name]
        return subprocess.run(check, env=environment, stdout=subprocess.DEVNULL).returncode == 0


def main():
    tools, tree = sys.argv[1:]
    files = [os.path.join(tree, "README.md"), *sorted(map(str, pathlib.Path(tree, "docs/man").iterdir()))]
    clone_environment = dict(os.environ)
    clone_environment.pop("ORU_SNAPSHOT", None)
    tools_environment = dict(clone_environment, PATH=tools + ":" + os.environ["PATH"])
    clone = clone_after_demo(tree, tools)
    scratch = tempfile.mkdtemp()
    count = failed = 0
    for path in files:
        count_in_file = 0
        environment, directory = clone_environment, clone
        for display in shown_in_markdown(path) if path.endswith(".md") else shown_in_manual(path):
            if not path.endswith(".md"):
                environment, directory = tools_environment, scratch
            if display.startswith("{"):
                count_in_file += 1
                failed += not passes_check(display, environment)
            for command, lines in commands(display):
                if command == "cd " + INSTALLED_EXAMPLES:
                    directory = os.path.join(tree, "examples")
                    continue
                if command.startswith("export "):
                    environment = exported(command, directory, environment)
                    continue
                count_in_file += 1
                command = command.replace(INSTALLED_EXAMPLES, os.path.join(tree, "examples"))
                run = subprocess.run(command, shell=True, cwd=directory, env=environment, text=True,
                                     stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                     stderr=subprocess.STDOUT)
                got = "".join(line.rstrip() + "\n" for line in run.stdout.splitlines())
                if not matches(lines, got):
                    failed += 1
                    print(f"{path}: $ {command}\n--- shown\n" + "\n".join(lines) + f"\n--- printed\n{got}")
        if count_in_file == 0:
            failed += 1
            print(f"{path}: nothing to check")
        count += count_in_file
    shutil.rmtree(scratch)
    shutil.rmtree(clone)
    print(f"{count} examples, {failed} failures")
    sys.exit(failed != 0)


main()
