"""The reader of reports, examples/read_report.py, compared with the model, the JSON Schema and the manual."""

import collections
import importlib.util
import json
import math
import pathlib
import re
import sys

TREE = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(TREE / "tests/install"))
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


class Reader:
    def __init__(self):
        self.counts = collections.Counter()
        self.seen = set()
        self.reports = Reports(TREE)
        spec = importlib.util.spec_from_file_location("read_report", TREE / "examples/read_report.py")
        self.module = importlib.util.module_from_spec(spec)
        spec.loader.exec_module(self.module)

    def complaints(self, expected_sections, stdout):
        """Returns a text for each error in what the reader returns for a report, and counts its sections."""
        # Converted to JSON and back, because the reader prints JSON.
        texts = [json.dumps(section) for section in self.module.read_report(stdout)]
        sections = [json.loads(text) for text in texts]
        # Several reports of a seed have the same sections.
        new = [section for section, text in zip(sections, texts) if text not in self.seen]
        self.seen.update(texts)
        self.counts["reports"] += 1
        for section in sections:
            if section["title"] is None:
                self.counts["without a title"] += 1
            elif section["document"] is None:
                self.counts[section["title"] + ", no document"] += 1
            else:
                self.counts[section["title"] + (", malformed" if section["failure"] else ", whole")] += 1
        return [*errors_in(sections, [expected(section) for section in expected_sections], stdout),
                *self.reports.complaints(new)]

    def take_counts(self):
        """Returns the numbers of sections by title and state since the last call."""
        counts, self.counts = self.counts, collections.Counter()
        return counts
