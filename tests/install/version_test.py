#!/usr/bin/python3
"""Compares the version in CMakeLists.txt with those in the changelogs, in docs/porting.md and in what the programs print.

usage: version_test.py TREE TOOLS: the root of the source tree; the directory of the tools"""

import pathlib
import re
import subprocess
import sys

FOUND_IN = {
    "CHANGELOG.md": r"^## (\S+)",
    "packaging/debian/changelog": r"^oru-cgi-applet \((\S+)-\d+\)",
    "docs/porting.md": r"oru-cgi-applet_(\S+)\.bb\b|ORU_CGI_APPLET_VERSION = (\S+)",
}


def main():
    tree, tools = map(pathlib.Path, sys.argv[1:])
    version = re.search(r"^project\(oru-cgi-applet VERSION (\S+)", (tree / "CMakeLists.txt").read_text(), re.M)[1]
    found = []
    for name, pattern in FOUND_IN.items():
        text = (tree / name).read_text(encoding="utf-8")
        # Of a changelog, the newest entry is the first.
        matches = [match for match in re.finditer(pattern, text, re.M)][:1 if "hangelog" in name.lower() else None]
        found += [(name, next(filter(None, match.groups()))) for match in matches] or [(name, "none")]
    for tool in ("oru-snapshot", "oru-probe"):
        run = subprocess.run([tools / tool, "--version"], capture_output=True, text=True, check=True)
        found.append((f"{tool} --version", run.stdout.removeprefix(f"{tool} ").strip()))
    wrong = [f"{where}: {other}, but CMakeLists.txt: {version}" for where, other in found if other != version]
    print("\n".join(wrong + [f"{len(found)} places, {len(wrong)} with another version than {version}"]))
    sys.exit(bool(wrong))


main()
