#!/usr/bin/python3
"""Compares random snapshots by `oru-snapshot diff` with the same after random edits, which this program makes.

usage: compare_pairs.py BIN_DIR FIRST COUNT

Draws the seeds FIRST to FIRST + COUNT - 1 and runs the oru-snapshot in BIN_DIR, or in $ORU_TEST_BIN_DIR if it is set.
`diff --all` must name each difference, and `diff` those that count by the table of moving keys, and neither anything
else. There is no difference between a snapshot and the same in another order and notation, or the same device some
hours later and as healthy, or recordings of both that are redacted with one key. The snapshots of a pair that is
compared wrongly are kept in the working directory."""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
from fractions import Fraction

import generator
import model
import processes
from model import Raw

MAPS = ("caps", "info", "debug", "quota", "limit", "settings", "properties")
NAMED = ("resolutions", "resolution_unrotated")
PLAIN_KEY = re.compile(r"[a-z0-9_.\[\]]+")  # the others have escapes or may be cut


# Snapshots that can be edited ---------------------------------------------------------------------
def editable(value):
    """Returns the value with dict in place of model.Object, whose text does not follow an edit."""
    if isinstance(value, dict):
        return {name: editable(member) for name, member in value.items()}
    return [editable(element) for element in value] if isinstance(value, list) else Raw(value)


def as_object(value):
    return model.Object([(json.dumps(name), as_object(member)) for name, member in value.items()]) \
        if isinstance(value, dict) else list(map(as_object, value)) if isinstance(value, list) else str(value)


def typed(value):
    kind, content = model.typed(as_object(value))
    return kind, repr(content) if kind == "double" else content  # the sign of zero and NaN counts


def fails(answer):
    return isinstance(answer, dict) and isinstance(answer.get("$error"), str) and answer["$error"].startswith('"')


def objects(document):
    """Yields the name that diff gives to each object, and the object. Those of the service have one name."""
    for name, content in document.items():
        if name in ("system", "mode"):
            yield "service", f"{name} ", content
        elif isinstance(content, dict) and name in ("stream", "channel", "input", "output"):
            yield "service", f"{name} ", {part: answer for part, answer in content.items()
                                          if part not in ("all", "filtered")}
            for part, mark in ("all", ""), ("filtered", " (of inputs)"):
                elements = content.get(part, [])
                for element in elements if isinstance(elements, list) else []:
                    number = int(element.get("id", 0))
                    if name != "stream" or number != 0:  # without an id they have no name of their own
                        yield f"{name} {number}{mark}", "", element


def answers(document):
    """Returns what the snapshot says: {("stream 2", "info"): ANSWER}, without the failures of answers left out."""
    return {(owner, prefix + part): answer for owner, prefix, members in objects(document)
            for part, answer in members.items() if part not in ("id", "$error") and (part != "properties" or answer)}


# The rules ----------------------------------------------------------------------------------------
FAILURES = ("statistics.failed_frames", "statistics.reclaim_count")
RUN_TIME = re.compile(r"statistics\.duration|tlm\[.*\]\.duration|uptime", re.S)
AMOUNT = re.compile(r"statistics\.framerate|global\.(capacity|encoded\.peers|encoded\.jpeg\.peers|raw\.peers)")
FREE = re.compile(r"statistics\.frame_count|identity\..*|tlm\[.*\]\.(client_us|reclaim_count|reclaim_histogram)"
                  r"|global\..*\.peak", re.S)


def number(value):
    """Returns the number that a typed value contains, or None."""
    kind, content = value or (None, None)
    if kind == "double":
        return None if re.search("nan|inf", content) else Fraction(float(content))
    return Fraction(content) if kind in ("uint16", "uint32", "int64") else None


def rate(count, time):
    if time is None or count < 0 or time < 0 or (time == 0 and count > 0):
        return None
    return Fraction(0) if count == 0 else count / time


def counts(key, old, new, old_map, new_map):
    """Returns whether the difference between two typed values, of which one may be None, says that something is wrong.
    The maps are those that contain them."""
    before, after = number(old), number(new)
    are_figures = before is not None and after is not None and old[0] == new[0]
    if key in FAILURES and (are_figures or (old is None and after is not None) or (new is None and before is not None)):
        times = [number(each.get("statistics.duration")) for each in (old_map, new_map)]
        before, after = before or Fraction(0), after or Fraction(0)
        slow, fast = rate(before, times[0]), rate(after, times[1])
        if slow is None or fast is None:
            return False
        if times[1] > times[0] and after > before:
            fast = (after - before) / (times[1] - times[0])
        return fast > slow * Fraction(11, 10) and fast * 60000000 >= 1
    if RUN_TIME.fullmatch(key):
        return before is not None and after is not None and after < before
    if FREE.fullmatch(key):
        return False
    if are_figures and AMOUNT.fullmatch(key):
        return abs(after - before) * 10 > abs(before)
    if are_figures and key == "statistics.bitrate":
        return before != after and (after * 2 <= before or after >= before * 2)
    return old != new


def expected_lines(old, new):
    """Returns what diff must name, by default and with --all: {("stream 2", "info  peers")}."""
    lines, every = set(), set()
    before, after = answers(old), answers(new)
    for place in {*before, *after}:
        owner, part = place
        missing = {} if part == "properties" else None
        pair = before.get(place, missing), after.get(place, missing)
        if part.split()[-1] in MAPS and all(answer is not None and not fails(answer) for answer in pair):
            maps = [{key: typed(value) for key, value in answer.items()} for answer in pair]
            for key in {*maps[0], *maps[1]}:
                values = maps[0].get(key), maps[1].get(key)
                line = owner, f"{part}  {key}"
                is_counted = counts(key, *values, *maps)
                lines |= {line} if is_counted else set()
                every |= {line} if is_counted or values[0] != values[1] else set()
        elif part in NAMED and all(answer is not None and not fails(answer) for answer in pair):
            changed = {(owner, f"{part}  {name}") for name in {*pair[0], *pair[1]}
                       if as_object(pair[0].get(name)) != as_object(pair[1].get(name))}
            lines, every = lines | changed, every | changed
        elif json.dumps(pair[0]) != json.dumps(pair[1]):
            lines, every = lines | {(owner, part)}, every | {(owner, part)}
    return lines, every


# Edits --------------------------------------------------------------------------------------------
def other_value(draw, value):
    while True:
        new = editable(model.read_json(generator.Writer(draw).write(draw.any_value())))
        if typed(new) != typed(value) if value is not None else True:
            return new


def edit_map(draw, members):
    keys = [key for key in members if PLAIN_KEY.fullmatch(key) and len(key) < 50]
    action = draw.choice(("change", "change", "nudge", "remove", "add"))
    if action == "add" or not keys:
        members[draw.choice(("added.key", "statistics.failed_frames", "statistics.duration", "global.capacity",
                             "identity.added", "peers", "uptime"))] = other_value(draw, None)
        return
    key = draw.choice(keys)
    if action == "remove":
        del members[key]
    elif action == "nudge" and isinstance(members[key], str) and members[key].isdigit():
        whole = int(members[key])
        members[key] = Raw(min(whole + draw.choice((1, whole // 20, whole // 5, whole, 1000000)), 2**32 - 1))
    else:
        members[key] = other_value(draw, members[key])


def edit(draw, document):
    """Makes one edit of an answer. An answer that is missing or fails keeps it or gets another message."""
    places = [(members, part) for _, _, members in objects(document) for part in members if part not in ("id", "$error")]
    lists = {id(members) for _, prefix, members in objects(document) if prefix}
    if not places:
        return
    members, part = draw.choice(places)
    answer = members[part]
    if fails(answer):
        answer["$error"] = Raw(json.dumps(f"another message {draw.randrange(9)}"))
    elif part != "properties" and id(members) not in lists and draw.chance(0.1):
        members[part] = {"$error": Raw('"now it fails"')}
    elif part in MAPS:
        edit_map(draw, answer)
    elif part in NAMED and answer:
        name = draw.choice(list(answer))
        answer[name] = {"$error": Raw('"now this fails"')}
    elif part in ("crop", "crop_max"):
        answer[draw.randrange(len(answer))] = Raw(draw.randrange(2**32))


def edit_lists(draw, document):
    """Removes or adds objects. Returns the lines that say so."""
    lines = set()
    for name in ("stream", "channel", "input", "output"):
        elements = document.get(name, {}).get("all")
        if not isinstance(elements, list) or not draw.chance(0.3):
            continue
        found = [element for element in elements if int(element.get("id", 0)) != 0 and len(element) > 1]
        # A stream that were added as well could be its partner.
        if found and draw.chance(0.5):
            gone = draw.choice(found)
            elements.remove(gone)
            lines.add((f"{name} {gone['id']}", "only in OLD"))
        elif all(element.get("id") != "777" for element in elements):
            elements.insert(draw.randrange(len(elements) + 1), {"id": Raw("777"), "info": {"new": Raw("1")}})
            lines.add((f"{name} 777", "only in NEW"))
    return lines


# The same again -----------------------------------------------------------------------------------
def other_notation(draw, value):
    """Returns another notation of a map's value."""
    kind, content = typed(value)
    if isinstance(value, str) and kind == "uint32":
        return draw.choice((value, {"uint32": value}))
    if isinstance(value, str) and kind == "int64":
        return {"int64": value}
    if isinstance(value, str) and kind == "double":
        return draw.choice((value, {"double": value}))
    if isinstance(value, str) and kind == "string":
        return {"bytes": Raw(json.dumps(content.encode("utf-8", "surrogateescape").hex()))}
    return value


def shuffled(draw, value, name=""):
    """Returns the same with members, lists and notations in another way."""
    if isinstance(value, dict) and name in MAPS and not (fails(value) and name != "properties"):
        return {key: other_notation(draw, value[key]) for key in draw.sample(list(value), len(value))}
    if isinstance(value, dict):
        members = {key: shuffled(draw, value[key], key) for key in draw.sample(list(value), len(value))}
        if members.get("id") == "0" and name in ("stream", "channel"):
            del members["id"]
        return members
    if isinstance(value, list) and any(isinstance(element, dict) for element in value):
        return [shuffled(draw, element) for element in draw.sample(value, len(value))]
    return value


def later(draw, document):
    """Ages a document in place by some hours, in which the device does as well as before."""
    hours = draw.randrange(1, 100) * 3600 * 10**6
    for (_, part), answer in answers(document).items():
        if part.split()[-1] not in MAPS or fails(answer) or part == "properties":
            continue
        time = typed(answer["statistics.duration"]) if "statistics.duration" in answer else None
        time = number(time) if time and time[0] != "double" else None
        time = time if time and 0 < time < 2**63 - hours else None
        for key, value in answer.items():
            kind, content = typed(value)
            old = number((kind, content))
            if old is None or kind == "double":
                continue
            if RUN_TIME.fullmatch(key):
                new = old + hours
            elif key in FAILURES:
                new = old + (old * hours // time if time and old > 0 else 0)
            elif AMOUNT.fullmatch(key):
                new = old + draw.randrange(-1, 2) * (abs(old) // 11)
            elif key == "statistics.bitrate":
                new = max(old * draw.randrange(60, 190) // 100, 0) if old > 9 else old
            elif FREE.fullmatch(key):
                new = old + draw.randrange(1000)
            else:
                continue
            kind = "int64" if RUN_TIME.fullmatch(key) else kind  # a run time may outgrow its kind
            highest = {"uint16": 2**16, "uint32": 2**32, "int64": 2**63}[kind] - 1
            answer[key] = {kind: Raw(int(new))} if 0 <= new <= highest else value


# The comparison -----------------------------------------------------------------------------------
class Bench:
    def __init__(self, bin_dir):
        self.program = os.path.join(os.path.abspath(bin_dir), "oru-snapshot")
        self.scratch = tempfile.TemporaryDirectory(prefix="oru-pairs-")
        self.folder = pathlib.Path(self.scratch.name)
        (self.folder / "key").write_bytes(bytes(range(32)))

    def write(self, name, text):
        path = self.folder / name
        path.write_bytes(text.encode("utf-8", "surrogateescape"))
        return path

    def run(self, *arguments):
        return subprocess.run([self.program, *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True,
                              timeout=120)

    def named(self, *arguments):
        """Returns the status of a comparison and what it names."""
        got = self.run("diff", *arguments)
        owner, lines = None, set()
        for line in got.stdout.decode().splitlines()[2:]:
            if found := re.fullmatch(r"((?:stream|channel|input|output) \d+)(?: \(.*\))?  (only in (?:OLD|NEW)).*", line):
                lines.add((found[1], found[2]))
            elif line.startswith("    "):
                columns = line[4:].split("  ")
                part = columns[0] if columns[0].split()[-1] in (*MAPS, *NAMED) and not re.match(
                    r"fails|\d+ keys?|\d+ answers? ->", columns[1]) else None
                lines.add((owner, f"{columns[0]}  {columns[1]}" if part else columns[0]))
            elif line != "no difference":
                owner = re.match(r"service|(stream|channel|input|output) \d+( \(of inputs\))?", line)[0]
        return got.returncode, lines, got

    def complaints(self, seed):
        text = generator.snapshot(seed, generator.KINDS[seed % 3])
        old = editable(model.read_json(text))
        draw = generator.Draw(f"pair {seed}", "whole")
        writer = generator.Writer(draw)
        first = self.write("old.json", text)

        new = editable(model.read_json(text))
        for _ in range(draw.randrange(1, 9)):
            edit(draw, new)
        lines, every = expected_lines(old, new)
        only = edit_lists(draw, new)
        removed = {owner for owner, _ in only}
        lines, every = ({line for line in each if line[0] not in removed} | only for each in (lines, every))
        second = self.write("new.json", writer.write(new))
        for arguments, expected in ((), lines), (("--all",), every):
            status, named, got = self.named(*arguments, first, second)
            named = {line for line in named if line[0] != "stream 0"}
            if (status, named) != (1 if expected else 0, expected) or got.stderr:
                yield f"edits {arguments}: {status}, missing {expected - named}, wrong {named - expected}, {got.stderr}"

        same = self.write("new.json", writer.write(shuffled(draw, old)))
        status, named, got = self.named("--all", first, same)
        if status != 0:
            yield f"another order: {status}, {named}, {got.stderr}"

        aged = editable(model.read_json(text))
        later(draw, aged)
        second = self.write("new.json", writer.write(aged))
        redacted = [self.write(f"redacted-{path.name}", self.run(
            "record", f"--redact-key={self.folder / 'key'}", path).stdout.decode("utf-8", "surrogateescape"))
                    for path in (first, second)]
        for what, pair in ("later", (first, second)), ("later, redacted", redacted):
            status, named, got = self.named(*pair)
            if status != 0:
                yield f"{what}: {status}, {named}, {got.stderr}"

    def compare(self, seed):
        found = []
        for complaint in self.complaints(seed):
            found.append(f"seed {seed}: {complaint}")
            for name in ("old.json", "new.json"):
                pathlib.Path(f"pair-{seed}-{len(found)}-{name}").write_bytes((self.folder / name).read_bytes())
        return found


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    bin_dir = os.environ.get("ORU_TEST_BIN_DIR", sys.argv[1])
    first, count = map(int, sys.argv[2:])
    wrong = 0
    for found in processes.results(lambda: Bench(bin_dir).compare, range(first, first + count)):
        wrong += found != []
        print("\n".join(found), end="\n" if found else "", flush=True)
    print(f"compare_pairs.py: {count} pairs, {wrong} are compared wrongly")
    sys.exit(wrong != 0)


if __name__ == "__main__":
    main()
