#!/usr/bin/python3
"""Runs the reader of reports on what the built tools print for random snapshots and command lines. Compares its
output with the model, the JSON Schema and the manual.

usage: read_reports.py BIN_DIR REDIRECT_ETC_ORU FIRST COUNT

Draws the seeds FIRST to FIRST + COUNT - 1 and runs the tools in BIN_DIR, or in $ORU_TEST_BIN_DIR if it is set."""

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
    """Returns what the reader must return for a section of the model, without failures that the reader finds itself."""
    title = TITLES.get(section.name, section.name)
    failure = None
    if section.text.startswith(("No ", "Failed ")):
        title, failure = None, section.text[:-1]
    elif broken := re.search(r"^Failed to (.|\n)*(?=\n)", section.text, re.M):
        failure = broken[0] if section.name in ("list-channels", "list-available-resolutions", "list-inputs") else None
    return {"title": title, "text": section.text, "document": section.document, "failure": failure}


def same(expected_value, got):
    """Returns whether the values are equal: 30 is 30.0, true is not 1, and a number that is too large is a text."""
    if isinstance(expected_value, dict) and isinstance(got, dict):
        return list(expected_value) == list(got) and all(same(expected_value[key], got[key]) for key in expected_value)
    if isinstance(expected_value, list) and isinstance(got, list):
        return len(expected_value) == len(got) and all(map(same, expected_value, got))
    if isinstance(expected_value, float) and math.isinf(expected_value):
        return isinstance(got, str) and float(got) == expected_value
    return expected_value == got and isinstance(expected_value, bool) == isinstance(got, bool)


def is_json(text):
    """Returns whether the document below a header, if there is one, is well-formed."""
    try:
        json.loads(text.partition(" -----\n\n")[2] or text, strict=False, parse_constant=int)
        return True
    except ValueError:
        return False


def errors_in(sections, expected_sections, stdout):
    """Yields the errors in the sections that the reader returned for a standard output."""
    if "".join(section["text"] for section in sections).encode("utf-8", "surrogateescape") != stdout:
        yield "the joined texts are not the output"
    if not expected_sections and stdout:  # the help
        expected_sections = [{"title": None, "text": stdout.decode(), "document": None,
                              "failure": "not a section of a report"}]
    if [section["text"] for section in sections] != [section["text"] for section in expected_sections]:
        yield f"split into {[section['text'] for section in sections]}"
        return
    for section, expected_section in zip(sections, expected_sections):
        if section["title"] != expected_section["title"]:
            yield f"the title of {section}"
        if not same(expected_section["document"], section["document"]):
            yield f"the document of {section}\n  expected: {expected_section['document']}"
        if expected_section["failure"] is not None:
            is_as_expected = section["failure"] == expected_section["failure"]
        else:
            # A section has a failure if and only if it is malformed.
            well_formed = section["title"] == "stream-max-stats" or is_json(section["text"])
            is_as_expected = (section["failure"] is None) == well_formed
        if not is_as_expected:
            yield f"the failure of {section}"


class Worker:
    def __init__(self, bin_dir, redirect):
        self.bench = Bench(bin_dir, redirect)
        self.reports = Reports(TREE)
        spec = importlib.util.spec_from_file_location("read_report", TREE / "examples/read_report.py")
        self.reader = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(self.reader)

    def read(self, seed, with_record):
        """Returns the errors on the files of a seed, the number of sections by title and state, and the keys that no
        section contains."""
        errors, counts = [], collections.Counter()
        for tool, arguments, expected_run, got in self.bench.runs(seed, with_record):
            # Converted to JSON and back, because the reader prints JSON.
            sections = json.loads(json.dumps(self.reader.read_report(got.stdout)))
            complaints = [*errors_in(sections, [expected(section) for section in expected_run.sections], got.stdout),
                          *self.reports.complaints(sections)]
            errors += [f"seed {seed}, {tool} {arguments}: {complaint}" for complaint in complaints]
            counts["reports"] += 1
            for section in sections:
                if section["title"] is None:
                    counts["without a title"] += 1
                elif section["document"] is None:
                    counts[section["title"] + ", no document"] += 1
                else:
                    counts[section["title"] + (", malformed" if section["failure"] else ", whole")] += 1
        return errors, counts, self.reports.never_found


def reader(paths, with_record):
    worker = Worker(*paths)
    return lambda seed: worker.read(seed, with_record)


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    paths = os.environ.get("ORU_TEST_BIN_DIR", sys.argv[1]), sys.argv[2]
    seeds = range(int(sys.argv[3]), int(sys.argv[3]) + int(sys.argv[4]))
    with_record = Bench(*paths).reads_records()
    wrong, counts, never_found = 0, collections.Counter(), set(Reports(TREE).keys)
    for errors, in_seed, not_found in processes.results(lambda: reader(paths, with_record), seeds):
        wrong += len(errors)
        counts += in_seed
        never_found &= not_found
        print("\n".join(errors), end="\n" if errors else "", flush=True)
    for path in sorted(never_found):
        wrong += 1
        print("in no report:", path)
    for what, count in sorted(counts.items()):
        print(f"{count:8} {what}")
    print(f"read_reports.py: {len(seeds)} snapshots, {wrong} complaints")
    sys.exit(wrong != 0)


if __name__ == "__main__":
    main()
