#!/usr/bin/python3
"""Has the reader of reports read what the built tools print for random snapshots and command lines, and compares
what it makes of that with what the model meant, with the JSON Schema and with the manual.

usage: read_reports.py BIN_DIR REDIRECT_ETC_ORU FIRST COUNT

Seeds FIRST to FIRST + COUNT - 1. $ORU_TEST_BIN_DIR takes the place of BIN_DIR."""

import collections
import importlib.util
import json
import math
import os
import pathlib
import re
import sys

TREE = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(TREE / "tests/install"))
import processes  # noqa: E402
from compare import Bench  # noqa: E402
from report_keys import Reports  # noqa: E402

TITLES = {
    "previous-assertions": "Previous DSP assertions",
    "list-streams": "Snapshot of all running streams",
    "stream-quotas": "Stream Quotas and Limits",
    "list-output": "HDMI output",
    "list-channels": "Snapshot of channel settings",
    "list-available-resolutions": "Available resolutions",
    "list-inputs": "Snapshot of input settings",
}


def expected(section):
    """Returns what the reader makes of a section of the model's, but for the words of a failure of its own."""
    title = TITLES.get(section.name, section.name)
    failure = None
    if section.text.startswith(("No ", "Failed ")):
        title, failure = None, section.text[:-1]
    elif broken := re.search(r"^Failed to (.|\n)*(?=\n)", section.text, re.M):
        failure = broken[0] if section.name in ("list-channels", "list-available-resolutions", "list-inputs") else None
    return {"title": title, "text": section.text, "document": section.document, "failure": failure}


def same(wanted, got):
    """Returns whether what was read is what was meant. 30 is 30.0, true is not 1, and what is too large is a text."""
    if isinstance(wanted, dict) and isinstance(got, dict):
        return list(wanted) == list(got) and all(same(wanted[key], got[key]) for key in wanted)
    if isinstance(wanted, list) and isinstance(got, list):
        return len(wanted) == len(got) and all(map(same, wanted, got))
    if isinstance(wanted, float) and math.isinf(wanted):
        return isinstance(got, str) and float(got) == wanted
    return wanted == got and isinstance(wanted, bool) == isinstance(got, bool)


def is_json(text):
    """Returns whether the document below a header, if there is one, is well-formed."""
    try:
        json.loads(text.partition(" -----\n\n")[2] or text, strict=False, parse_constant=int)
        return True
    except ValueError:
        return False


def wrong_with(sections, wanted, stdout):
    """Yields what is wrong with what was read from a standard output, of which the model says what it holds."""
    if "".join(section["text"] for section in sections).encode("utf-8", "surrogateescape") != stdout:
        yield "the texts joined are not what was printed"
    if not wanted and stdout:  # the help
        wanted = [{"title": None, "text": stdout.decode(), "document": None, "failure": "not a section of a report"}]
    if [section["text"] for section in sections] != [section["text"] for section in wanted]:
        yield f"split into {[section['text'] for section in sections]}"
        return
    for section, meant in zip(sections, wanted):
        if section["title"] != meant["title"]:
            yield f"the title of {section}"
        if not same(meant["document"], section["document"]):
            yield f"the document of {section}\n  meant: {meant['document']}"
        if meant["failure"] is not None:
            as_meant = section["failure"] == meant["failure"]
        else:
            # What is malformed says so, be it whole or not; nothing else has a failure.
            well_formed = section["title"] == "stream-max-stats" or is_json(section["text"])
            as_meant = (section["failure"] is None) == well_formed
        if not as_meant:
            yield f"the failure of {section}"


class Worker:
    def __init__(self, bin_dir, redirect):
        self.bench = Bench(bin_dir, redirect)
        self.reports = Reports(TREE)
        spec = importlib.util.spec_from_file_location("read_report", TREE / "examples/read_report.py")
        self.reader = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(self.reader)

    def read(self, seed, with_record):
        """Returns a text for each thing that is wrong with what is read of what a seed draws, how many sections were
        read, by title and state, and the keys that were in none."""
        told, counts = [], collections.Counter()
        for tool, arguments, wanted, got in self.bench.runs(seed, with_record):
            # As it is printed, not as Python holds it.
            sections = json.loads(json.dumps(self.reader.read_report(got.stdout)))
            complaints = [*wrong_with(sections, [expected(section) for section in wanted.sections], got.stdout),
                          *self.reports.complaints(sections)]
            told += [f"seed {seed}, {tool} {arguments}: {complaint}" for complaint in complaints]
            counts["reports"] += 1
            for section in sections:
                if section["title"] is None:
                    counts["without a title"] += 1
                elif section["document"] is None:
                    counts[section["title"] + ", no document"] += 1
                else:
                    counts[section["title"] + (", malformed" if section["failure"] else ", whole")] += 1
        return told, counts, self.reports.never_found


def reading(where, with_record):
    worker = Worker(*where)
    return lambda seed: worker.read(seed, with_record)


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    where = os.environ.get("ORU_TEST_BIN_DIR", sys.argv[1]), sys.argv[2]
    seeds = range(int(sys.argv[3]), int(sys.argv[3]) + int(sys.argv[4]))
    with_record = Bench(*where).records_are_found()
    wrong, counts, never_found = 0, collections.Counter(), set(Reports(TREE).keys)
    for told, in_seed, not_found in processes.results(lambda: reading(where, with_record), seeds):
        wrong += len(told)
        counts += in_seed
        never_found &= not_found
        print("\n".join(told), end="\n" if told else "", flush=True)
    for path in sorted(never_found):
        wrong += 1
        print("in no report:", path)
    for what, count in sorted(counts.items()):
        print(f"{count:8} {what}")
    print(f"read_reports.py: {len(seeds)} snapshots, {wrong} complaints")
    sys.exit(wrong != 0)


if __name__ == "__main__":
    main()
