"""A second implementation of the two tools: what they print for a snapshot.

    run(argv, snapshot, record=None, unreachable=None) -> Run(stdout, stderr, status, sections)

argv[0] names the tool. `snapshot` is the text of a valid snapshot. If it cannot be read, `unreachable` is the message
with which every query fails. `record` is the record of earlier assertions: bytes, None if there is none, "directory"
or "unreadable". `sections` are those that printed something, each with the meaning of its document. All texts are
str, with surrogateescape for bytes that are not valid UTF-8."""

import collections
import contextlib
import decimal
import functools
import json
import math
import os
import re
from typing import NamedTuple

ALL_ONES = 0xFFFFFFFF
# How deep glaze indents: 8.4 only half as deep as it reads. scripts/test-glaze9 sets the value for 9.0.
PRETTIFIED_LEVELS = int(os.environ.get("ORU_TEST_PRETTIFIED_LEVELS", "128"))


# JSON with comments: snapshots and records of assertions -----------------------------------------
TOKEN = re.compile(r"""[ \t\r\n]+|//[^\n]*|/\*.*?\*/|[][{}:,]
    |"(?:[^"\\\x00-\x1f]|\\(?:["\\/bfnrt]|u[0-9A-Fa-f]{4}))*"
    |-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][+-]?[0-9]+)?|true|false|null""", re.S | re.X)


class Object(dict):
    """A JSON object: its members by name, and its text, which may contain a name twice."""
    def __init__(self, members):
        super().__init__((json.loads(name), value) for name, value in members)
        self.text = "{" + ",".join(f"{name}:{text_of(value)}" for name, value in members) + "}"


def text_of(value):
    if isinstance(value, list):
        return "[" + ",".join(map(text_of, value)) + "]"
    return value.text if isinstance(value, Object) else value


def tokens_of(text):
    """Returns the tokens of the text without white space and comments, or raises ValueError."""
    found = TOKEN.findall(text)
    if "".join(found) != text:
        raise ValueError("not a token")
    return [token for token in found if token[0] not in " \t\r\n/"]


@functools.lru_cache(maxsize=2)  # a snapshot and a record: each is read by several runs
def read_json(text):
    """Returns the value: an Object, a list, or the token of any other value. Raises ValueError."""
    tokens, depth, quoted = tokens_of(text), 0, []
    for token in tokens:
        depth += (token in ("{", "[")) - (token in ("}", "]"))
        if depth > 256 or (token[0] == '"' and re.search("[\ud800-\udfff]", json.loads(token))):
            raise ValueError("too deep, not valid UTF-8, or half a pair of surrogates")
        # Quoted, so that json.loads() returns each scalar as its token.
        quoted.append(token if token in ("{", "}", "[", "]", ":", ",") else json.dumps(token))
    return json.loads("".join(quoted), object_pairs_hook=Object)


# The video service, as recorded in the snapshot ---------------------------------------------------
class Failed(Exception):
    """A query that failed, with the message of its error."""


class Fatal(Exception):
    """An error that ends a run with status 1, with the text after the tool's name."""


def or_fatal(what, query, *arguments):
    """Returns the result of a query whose failure ends the run."""
    try:
        return query(*arguments)
    except Failed as failed:
        raise Fatal(f"Failed to get {what}: {failed}\n") from None


def or_none(query, *arguments):
    """Returns the result of a query, or None if it fails."""
    try:
        return query(*arguments)
    except Failed:
        return None


class Map(dict):
    """A dictionary from key to (kind, value). Getters treat values of other kinds as absent."""
    def getter(default, *kinds):
        def get(self, key, default=default):
            kind, value = self.get(key, (None, None))
            return value if kind in kinds else default
        return get
    uint32 = getter(0, "uint16", "uint32")
    int64 = getter(0, "uint16", "uint32", "int64")
    double = getter(0.0, "uint16", "uint32", "double")
    boolean = getter(False, "boolean")
    string = getter(None, "string")
    pair = getter((0, 0), "pair")


def typed(value):
    """Returns the kind and the value that a form in the snapshot represents."""
    if isinstance(value, list):
        return "pair", tuple(map(int, value))
    if isinstance(value, Object):
        (kind, inner), = value.items()
        return kind if kind != "bytes" else "string", {
            "bytes": lambda: bytes.fromhex(json.loads(inner)).decode("utf-8", "surrogateescape"),
            "other": lambda: text_of(inner), "double": lambda: float(inner.strip('"'))}.get(kind, lambda: int(inner))()
    if value in ("true", "false"):
        return "boolean", value == "true"
    if value[0] == '"':
        return "string", json.loads(value)
    if re.search("[.eE]", value):
        return "double", float(value)
    return "uint32" if 0 <= int(value) <= ALL_ONES else "int64", int(value)


class Recorded:
    """An object in the snapshot that contains answers: a class of the service or one of its objects."""

    def __init__(self, members, name):
        self.members, self.name, self.id = self.succeeded(members), name, int(members.get("id", 0))

    @staticmethod
    def succeeded(answer):
        if isinstance(answer, Object) and text_of(answer.get("$error", "")).startswith('"'):
            raise Failed(json.loads(answer["$error"]))
        return answer

    def answer(self, member, what=None):
        """Returns an answer, or fails with the recorded message or the client library's own."""
        if member not in self.members:
            raise Failed(f"{what or self.name + ' ' + member} not recorded")
        return self.succeeded(self.members[member])

    def map(self, member):
        return Map((key, typed(value)) for key, value in self.answer(member).items())

    def listed(self, member, entry):
        """Returns one entry of an answer that has several."""
        return Recorded(self.answer(member), self.name).answer(entry, f"{self.name} {member} '{entry}'")

    def objects(self, member="all"):
        found = self.answer(member, self.name + "s")
        return [Recorded(members, f"{self.name} {members.get('id', 0)}:") for members in found]

    def opened(self, number):
        """Returns the object of that number."""
        for members in self.answer("all", f"{self.name} {number}"):
            if int(members["id"]) == number:
                return Recorded(members, f"{self.name} {number}:")
        raise Failed(f"{self.name} {number} not recorded")


# Pieces of every report ---------------------------------------------------------------------------
HEADER = "----- {} -----\n\n"
ESCAPES = str.maketrans({"\b": "\\b", "\t": "\\t", "\n": "\\n", "\f": "\\f", "\r": "\\r", '"': '\\"', "\\": "\\\\"})


def g_print(text):
    """GLib prints in the character set that $CHARSET names, otherwise in ASCII, because the tools never set a locale.
    The compared runs do not set $CHARSET, so GLib prints a question mark for every character beyond ASCII."""
    return re.sub("[^\x00-\x7f]", "?", text)


class Raw(str):
    """JSON text that a record contains unchanged."""


def compact(value):
    """Returns the JSON of a record: an int as an integer, a float as a double, a str with seven characters escaped."""
    if isinstance(value, dict):
        return "{" + ",".join(f"{compact(key)}:{compact(member)}" for key, member in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ",".join(map(compact, value)) + "]"
    if isinstance(value, str):
        return value if isinstance(value, Raw) else '"' + value.translate(ESCAPES) + '"'
    return double(value) if isinstance(value, float) else str(value)


def from_json(text, otherwise):
    """Returns the value of a JSON text. NaN and Infinity are not JSON, although the json module accepts them."""
    try:
        return json.loads(text, strict=False, parse_constant=int)
    except (ValueError, RecursionError):
        return otherwise


def meant(value):
    """Returns the value that a reader gets from a record. A histogram that is not JSON is its text."""
    if isinstance(value, dict):
        return {key: meant(member) for key, member in value.items()}
    if isinstance(value, list):
        return [meant(element) for element in value]
    if isinstance(value, Raw):
        return from_json(value, value[1:-1])
    return None if isinstance(value, float) and not math.isfinite(value) else value


def double(value):
    """Returns 17 significant digits without trailing zeros, with an exponent if it is large or small."""
    if value == 0 or not math.isfinite(value):
        return "0" if value == 0 else "null"
    mantissa, exponent = f"{abs(value):.16e}".split("e")
    digits = len(mantissa.replace(".", "").rstrip("0"))
    if -4 <= int(exponent) < digits:
        return f"{value:.{digits - 1 - int(exponent)}f}"
    return re.sub("e(.)0*", r"e\1", f"{value:.{digits - 1}e}")


def in_order(members):
    """Returns the members in the order of all objects: by the bytes of their keys."""
    return dict(sorted(members.items(), key=lambda member: member[0].encode("utf-8", "surrogateescape")))


def hms(microseconds):
    seconds = abs(microseconds) // 1000000
    return f"{'-' * (microseconds < 0 < seconds)}{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}"


def native_json(values):
    """Returns a native map as the bus library writes it."""
    def text(value):
        return re.sub("[\x00-\x1f]", lambda found: f"\\u{ord(found[0]):04x}", compact(value))

    def member(key, kind, value):
        if kind == "double" and not math.isfinite(value):
            raise Fatal(f"Exception: the value of '{key}' is not finite: JSON has no form for it\n")
        forms = {"string": text, "double": shortest, "pair": lambda pair: compact(list(pair)), "boolean": json.dumps}
        return text(key) + ":" + forms.get(kind, str)(value)
    return "{" + ",".join(member(key, *value) for key, value in in_order(values).items()) + "}"


def as_meant(values):
    """Returns the value of that text."""
    forms = {"pair": list, "other": lambda text: meant(Raw(text))}
    return values and {key: forms[kind](value) if kind in forms else value
                       for key, (kind, value) in in_order(values).items()}


def shortest(value):
    """Returns the fewest digits that read as the same value, plain unless the form with an exponent is shorter."""
    _, digits, exponent = decimal.Decimal(repr(value)).normalize().as_tuple()
    return min(f"{value:.{max(0, -exponent)}f}", f"{value:.{len(digits) - 1}e}", key=len)


def prettified(text):
    """Indents by four spaces, with arrays on one line. The text ends after the bracket that opens the last level."""
    tokens, written, levels = tokens_of(text), "", []
    for before, token, after in zip([""] + tokens, tokens, tokens[1:] + [""]):
        if token in ("}", "]"):
            levels.pop()
        if token == "}" and before != "{":
            written += "\n" + "    " * len(levels)
        written += token
        if token in ("{", "["):
            levels.append(token)
            if len(levels) == PRETTIFIED_LEVELS:
                break
        if token == ":" or (token == "," and levels[-1] == "["):
            written += " "
        elif token == "," or (token == "{" and after != "}"):
            written += "\n" + "    " * len(levels)
    return written


def crop_record(kind, number, *figures):
    names = ("x", "y", "width", "height", "maxwidth", "maxheight")
    return {f"id/{number}": in_order({"crop": kind} | dict(zip(names, map(float, figures))))}


def on_one_line(label, record):
    return f'        {{ "{label}" : {compact(record)} }}'


def a_group_a_line(label, groups):
    lines = ",\n".join(f'                "{name}": {compact(group)}' for name, group in groups.items())
    return f'        {{\n            "{label}" : {{\n{lines}\n            }}\n        }}'


# The tools ----------------------------------------------------------------------------------------
class Tool:
    """The common part of both tools: the service and the command line."""
    ALWAYS, REFUSES_VALUES = (), False  # GLib ignores a value of a switch that takes none

    def __init__(self, name, snapshot, record, unreachable):
        self.name, self.record, self.unreachable, self.stderr = name, record, unreachable, ""
        self.recorded = {} if unreachable is not None else read_json(snapshot)
        self.formats = self.recorded.get("formats", {"h264": 0, "h265": 1, "jpeg": 2, "raw": 3, "av1": 10})

    def of(self, name):
        """Returns a class of the service."""
        if self.unreachable is not None:
            raise Failed(self.unreachable)
        return Recorded(self.recorded.get(name, {}), name)

    def map(self, name, member):
        return self.of(name).map(member)

    def help(self):
        names = {letter: name for letter, name, _, _ in self.SWITCHES}
        width = max(map(len, names.values())) + len("-x, --") + 5
        return (f"Usage:\n  {self.name} [OPTION\u2026] \"{{ 'key': <type value>, ... >}}\"\n\n"
                f"Tool for populating oru information to {self.FED}\n"
                f"Prints everything when no options are provided.\n\n\n"
                f"Help Options:\n  {'-h, --help':{width}}Show help options\n\nApplication Options:\n"
                + "".join(f"  {f'-{letter}, --{name}':{width}}{text}\n" for letter, name, text, _ in self.SWITCHES)
                + "\nExamples:\n" + "".join(f"  {self.name} --{names[letter]}\n" for letter in self.EXAMPLES) + "\n")

    def parse(self, arguments):
        """Returns the letters of the switches, or None for help. The first error or request for help decides."""
        letters, given = {name: letter for letter, name, _, _ in self.SWITCHES}, set()
        for argument in arguments[:arguments.index("--") if "--" in arguments else None]:
            name, equals, _ = argument[2:].partition("=")
            if argument in ("--help", "--help-all"):
                return None
            if argument.startswith("--") and name in letters:
                if equals and self.REFUSES_VALUES:
                    raise Fatal(self.REFUSAL.format(f"Option --{name} takes no value"))
                given.add(letters[name])
            elif argument.startswith("-"):
                for letter in argument[1:]:
                    if letter in "h?":
                        return None
                    if letter not in letters.values():
                        raise Fatal(self.REFUSAL.format(f"Unknown option {argument}"))
                    given.add(letter)
        return given


class FeederTool(Tool):
    def stream_max_stats(self):
        debug = or_none(self.map, "stream", "debug")
        keys = {"MaxBufferBytes": "capacity", "MaxEncodeStreams": "encoded.peers", "MaxRawStreams": "raw.peers"}
        figures = {name: -1 if debug is None else debug.uint32(f"global.{key}.peak") for name, key in keys.items()}
        figures["Version"] = 1
        yield "".join(f"{name}={figure}\n" for name, figure in figures.items())
        return figures

    def system_info(self):
        inputs, capture_modes, view_mode = 0, None, None
        info = or_none(self.map, "channel", "info")
        if info is not None:
            inputs, capture_modes = info.uint32("input.count", 1), {}
            for i in range(1, inputs + 1):
                with contextlib.suppress(Failed):
                    width, height = self.of("input").opened(i).listed("resolution_unrotated", "capture")
                    capture_modes[f"input{i}"] = "string", f"{width}x{height}"
        info = or_none(self.map, "mode", "info")
        if info is not None:
            view_mode = {}
            for key, value in in_order(info).items():
                if key != "view" and not key.startswith(("capture", "available")):
                    view_mode.setdefault(key.replace(".", "_"), value)
        tables = {"capturemodes": capture_modes, "viewmode": view_mode}
        texts = [f',"{name}":{"" if table is None else native_json(table)}' for name, table in tables.items()]
        text = prettified(f'{{"inputs":{inputs}{"".join(texts)}}}')
        yield text + "\n"
        if text[-1] == "}":
            return {"inputs": inputs} | {name: as_meant(table) for name, table in tables.items()}

    def identity_info(self):
        debug = or_none(self.map, "stream", "debug") or {}
        counts = {key[len("identity."):]: debug.uint32(key) for key in debug if key.startswith("identity.")}
        if counts:
            yield '{\n    "identities": {\n'
            yield ",\n".join(f"        {compact(name)}: {double(count)}" for name, count in in_order(counts).items())
            yield "\n    }\n}\n"
            return {"identities": in_order(counts)}

    FED, EXAMPLES, REFUSAL, REFUSES_VALUES = "tlm", "qis", "Option parsing failed: {}\n", True
    SWITCHES = (  # in the order in which the sections run
        ("q", "stream-max-stats", "Display quotas and limits for streams", stream_max_stats),
        ("s", "system-info", "Display relevant system info for oru", system_info),
        ("i", "identity-info", "Display the identity and number of times they started a stream", identity_info))


class ServerReportTool(Tool):
    def previous_assertions(self):
        if self.record is None:
            return
        if isinstance(self.record, str):
            self.stderr += "Failed reading '/etc/oru/dsp-assertion': file_open_failure\n"
        yield HEADER.format("Previous DSP assertions")
        text = self.record.decode("utf-8", "surrogateescape") if isinstance(self.record, bytes) else ""
        with contextlib.suppress(ValueError):  # other text, for example cut off by the crash, stays unchanged
            text = text_of(read_json(text))
        yield text + "\n\n"
        return from_json(text, None)

    def list_streams(self):
        streams = or_fatal("all streams", lambda: self.of("stream").objects())
        for stream in streams:
            stream.info, stream.settings = or_none(stream.map, "info"), or_none(stream.map, "settings")
            stream.debug = or_none(stream.map, "debug")
        listed = [stream for stream in streams
                  if stream.id != 0 and None not in (stream.info, stream.settings, stream.debug)
                  and stream.settings.uint32("format", ALL_ONES) != 6
                  and stream.settings.string("subformat") != "leanflow"]

        labels = [f"id/0x{stream.id:04x}" for stream in listed]
        document = {name: [(label, record(stream)) for label, stream in zip(labels, listed)] for name, record in (
            ("streams", self.stream_summary), ("streaminfo", self.stream_settings),
            ("streamstatistics", self.stream_statistics))}

        def elements(name, layout=on_one_line):
            """A comma follows each element whose label is not that of the last one."""
            return "".join(layout(label, record) + ("," if label != labels[-1] else "") + "\n"
                           for label, record in document[name])
        yield HEADER.format("Snapshot of all running streams") + "{\n"
        yield '    "streams" : [\n' + elements("streams") + "    ],\n\n"
        yield '    "streaminfo" : [\n' + elements("streaminfo", a_group_a_line) + "    ],\n\n"
        yield '    "streamstatistics" : [\n' + elements("streamstatistics") + "    ]\n}\n\n"
        return {name: [{label: meant(record)} for label, record in records] for name, records in document.items()}

    def format_and_resolution(self, stream):
        """Returns the code and the name of a stream's format, and its resolution."""
        code = stream.settings.uint32("format", ALL_ONES)
        if code == 3:
            name, size = stream.settings.string("subformat", "NV12"), stream.info
        else:
            name = next((nick for nick, known in self.formats.items() if int(known) == code), "n/a")
            size = stream.settings
        return code, name, f"{size.uint32('width')}x{size.uint32('height')}"

    def stream_summary(self, stream):
        _, name, resolution = self.format_and_resolution(stream)
        info = stream.info
        summary = {
            "identity": stream.settings.string("identity", "N/A"), "channel": info.uint32("channel"),
            "resolution": resolution, "format": name, "framerate": info.uint32("framerate"),
            "bitrate": info.uint32("bitrate"), "duration": hms(info.int64("statistics.duration")),
            "framecount": info.uint32("statistics.frame_count"), "failcount": info.uint32("statistics.failed_frames"),
            "peers": info.uint32("peers")}
        for key in (f"identity[{n}]" for n in range(8)):
            if info.string(key) is not None:
                summary[key] = info.string(key)
        return in_order(summary)

    def stream_settings(self, stream):
        """All numbers and flags are doubles, except the source, which is an integer."""
        code, name, resolution = self.format_and_resolution(stream)
        settings, info = stream.settings, stream.info
        profiles = {0: ("h264.profile", ("baseline", "main", "high")), 1: ("h265.profile", ("main", "main 10bit")),
                    10: ("av1.profile", ("main", "main 10bit"))}
        strengths = (0, 10, 20, 25, 30, 40, 50, 60, 70, 80, 90, 100)

        def figure(key, source=settings):
            return float(source.uint32(key))

        def word(key, words, other="none"):
            return dict(enumerate(words)).get(settings.uint32(key), other)
        basic = {"channel": figure("channel"), "resolution": resolution, "format": name,
                 "framerate": float(settings.double("framerate")), "rotation": figure("rotation", info)}
        if code not in (3, 8, 9):
            basic |= {"compression": figure("compression"), "mirror": float(settings.boolean("horizontal_flip")),
                      "monochrome": figure("monochrome", info)}
        if code not in (2, 3, 8, 9):
            basic |= {"signed": float(settings.boolean("sign"))}
        source = [key for key in ("input", "view", "warp") if key in info][:1]
        groups = {"basic": in_order(basic) | {key: info.uint32(key, 1) for key in source}}
        if code in profiles:
            groups["h26x"] = in_order({
                "bitrate": figure("bitrate"), "goplength": figure("gop_length"), "profile": word(*profiles[code]),
                "rcmode": word("rc.mode", ("cbr", "vbr", "mbr", "abr")),
                "rcprio": word("rc.prio", ("fps", "quality", "full fps"))})
        if code in profiles and settings.uint32("sqz.strength") != 0:
            groups["leanflow"] = in_order({
                "fps": figure("sqz.min_fps_num"), "fpsmode": word("sqz.fps_mode", ("fixed",), "dynamic"),
                "gopmode": word("sqz.gop_mode", ("fixed",), "dynamic"), "goplength": figure("sqz.max_gop_length"),
                "skipmode": word("sqz.skip_mode", ("drop",), "empty"),
                "strength": float(word("sqz.strength", strengths, 0))})
        return groups

    def stream_statistics(self, stream):
        info, debug = stream.info, stream.debug
        counters = {name: float(info.uint32("statistics." + key)) for name, key in (
            ("bitrate", "bitrate"), ("framecount", "frame_count"), ("actual-framerate", "framerate"),
            ("failcount", "failed_frames"), ("reclaimcount", "reclaim_count"))}
        if "tlm[0].client_us" in debug:
            counters["tlm[0].client_us"] = [float(half) for half in debug.pair("tlm[0].client_us")]
        durations, counts, histograms = {}, {}, {}
        for n in range(8):
            if debug.int64(f"tlm[{n}].duration", -1) >= 0:
                durations[f"tlm[{n}].duration"] = hms(debug.int64(f"tlm[{n}].duration"))
            histogram, count = debug.string(f"tlm[{n}].reclaim_histogram"), debug.uint32(f"tlm[{n}].reclaim_count")
            if histogram is not None and count != 0:
                counts[f"tlm[{n}].reclaim_count"] = count
                histograms[f"tlm[{n}].reclaim_histogram"] = Raw(f"[{histogram}]")
        return in_order(counters) | durations | counts | histograms

    def stream_quotas(self):
        def figures(values, **keys):
            return {name.replace("_", " "): str(values.uint32("global." + key)) for name, key in keys.items()}
        quota = or_fatal("quota", self.map, "stream", "quota")
        limit = or_fatal("limit", self.map, "stream", "limit")
        debug = self.some_debug()
        document = {"streammaximumquota": figures(
            quota, buffering="buffering.limit", hard="hard.limit", soft="soft.limit")}
        if debug is not None:
            document["streamcurrentquota"] = figures(debug, hard="capacity", soft="capacity")
        document["streammaximumlimits"] = figures(
            limit, encode="max.streams.limit.encoded", other="max.streams.limit.encoded")
        if debug is not None:
            document["streamcurrentlimits"] = figures(
                debug, jpeg="encoded.jpeg.peers", motion_encoded="encoded.peers", other="raw.peers")
        yield HEADER.format("Stream Quotas and Limits") + "{\n"
        yield "    ],\n\n".join(f'    "{name}" : [\n        {compact(record)}\n' for name, record in document.items())
        yield "    ]\n}\n\n"
        return {name: [record] for name, record in document.items()}

    def some_debug(self):
        """Returns the debug map of the first encoded stream, otherwise that of the first stream, otherwise None."""
        streams = or_none(self.of("stream").objects) or []
        encoded = [stream for stream in streams
                   if (or_none(stream.map, "settings") or Map()).uint32("format", ALL_ONES) in (0, 1, 2, 10, 11)]
        found = (or_none(stream.map, "debug") for stream in encoded[:1] + streams[:1])
        return next((debug for debug in found if debug is not None), None)

    def list_output(self):
        if not (or_none(self.map, "system", "caps") or Map()).boolean("output"):
            return
        output = or_fatal("output", self.of("output").opened, 0)
        settings = or_fatal("output settings", output.map, "settings")
        info = or_fatal("output info", output.map, "info")
        yes_or_no, enabled, running = ("No", "Yes"), settings.boolean("enabled"), info.boolean("running")
        rate = info.double("framerate")
        minus_nan = math.isnan(rate) and math.copysign(1, rate) < 0  # printf prints the sign of a NaN
        shown = {
            "enabled": yes_or_no[enabled], "running": yes_or_no[running], "vsdb": ("DVI", "HDMI")[info.boolean("vsdb")],
            "current VIC": str(settings.uint32("VIC")), "width": str(info.uint32("width")),
            "height": str(info.uint32("height")), "framerate": "-" * minus_nan + f"{rate:f}",
            "aspect ratio": info.string("aspect.ratio", "")}
        record = in_order(dict(list(shown.items())[:8 if enabled and running else 2 if enabled else 1]))
        yield HEADER.format("HDMI output") + f"    {compact(record)}\n\n"
        return record

    def list_channels(self):
        query, records = "all channels", []
        try:
            channels = self.of("channel").objects()
            if not channels:
                yield "No channels.\n"
                return
            yield HEADER.format("Snapshot of channel settings") + '{\n    "channels" : [\n'
            for channel in channels:
                yield ",\n" if channel is not channels[0] else ""
                query = "channel info"
                record = crop_record("No", channel.id)
                if channel.map("info").boolean("crop.possible"):
                    crop, largest = or_none(channel.answer, "crop"), or_none(channel.answer, "crop_max")
                    record = crop_record("Yes", channel.id, *(crop + largest if crop and largest else [0] * 6))
                records.append(record)
                yield f"        {compact(record)}"
            yield "\n    ]\n}\n"
            return {"channels": records}
        except Failed as failed:
            yield g_print(f"Failed to get {query}: {failed}\n")

    def list_available_resolutions(self):
        query, records = "Failed to get all channels", []
        try:
            channels = self.of("channel").objects()
            if not channels:
                yield "No channels.\n"
                return
            yield HEADER.format("Available resolutions") + '{\n    "available_resolutions" : [\n'
            query = "\nFailed to get resolutions"
            for channel in channels:
                yield f'        {{"channel":"{channel.id}",'
                sizes = ["{}x{}".format(*size) for size in channel.listed("resolutions", "available")]
                text = ",".join(sizes) + ("," if len(sizes) == 1 else "")
                records.append({"channel": str(channel.id), "resolutions": text})
                yield f'"resolutions":"{text}"}}'
                yield ",\n" if channel is not channels[-1] else "\n"
            yield "    ]\n}\n"
            return {"available_resolutions": records}
        except Failed as failed:
            yield g_print(f"{query}: {failed}\n")

    def input_channels(self):
        """Returns the channels that match the filter key = input."""
        channels = self.of("channel")
        if "filtered" in channels.members:
            return channels.objects("filtered")
        return [channel for channel in channels.objects()
                if typed(channel.members.get("properties", {}).get("key", "0")) == ("string", "input")]

    def list_inputs(self):
        query, records = "inputs", []
        try:
            channels = self.input_channels()
            if not channels:
                yield "No inputs.\n"
                return
            yield HEADER.format("Snapshot of input settings") + '{\n    "inputs" : [\n'
            for channel in channels:
                query = "channel info"
                number = channel.map("info").uint32("type.id", 1)
                query = f"input {number}"
                source = self.of("input").opened(number)
                query = "input info"
                info = source.map("info")
                record = crop_record("No", number)
                if info.boolean("crop.possible"):
                    crop = or_none(source.answer, "crop")
                    if crop is None:
                        continue
                    record = crop_record("Yes", number, *crop, *info.pair("crop.max", (ALL_ONES, ALL_ONES)))
                records.append(record)
                yield f"        {compact(record)}" + (",\n" if channel is not channels[-1] else "\n")
            yield "    ]\n}\n"
            return {"inputs": records}
        except Failed as failed:
            yield g_print(f"Failed to get {query}: {failed}\n")

    FED, EXAMPLES, REFUSAL = "the serverreport", "lcoqari", "Failed t parse options: {}."
    ALWAYS = (("previous-assertions", previous_assertions),)
    SWITCHES = (
        ("l", "list-streams", "List existing streams", list_streams),
        ("q", "stream-quotas", "Display quotas and limits for streams", stream_quotas),
        ("o", "list-output", "Display information about HDMI", list_output),
        ("c", "list-channels", "List existing channels", list_channels),
        ("r", "list-resolutions", "List resolutions for encoded formats and YUV", lambda self: ()),  # prints nothing
        ("a", "list-available-resolutions", "List available resolutions", list_available_resolutions),
        ("i", "list-inputs", "List existing inputs", list_inputs))


TOOLS = {"oru-tlm-tool": FeederTool, "oru-serverreport-tool": ServerReportTool}
Run = collections.namedtuple("Run", "stdout stderr status sections")


class Section(NamedTuple):
    name: str  # of its switch, or "previous-assertions"
    text: str
    document: object  # None if the document ends early or there is only a line of text


def printed(name, pieces):
    """Returns the Section from what a section's function yields and returns."""
    pieces, text = iter(pieces), ""
    while True:
        try:
            text += next(pieces)
        except StopIteration as end:
            return Section(name, text, end.value)


@functools.lru_cache(maxsize=4)  # of a seed: the tools of several folders are compared with each
def run(argv, snapshot, record=None, unreachable=None):
    name, sections, status = argv[0].rpartition("/")[2], [], 0
    if name not in TOOLS:
        return Run(b"", b"oru-cgi-applet: Invoke 'oru-tlm-tool' or 'oru-serverreport-tool'!\n", 1, [])
    tool = TOOLS[name](name, snapshot, record, unreachable)
    try:
        given = tool.parse(argv[1:])
        if given is None:
            return Run(g_print(tool.help()).encode(), b"", 0, [])
        chosen = [(name, section) for letter, name, _, section in tool.SWITCHES if letter in given]
        for name, section in (*tool.ALWAYS, *chosen):
            sections.append(printed(name, section(tool)))
    except Fatal as failure:
        tool.stderr, status = tool.stderr + f"{tool.name}: {failure}", 1
    stdout = "".join(section.text for section in sections)
    return Run(*(text.encode("utf-8", "surrogateescape") for text in (stdout, tool.stderr)), status,
               [section for section in sections if section.text])
