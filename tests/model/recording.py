"""A second implementation of `oru-snapshot record`.

    record(snapshot, about=None, redact=False, key=None, unreachable=None) -> Run(stdout, stderr, status)
    record_file(snapshot, about=None, redact=False, key=None) -> bytes

The first queries a service that answers from the snapshot, the second takes it as FILE. The arguments are those of
model.run(); `about` is a text for people, and `key` the bytes of a key for redaction. stdout is bytes; stderr is a
regular expression that matches any key, because the escapes of unusual characters in keys are not implemented here."""

import hashlib
import hmac
import json
import math
import re
from typing import NamedTuple

import model
from model import Failed, Map

NOW = (1795331672, "2026-11-22T07:14:32Z")  # the time of every recording, as $SOURCE_DATE_EPOCH and as text


class Run(NamedTuple):
    stdout: bytes
    stderr: bytes
    status: int


class Failure(str):
    """The message of a failure that replaces an answer."""


class Message(str):
    """The message of a failure that is a member of its own."""


# The layout ---------------------------------------------------------------------------------------
def quoted(text):
    return re.sub("[\x00-\x1f]", lambda found: f"\\u{ord(found[0]):04x}", model.compact(text))


def form(kind, value):
    """Returns the shortest form that has this kind when it is read."""
    def named(name=kind, inner=value):
        return f'{{ "{name}": {inner} }}'
    if kind == "uint32":
        return str(value)
    if kind == "int64":
        return named() if 0 <= value <= model.ALL_ONES else str(value)
    if kind == "boolean":
        return json.dumps(value)
    if kind == "pair":
        return str(list(value))
    if kind == "double" and not math.isfinite(value):
        return named(inner=f'"{"-" * (math.copysign(1, value) < 0)}{str(abs(value))}"')
    if kind == "double":
        digits = model.shortest(value)
        return digits if re.search("[.e]", digits) else digits + ".0"
    if kind == "string":
        try:
            value.encode()
            return quoted(value)
        except UnicodeEncodeError:
            return named("bytes", f'"{value.encode("utf-8", "surrogateescape").hex()}"')
    return named()


def written(value, level=0):
    if isinstance(value, Failure):
        return f'{{ "$error": {quoted(value)} }}'
    if isinstance(value, Message):
        return quoted(value)
    if isinstance(value, Map):
        members = {key: form(*typed) for key, typed in model.in_order(value).items()}
    elif isinstance(value, dict):
        members = {key: written(member, level + 1) for key, member in value.items()}
    elif isinstance(value, list) and any(isinstance(element, dict) for element in value):
        return lines("[]", [written(element, level + 1) for element in value], level)
    else:
        return "[" + ", ".join(map(written, value)) + "]" if isinstance(value, list) else str(value)
    return lines("{}", [f"{quoted(key)}: {member}" for key, member in members.items()], level)


def lines(brackets, items, level):
    opening, closing = brackets
    inner, outer = "\n" + "    " * (level + 1), "\n" + "    " * level
    return opening + ",".join(inner + item for item in items) + (outer if items else "") + closing


# Redaction ----------------------------------------------------------------------------------------
class Redaction:
    def __init__(self, key=None):
        self.clients, self.key = {}, key

    def client(self, identity):
        if self.key is not None:
            identity = identity.encode("utf-8", "surrogateescape")
            return "client-" + hmac.new(self.key, identity, hashlib.sha256).hexdigest()[:12]
        return self.clients.setdefault(identity, f"client-{len(self.clients) + 1}")

    def redacted(self, value):
        if isinstance(value, (Failure, Message)):
            return type(value)("redacted")
        if isinstance(value, Map):
            return Map(self.entry(key, *value[key]) for key in model.in_order(value))
        if isinstance(value, dict):
            return {key: self.redacted(member) for key, member in value.items()}
        return [self.redacted(element) for element in value] if isinstance(value, list) else value

    def entry(self, key, kind, value):
        if re.fullmatch(r"identity(\[[0-9]+\])?", key):
            if kind == "string":
                value = self.client(value)
            elif kind == "other" and '"' in value:
                value = '"redacted"'
        elif key.startswith("identity."):
            key = "identity." + self.client(key[len("identity."):])
        return key, (kind, value)


# The queries --------------------------------------------------------------------------------------
class Recorder(model.TOOLS["oru-serverreport-tool"]):
    def __init__(self, snapshot, unreachable):
        super().__init__("oru-snapshot", snapshot, None, unreachable)
        self.answered, self.failures, self.others = False, [], []

    def ask(self, query, *arguments):
        try:
            answer = query(*arguments)
            self.answered = True
            return answer
        except Failed as failed:
            self.failures.append(str(failed))
            return Failure(failed)

    def object(self, opened, maps):
        """Returns the answers of an object that has only maps."""
        return {name: self.ask(opened.map, name) for name in maps}

    def single(self, name, member):
        def open_it():
            found = self.of(name)
            if name not in self.recorded:
                raise Failed(f"{name} not recorded")
            return found
        opened = self.ask(open_it)
        return opened if isinstance(opened, Failure) else self.object(opened, [member])

    def channel(self, channel):
        return {"id": channel.id, "info": self.ask(channel.map, "info"), "crop": self.ask(channel.answer, "crop"),
                "crop_max": self.ask(channel.answer, "crop_max"),
                "resolutions": {"available": self.ask(channel.listed, "resolutions", "available")}}

    def list_of(self, query, each):
        objects = self.ask(query)
        return objects if isinstance(objects, Failure) else [each(element) for element in objects]

    def channels(self):
        answers = {"info": self.ask(self.map, "channel", "info")}
        everything = self.list_of(lambda: self.of("channel").objects(), self.channel)
        filtered = self.list_of(self.input_channels, self.channel)
        rest = iter(() if isinstance(everything, Failure) else map(written, everything))
        lists = isinstance(everything, list) and isinstance(filtered, list)
        if lists and all(written(channel) in rest for channel in filtered):
            ids = [channel["id"] for channel in filtered]
            return answers | {"all": [{name: answer for member in channel.items() for name, answer in (
                (member, ("properties", Map(key=("string", "input")))) if member == ("id", channel["id"])
                and channel["id"] in ids else (member,))} for channel in everything]}, filtered
        return answers | {"all": everything, "filtered": filtered}, filtered

    def inputs(self, channels, filtered):
        count = 0 if isinstance(channels["info"], Failure) else channels["info"].uint32("input.count", 1)
        named = {channel["info"].uint32("type.id", 1) for channel in filtered if isinstance(channel["info"], Map)} \
            if isinstance(filtered, list) else set()
        for number in sorted(named | set(range(1, count + 1))):
            try:
                opened = self.of("input").opened(number)
            except Failed as failed:
                if number in named:
                    yield {"id": number, "$error": Message(failed)}
                continue
            yield {"id": number, "info": self.ask(opened.map, "info"), "crop": self.ask(opened.answer, "crop"),
                   "resolution_unrotated": {"capture": self.ask(opened.listed, "resolution_unrotated", "capture")}}

    def output(self):
        opened = self.ask(lambda: self.of("output").opened(0))
        if isinstance(opened, Failure):
            return {"id": 0, "$error": Message(opened)}
        return {"id": 0} | self.object(opened, ["info", "settings"])

    def everything(self):
        answers = {"system": self.single("system", "caps"), "mode": self.single("mode", "info")}
        answers["stream"] = {name: self.ask(self.map, "stream", name) for name in ("debug", "quota", "limit")}
        answers["stream"]["all"] = self.list_of(lambda: self.of("stream").objects(), lambda stream: {
            "id": stream.id} | self.object(stream, ["info", "settings", "debug"]))
        answers["channel"], filtered = self.channels()
        answers["input"] = {"all": list(self.inputs(answers["channel"], filtered))}
        answers["output"] = {"all": [self.output()]}
        nicks = {}
        for nick, code in self.formats.items():
            nicks.setdefault(int(code), nick)
        answers["formats"] = {nicks[code]: code for code in sorted(nicks)}
        return answers


def notes(value, subject=""):
    """Returns the query and the key of each value whose kind has no form in a snapshot."""
    if isinstance(value, Map):
        return [(subject, key) for key, (kind, _) in model.in_order(value).items() if kind == "other"]
    if isinstance(value, dict):
        return [note for name, member in value.items()
                for note in notes(member, f"{subject} {name}" if name not in ("all", "filtered") else subject)]
    return [note for element in value if isinstance(element, dict)
            for note in notes(element, f"{subject} {element['id']}:")] if isinstance(value, list) else []


def printable(text):
    """Returns the text with the escapes that the failures of random snapshots need."""
    return re.sub("[\x00-\x1f\x7f]", lambda found: {"\n": "\\n", "\r": "\\r", "\t": "\\t"}.get(
        found[0], f"\\x{ord(found[0]):02x}"), text)


def heading(about, recorded):
    return {"version": 1} | ({} if about is None else {"about": Message(about)}) | (
        {} if recorded is None else {"recorded": Message(recorded)})


def record(snapshot, about=None, redact=False, key=None, unreachable=None):
    recorder = Recorder(snapshot, unreachable)
    answers = recorder.everything()
    if not recorder.answered:
        return Run(b"", re.escape(f"oru-snapshot: {printable(recorder.failures[0])}\n".encode("utf-8", "surrogateescape")), 1)
    messages = "".join(f"oru-snapshot: {subject[1:]}: '.*' is of an unknown kind: recorded as JSON\n"
                       for subject, _ in dict.fromkeys(notes(answers)))
    if redact:
        answers = Redaction(key).redacted(answers)
    recorded = json.loads(recorder.recorded.get("recorded", f'"{NOW[1]}"'))
    return Run((written(heading(about, recorded) | answers) + "\n").encode(), messages.encode(), 0)


# A FILE -------------------------------------------------------------------------------------------
def failure_in(value):
    return isinstance(value, model.Object) and model.text_of(value.get("$error", "")).startswith('"')


def numbers(value):
    return [numbers(element) for element in value] if isinstance(value, list) else int(value)


def map_in(value):
    return Failure(json.loads(value["$error"])) if failure_in(value) else Map(
        (key, model.typed(entry)) for key, entry in value.items())


def properties_in(value):
    return Map((key, model.typed(entry)) for key, entry in value.items())


def numbers_in(value):
    return Failure(json.loads(value["$error"])) if failure_in(value) else numbers(value)


def by_name(value):
    return Failure(json.loads(value["$error"])) if failure_in(value) else {
        name: numbers_in(answer) for name, answer in model.in_order(value).items()}


def object_in(value, forms):
    """Returns the members that are given, in the order of the forms."""
    if failure_in(value) and "$error" not in forms:
        return Failure(json.loads(value["$error"]))
    return {name: form_of(value[name]) for name, form_of in forms.items()
            if name in value and (name != "properties" or value[name])}


def list_of(forms):
    def read(value):
        return Failure(json.loads(value["$error"])) if failure_in(value) else [
            {"id": 0} | object_in(element, {"id": int} | forms) for element in value]
    return read


def message_in(value):
    return Message(json.loads(value))


CHANNELS = list_of({"properties": properties_in, "info": map_in, "crop": numbers_in, "crop_max": numbers_in,
                    "resolutions": by_name})
FORMS = {
    "system": {"caps": map_in}, "mode": {"info": map_in},
    "stream": {"debug": map_in, "quota": map_in, "limit": map_in,
               "all": list_of({"info": map_in, "settings": map_in, "debug": map_in})},
    "channel": {"info": map_in, "all": CHANNELS, "filtered": CHANNELS},
    "input": {"all": list_of({"$error": message_in, "info": map_in, "crop": numbers_in,
                              "resolution_unrotated": by_name})},
    "output": {"all": list_of({"$error": message_in, "info": map_in, "settings": map_in})}}


def record_file(snapshot, about=None, redact=False, key=None):
    document = model.read_json(snapshot)
    own_about, recorded = (name in document and json.loads(document[name]) for name in ("about", "recorded"))
    answers = {name: object_in(document[name], forms) for name, forms in FORMS.items() if name in document}
    answers = {name: answer for name, answer in answers.items() if answer != {} or name in ("system", "mode")}
    if "formats" in document:
        codes = {nick: int(code) for nick, code in document["formats"].items()}
        answers["formats"] = dict(sorted(codes.items(), key=lambda entry: entry[1]))
    if redact:
        answers = Redaction(key).redacted(answers)
    about = own_about if about is None and "about" in document else about
    return (written(heading(about, recorded or None) | answers) + "\n").encode()
