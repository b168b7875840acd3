"""The two tools, stated a second time: what they print for a snapshot.

    run(argv, snapshot, record=None, unreachable=None) -> Run(stdout, stderr, status, sections)

argv[0] names the tool. `snapshot` is the text of a valid snapshot; where none can be read,
`unreachable` is the message with which every query fails. `record` is the record of earlier
assertions: bytes, None where there is none, or "directory" or "unreadable". `sections` holds what
was printed, section by section: Section(name, text), with the JSON `document` in it.

Text is str throughout; bytes that are no UTF-8 are in it as surrogateescape has them."""

import contextlib
import decimal
import json
import math
import re
from typing import NamedTuple

ALL_ONES = 0xFFFFFFFF


# JSON with comments: snapshots and records of assertions -----------------------------------------

TOKEN = re.compile(r"""(?P<skipped>[ \t\r\n]+|//[^\n]*|/\*.*?\*/)
    |[][{}:,]|"(?:[^"\\\x00-\x1f]|\\(?:["\\/bfnrt]|u[0-9A-Fa-f]{4}))*"
    |-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][+-]?[0-9]+)?|true|false|null""", re.S | re.X)


class Node(NamedTuple):
    """A JSON value: what it holds, and its text without white space and comments."""
    value: object  # a dict, a list or a str; None for a number and a literal: their text tells
    text: str


NOTHING = Node({}, "{}")


def read_json(text):
    """Returns the Node, or raises ValueError."""
    tokens, at = [], 0
    while at < len(text):
        match = TOKEN.match(text, at)
        if match is None:
            raise ValueError(f"no token at {at}")
        if match["skipped"] is None:
            tokens.append(match[0])
        at = match.end()
    node, at = read_value(tokens + [""], 0, 0)
    if at != len(tokens):
        raise ValueError("more than one value")
    return node


def read_value(tokens, start, depth):
    opening = tokens[start]
    if opening in ("", "}", "]", ":", ",") or depth > 256:
        raise ValueError("no value, or one that nests too deeply")
    if opening not in ("{", "["):
        return Node(read_string(opening) if opening[0] == '"' else None, opening), start + 1
    closing, at, members = {"{": "}", "[": "]"}[opening], start, []
    while tokens[at] != closing:
        at += 1
        if tokens[at] == closing and not members:
            break
        name = None
        if opening == "{":
            name, at = read_string(tokens[at]), at + 2
            if tokens[at - 1] != ":":
                raise ValueError("no ':'")
        node, at = read_value(tokens, at, depth + 1)
        members.append((name, node))
        if tokens[at] not in (",", closing):
            raise ValueError("neither ',' nor the end")
    text = "".join(tokens[start:at + 1])
    return Node(dict(members) if opening == "{" else [node for _, node in members], text), at + 1


def read_string(token):
    if token[:1] != '"' or re.search("[\ud800-\udfff]", json.loads(token)):
        raise ValueError("no string, bytes that are no UTF-8, or half a pair of surrogates")
    return json.loads(token)


# The video service, as the snapshot recorded it --------------------------------------------------

class Failed(Exception):
    """A query that failed, with the message of its error."""


class Fatal(Exception):
    """What ends a run with status 1, with what is written after the tool's name."""


@contextlib.contextmanager
def fatal(what):
    """Queries whose failure ends the run."""
    try:
        yield
    except Failed as failed:
        raise Fatal(f"Failed to get {what}: {failed}\n") from None


def or_none(query, *arguments):
    """Queries whose failure only means that there is nothing."""
    try:
        return query(*arguments)
    except Failed:
        return None


def getter(default, *kinds):
    def get(self, key, default=default):
        kind, value = self.get(key, (None, None))
        return value if kind in kinds else default
    return get


class Map(dict):
    """A dictionary from key to (kind, value). What a getter's kind cannot hold counts as absent."""
    uint32 = getter(0, "uint16", "uint32")
    int64 = getter(0, "uint16", "uint32", "int64")
    double = getter(0.0, "uint16", "uint32", "double")
    boolean = getter(False, "boolean")
    string = getter(None, "string")
    pair = getter((0, 0), "pair")


def typed(node):
    """Returns the kind and the value for which a form of the snapshot stands."""
    if isinstance(node.value, str):
        return "string", node.value
    if isinstance(node.value, list):
        return "pair", tuple(figures(node))
    if isinstance(node.value, dict):
        (kind, inner), = node.value.items()
        if kind == "bytes":
            return "string", bytes.fromhex(inner.value).decode("utf-8", "surrogateescape")
        if kind == "other":
            return "other", inner.text
        return kind, float(inner.value or inner.text) if kind == "double" else int(inner.text)
    if node.text in ("true", "false"):
        return "boolean", node.text == "true"
    if re.search("[.eE]", node.text):
        return "double", float(node.text)
    return "uint32" if 0 <= int(node.text) <= ALL_ONES else "int64", int(node.text)


def figures(node):
    return [int(number.text) for number in node.value]


class Recorded:
    """A place in the snapshot that holds answers: a class of the service or one of its objects."""

    def __init__(self, node, name):
        self.members, self.name = succeeded(node).value, name
        self.id = int(self.members["id"].text) if "id" in self.members else 0
        self.properties = {key: text.value for key, text in self.members.get("properties", NOTHING).value.items()}

    def answer(self, member, what=None):
        """Returns an answer's Node, or fails as the service did. An answer that is not recorded fails in
        the client library's own words."""
        if member not in self.members:
            raise Failed(f"{what or self.name + ' ' + member} not recorded")
        return succeeded(self.members[member])

    def map(self, member):
        return Map((key, typed(node)) for key, node in self.answer(member).value.items())

    def figures(self, member):
        return figures(self.answer(member))

    def listed(self, member, entry):
        """Returns the Node of one entry of an answer that holds several."""
        return Recorded(self.answer(member), self.name).answer(entry, f"{self.name} {member} '{entry}'")

    def objects(self, member="all"):
        found = [Recorded(node, self.name) for node in self.answer(member, self.name + "s").value]
        for each in found:
            each.name += f" {each.id}:"
        return found

    def opened(self, number):
        """Returns the object of that number."""
        for node in self.answer("all", f"{self.name} {number}").value:
            if int(node.value["id"].text) == number:
                return Recorded(node, f"{self.name} {number}:")
        raise Failed(f"{self.name} {number} not recorded")


def succeeded(node):
    if isinstance(node.value, dict) and "$error" in node.value and isinstance(node.value["$error"].value, str):
        raise Failed(node.value["$error"].value)
    return node


class Service:
    def __init__(self, text, unreachable):
        self.unreachable = unreachable
        self.recorded = {} if unreachable is not None else read_json(text).value
        self.formats = {"h264": 0, "h265": 1, "jpeg": 2, "raw": 3, "av1": 10}
        if "formats" in self.recorded:
            self.formats = {nick: int(node.text) for nick, node in self.recorded["formats"].value.items()}

    def of(self, name):
        if self.unreachable is not None:
            raise Failed(self.unreachable)
        return Recorded(self.recorded.get(name, NOTHING), name)

    def map(self, name, member):
        return self.of(name).map(member)

    def input_channels(self):
        """Returns the channels that the filter key = input gives."""
        channels = self.of("channel")
        if "filtered" in channels.members:
            return channels.objects("filtered")
        return [channel for channel in channels.objects() if channel.properties.get("key") == "input"]

    def format_name(self, code):
        return next((nick for nick, known in self.formats.items() if known == code), "n/a")


# Pieces of every report ---------------------------------------------------------------------------

def g_print(text):
    """GLib converts what it prints to the locale's character set. The tools never set a locale, so
    that is ASCII whatever the environment says: every other character becomes a question mark."""
    return re.sub("[^\x00-\x7f]", "?", text)


def header(title):
    return f"----- {title} -----\n\n"


class Raw(str):
    """JSON text that goes into a record as it is."""


ESCAPES = str.maketrans({"\b": "\\b", "\t": "\\t", "\n": "\\n", "\f": "\\f", "\r": "\\r", '"': '\\"', "\\": "\\\\"})


def compact(value):
    """A record's JSON: an int is an integer, a float a double, a str has seven characters escaped."""
    if isinstance(value, dict):
        return "{" + ",".join(f"{compact(key)}:{compact(member)}" for key, member in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ",".join(map(compact, value)) + "]"
    if isinstance(value, str):
        return value if isinstance(value, Raw) else '"' + value.translate(ESCAPES) + '"'
    return double(value) if isinstance(value, float) else str(value)


def double(value):
    """17 significant digits without the zeros at their end, in the scientific form where it is due."""
    if not math.isfinite(value):
        return "null"
    if value == 0:
        return "0"
    mantissa, exponent = f"{abs(value):.16e}".split("e")
    digits, e, sign = mantissa.replace(".", "").rstrip("0"), int(exponent), "-" * (value < 0)
    if e >= len(digits) or e < -4:
        return f"{sign}{pointed(digits, 1)}e{'-' if e < 0 else '+'}{abs(e)}"
    return sign + (pointed(digits, e + 1) if e >= 0 else "0." + "0" * (-e - 1) + digits)


def pointed(digits, places):
    return digits[:places] + ("." if digits[places:] else "") + digits[places:]


def in_order(members):
    """Members in the order that every object has: ascending bytes of the keys."""
    return dict(sorted(members.items(), key=lambda member: member[0].encode("utf-8", "surrogateescape")))


def hms(microseconds):
    seconds = abs(microseconds) // 1000000
    sign = "-" * (microseconds < 0 < seconds)
    return f"{sign}{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}"


def native_json(values):
    """A native map as the bus library writes it."""
    def text(value):
        return re.sub("[\x00-\x1f]", lambda found: f"\\u{ord(found[0]):04x}", compact(value))

    def member(key, kind, value):
        if kind == "double" and not math.isfinite(value):
            raise Fatal(f"Exception: the value of '{key}' is not finite: JSON has no form for it\n")
        forms = {"string": text, "double": shortest, "pair": lambda pair: compact(list(pair)), "boolean": json.dumps}
        return text(key) + ":" + forms.get(kind, str)(value)
    return "{" + ",".join(member(key, *value) for key, value in in_order(values).items()) + "}"


def shortest(value):
    """The fewest digits that read back, plain unless the scientific form is shorter."""
    sign, digits, exponent = decimal.Decimal(repr(value)).normalize().as_tuple()
    plain = f"{value:.{max(0, -exponent)}f}"
    scientific = f"{'-' * sign}{pointed(''.join(map(str, digits)), 1)}e{exponent + len(digits) - 1:+03}"
    return min(plain, scientific, key=len)


# oru-tlm-tool: what each section prints ------------------------------------------------------------

def stream_max_stats(service):
    debug = or_none(service.map, "stream", "debug")
    for name, key in (("MaxBufferBytes", "capacity"), ("MaxEncodeStreams", "encoded.peers"), ("MaxRawStreams", "raw.peers")):
        yield f"{name}={-1 if debug is None else debug.uint32(f'global.{key}.peak')}\n"
    yield "Version=1\n"


def system_info(service):
    inputs, capture_modes, view_mode = 0, "", ""
    info = or_none(service.map, "channel", "info")
    if info is not None:
        inputs = info.uint32("input.count", 1)
        table = {}
        for i in range(1, inputs + 1):
            with contextlib.suppress(Failed):
                width, height = figures(service.of("input").opened(i).listed("resolution_unrotated", "capture"))
                table[f"input{i}"] = "string", f"{width}x{height}"
        capture_modes = native_json(table)
    info = or_none(service.map, "mode", "info")
    if info is not None:
        table = {}
        for key, value in in_order(info).items():
            if key != "view" and not key.startswith(("capture", "available")):
                table.setdefault(key.replace(".", "_"), value)
        view_mode = native_json(table)
    yield prettified(f'{{"inputs":{inputs},"capturemodes":{capture_modes},"viewmode":{view_mode}}}') + "\n"


def prettified(text):
    """Four spaces a level, arrays on one line. The bracket that opens a 128th level is the last to be written."""
    tokens = re.findall(r'"(?:[^"\\]|\\.)*"|[-0-9][-+.0-9eE]*|true|false|null|.', text, re.S)
    written, levels = "", []
    for before, token, after in zip([""] + tokens, tokens, tokens[1:] + [""]):
        if token in ("}", "]"):
            levels.pop()
        if token == "}" and before != "{":
            written += "\n" + "    " * len(levels)
        written += token
        if token in ("{", "["):
            levels.append(token)
            if len(levels) == 128:
                break
        if token == ":" or (token == "," and levels[-1] == "["):
            written += " "
        elif token == "," or (token == "{" and after != "}"):
            written += "\n" + "    " * len(levels)
    return written


def identity_info(service):
    debug = or_none(service.map, "stream", "debug") or {}
    counts = {key[len("identity."):]: double(debug.uint32(key)) for key in debug if key.startswith("identity.")}
    if counts:
        yield '{\n    "identities": {\n'
        yield ",\n".join(f"        {compact(name)}: {count}" for name, count in in_order(counts).items())
        yield "\n    }\n}\n"


# oru-serverreport-tool: what each section prints ---------------------------------------------------

class ErrorLine(str):
    """A piece of a section that goes to standard error."""


def previous_assertions(record):
    if record is None:
        return
    if isinstance(record, str):
        yield ErrorLine("Failed reading '/etc/oru/dsp-assertion': file_open_failure\n")
        record = b""
    yield header("Previous DSP assertions")
    text = record.decode("utf-8", "surrogateescape")
    with contextlib.suppress(ValueError):  # a record cut short by the very crash it tells of is printed as it stands
        text = read_json(text).text
    yield text + "\n\n"


class Listed(NamedTuple):
    """A stream that is worth reporting."""
    id: int
    info: Map
    settings: Map
    debug: Map


def list_streams(service):
    with fatal("all streams"):
        streams = service.of("stream").objects()
    listed = []
    for stream in streams:
        maps = [or_none(stream.map, name) for name in ("info", "settings", "debug")]
        if stream.id != 0 and None not in maps:
            if maps[1].uint32("format", ALL_ONES) != 6 and maps[1].string("subformat") != "leanflow":
                listed.append(Listed(stream.id, *maps))

    def elements(text):
        """A comma follows each element, but not those with the id of the last one."""
        return "".join(text(service, each) + ("," if each.id != listed[-1].id else "") + "\n" for each in listed)

    yield header("Snapshot of all running streams") + "{\n"
    yield '    "streams" : [\n' + elements(stream_summary) + "    ],\n\n"
    yield '    "streaminfo" : [\n' + elements(stream_settings) + "    ],\n\n"
    yield '    "streamstatistics" : [\n' + elements(stream_statistics) + "    ]\n}\n\n"


def format_and_resolution(service, stream):
    """Returns the code and the name of a stream's format, and its resolution."""
    code = stream.settings.uint32("format", ALL_ONES)
    raw = code == 3
    name = stream.settings.string("subformat", "NV12") if raw else service.format_name(code)
    size = stream.info if raw else stream.settings
    return code, name, f"{size.uint32('width')}x{size.uint32('height')}"


def stream_summary(service, stream):
    _, name, resolution = format_and_resolution(service, stream)
    info = stream.info
    summary = {
        "identity": stream.settings.string("identity", "N/A"), "channel": info.uint32("channel"), "resolution": resolution,
        "format": name, "framerate": info.uint32("framerate"), "bitrate": info.uint32("bitrate"),
        "duration": hms(info.int64("statistics.duration")), "framecount": info.uint32("statistics.frame_count"),
        "failcount": info.uint32("statistics.failed_frames"), "peers": info.uint32("peers")}
    for key in (f"identity[{n}]" for n in range(8)):
        if info.string(key) is not None:
            summary[key] = info.string(key)
    return f'        {{ "id/0x{stream.id:04x}" : {compact(in_order(summary))} }}'


PROFILES = {0: ("h264.profile", ("baseline", "main", "high")), 1: ("h265.profile", ("main", "main 10bit")),
            10: ("av1.profile", ("main", "main 10bit"))}
STRENGTHS = (0, 10, 20, 25, 30, 40, 50, 60, 70, 80, 90, 100)


def stream_settings(service, stream):
    """What stands for a number in here is a double, flags included; the source alone is an integer."""
    code, name, resolution = format_and_resolution(service, stream)
    settings, info = stream.settings, stream.info

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
    if code in PROFILES:
        groups["h26x"] = in_order({
            "bitrate": figure("bitrate"), "goplength": figure("gop_length"), "profile": word(*PROFILES[code]),
            "rcmode": word("rc.mode", ("cbr", "vbr", "mbr", "abr")), "rcprio": word("rc.prio", ("fps", "quality", "full fps"))})
    if code in PROFILES and settings.uint32("sqz.strength") != 0:
        groups["leanflow"] = in_order({
            "fps": figure("sqz.min_fps_num"), "fpsmode": word("sqz.fps_mode", ("fixed",), "dynamic"),
            "gopmode": word("sqz.gop_mode", ("fixed",), "dynamic"), "goplength": figure("sqz.max_gop_length"),
            "skipmode": word("sqz.skip_mode", ("drop",), "empty"), "strength": float(word("sqz.strength", STRENGTHS, 0))})
    lines = (f'                "{group}": {compact(members)}' for group, members in groups.items())
    return f'        {{\n            "id/0x{stream.id:04x}" : {{\n' + ",\n".join(lines) + "\n            }\n        }"


def stream_statistics(_, stream):
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
    return f'        {{ "id/0x{stream.id:04x}" : {compact(in_order(counters) | durations | counts | histograms)} }}'


def stream_quotas(service):
    def line(values, **keys):
        return "        " + compact({name.replace("_", " "): str(values.uint32("global." + key)) for name, key in keys.items()}) + "\n"

    with fatal("quota"):
        quota = service.map("stream", "quota")
    with fatal("limit"):
        limit = service.map("stream", "limit")
    debug = some_debug(service)
    yield header("Stream Quotas and Limits") + "{\n"
    yield '    "streammaximumquota" : [\n'
    yield line(quota, buffering="buffering.limit", hard="hard.limit", soft="soft.limit")
    yield "    ],\n\n"
    if debug is not None:
        yield '    "streamcurrentquota" : [\n'
        yield line(debug, hard="capacity", soft="capacity")
        yield "    ],\n\n"
    yield '    "streammaximumlimits" : [\n'
    yield line(limit, encode="max.streams.limit.encoded", other="max.streams.limit.encoded")
    if debug is not None:
        yield "    ],\n\n"
        yield '    "streamcurrentlimits" : [\n'
        yield line(debug, jpeg="encoded.jpeg.peers", motion_encoded="encoded.peers", other="raw.peers")
    yield "    ]\n}\n\n"


def some_debug(service):
    """Returns the debug map of the first encoded stream; where it gives none, that of the first stream; or None."""
    streams = or_none(service.of("stream").objects) or []
    encoded = [stream for stream in streams
               if (or_none(stream.map, "settings") or Map()).uint32("format", ALL_ONES) in (0, 1, 2, 10, 11)]
    for stream in encoded[:1] + streams[:1]:
        debug = or_none(stream.map, "debug")
        if debug is not None:
            return debug
    return None


def list_output(service):
    if not (or_none(service.map, "system", "caps") or Map()).boolean("output"):
        return
    with fatal("output"):
        output = service.of("output").opened(0)
    with fatal("output settings"):
        settings = output.map("settings")
    with fatal("output info"):
        info = output.map("info")
    yield header("HDMI output")
    shown = {"enabled": "Yes" if settings.boolean("enabled") else "No"}
    if settings.boolean("enabled"):
        shown["running"] = "Yes" if info.boolean("running") else "No"
        if info.boolean("running"):
            shown |= {"vsdb": "HDMI" if info.boolean("vsdb") else "DVI", "current VIC": str(settings.uint32("VIC")),
                      "width": str(info.uint32("width")), "height": str(info.uint32("height")),
                      "framerate": six_decimals(info.double("framerate")), "aspect ratio": info.string("aspect.ratio", "")}
    yield f"    {compact(in_order(shown))}\n\n"


def six_decimals(value):
    """As printf has it, which shows the sign of what is no number."""
    return "-nan" if math.isnan(value) and math.copysign(1, value) < 0 else f"{value:f}"


def crop_record(kind, number, *figures_):
    names = ("x", "y", "width", "height", "maxwidth", "maxheight")
    return compact({f"id/{number}": in_order({"crop": kind} | dict(zip(names, map(float, figures_))))})


def channels_of(service):
    """Returns the channels, and the line that stands in a section's place where there are none."""
    try:
        return service.of("channel").objects(), "No channels.\n"
    except Failed as failed:
        return [], g_print(f"Failed to get all channels: {failed}\n")


def list_channels(service):
    channels, excuse = channels_of(service)
    yield header("Snapshot of channel settings") + '{\n    "channels" : [\n' if channels else excuse
    for channel in channels:
        if channel is not channels[0]:
            yield ",\n"
        try:
            info = channel.map("info")
        except Failed as failed:
            yield g_print(f"Failed to get channel info: {failed}\n")
            return
        record = crop_record("No", channel.id)
        if info.boolean("crop.possible"):
            crop, largest = or_none(channel.figures, "crop"), or_none(channel.figures, "crop_max")
            record = crop_record("Yes", channel.id, *(crop + largest if crop and largest else [0] * 6))
        yield f"        {record}"
    if channels:
        yield "\n    ]\n}\n"


def list_available_resolutions(service):
    channels, excuse = channels_of(service)
    yield header("Available resolutions") + '{\n    "available_resolutions" : [\n' if channels else excuse
    for channel in channels:
        yield f'        {{"channel":"{channel.id}",'
        try:
            sizes = ["{}x{}".format(*figures(size)) for size in channel.listed("resolutions", "available").value]
        except Failed as failed:
            yield g_print(f"\nFailed to get resolutions: {failed}\n")
            return
        yield f'"resolutions":"{",".join(sizes)}{"," if len(sizes) == 1 else ""}"}}'
        yield ",\n" if channel is not channels[-1] else "\n"
    if channels:
        yield "    ]\n}\n"


def list_inputs(service):
    query = "inputs"
    try:
        channels = service.input_channels()
        if not channels:
            yield "No inputs.\n"
            return
        yield header("Snapshot of input settings") + '{\n    "inputs" : [\n'
        for channel in channels:
            query = "channel info"
            number = channel.map("info").uint32("type.id", 1)
            query = f"input {number}"
            source = service.of("input").opened(number)
            query = "input info"
            info = source.map("info")
            record = crop_record("No", number)
            if info.boolean("crop.possible"):
                crop = or_none(source.figures, "crop")
                if crop is None:
                    continue
                record = crop_record("Yes", number, *crop, *info.pair("crop.max", (ALL_ONES, ALL_ONES)))
            yield f"        {record}" + (",\n" if channel is not channels[-1] else "\n")
        yield "    ]\n}\n"
    except Failed as failed:
        yield g_print(f"Failed to get {query}: {failed}\n")


# Command lines ------------------------------------------------------------------------------------

class Tool(NamedTuple):
    feeds: str
    refusal: str
    switches: tuple  # (letter, name, help, section) in the order in which the sections run
    examples: tuple


TOOLS = {
    "oru-tlm-tool": Tool("tlm", "Option parsing failed: {}\n", (
        ("q", "stream-max-stats", "Display quotas and limits for streams", stream_max_stats),
        ("s", "system-info", "Display relevant system info for oru", system_info),
        ("i", "identity-info", "Display the identity and number of times they started a stream", identity_info)),
        ("stream-max-stats", "identity-info", "system-info")),
    "oru-serverreport-tool": Tool("the serverreport", "Failed t parse options: {}.", (
        ("l", "list-streams", "List existing streams", list_streams),
        ("q", "stream-quotas", "Display quotas and limits for streams", stream_quotas),
        ("o", "list-output", "Display information about HDMI", list_output),
        ("c", "list-channels", "List existing channels", list_channels),
        ("r", "list-resolutions", "List resolutions for encoded formats and YUV", lambda _: ()),  # has no section
        ("a", "list-available-resolutions", "List available resolutions", list_available_resolutions),
        ("i", "list-inputs", "List existing inputs", list_inputs)),
        ("list-streams", "list-channels", "list-output", "stream-quotas", "list-available-resolutions",
         "list-resolutions", "list-inputs"))}


def help_text(name):
    tool = TOOLS[name]
    width = max(len(switch) for _, switch, _, _ in tool.switches) + len("-x, --") + 5
    return (f"Usage:\n  {name} [OPTION\u2026] \"{{ 'key': <type value>, ... >}}\"\n\n"
            f"Tool for populating oru information to {tool.feeds}\nPrints everything when no options are provided.\n\n\n"
            f"Help Options:\n  {'-h, --help':{width}}Show help options\n\nApplication Options:\n"
            + "".join(f"  {f'-{letter}, --{switch}':{width}}{text}\n" for letter, switch, text, _ in tool.switches)
            + "\nExamples:\n" + "".join(f"  {name} --{switch}\n" for switch in tool.examples) + "\n")


def parse(name, arguments):
    """Returns the names of the switches given, or None where help is asked for. What is wrong first, or
    asks for help first, decides."""
    letters, given = {letter: switch for letter, switch, _, _ in TOOLS[name].switches}, set()
    for argument in arguments:
        if argument == "--":
            break
        if argument in ("--help", "--help-all"):
            return None
        switch, equals, _ = argument[2:].partition("=")
        if argument.startswith("--") and switch in letters.values():
            if equals and name == "oru-tlm-tool":  # the server report leaves it to GLib, which lets a value be
                raise Fatal(TOOLS[name].refusal.format(f"Option --{switch} takes no value"))
            given.add(switch)
        elif argument.startswith("-"):
            for letter in argument[1:]:
                if letter in "h?":
                    return None
                if letter not in letters:
                    raise Fatal(TOOLS[name].refusal.format(f"Unknown option {argument}"))
                given.add(letters[letter])
    return given


# A run ---------------------------------------------------------------------------------------------

class Section(NamedTuple):
    name: str  # of its switch, or "previous-assertions"
    text: str

    @property
    def document(self):
        """The JSON under the header, read; None where there is none, or none that is whole."""
        try:  # NaN and the like are no JSON, whatever this module thinks
            return json.loads(self.text.partition(" -----\n\n")[2] or self.text, strict=False, parse_constant=int)
        except ValueError:
            return None


class Run(NamedTuple):
    stdout: bytes
    stderr: bytes
    status: int
    sections: list


def run(argv, snapshot, record=None, unreachable=None):
    name, sections, stderr, status = argv[0].rpartition("/")[2], [], "", 0
    if name not in TOOLS:
        return Run(b"", b"oru-cgi-applet: Invoke 'oru-tlm-tool' or 'oru-serverreport-tool'!\n", 1, [])
    try:
        given = parse(name, argv[1:])
        if given is None:
            return Run(g_print(help_text(name)).encode(), b"", 0, [])
        service = Service(snapshot, unreachable)
        running = [(switch, section(service)) for _, switch, _, section in TOOLS[name].switches if switch in given]
        if name == "oru-serverreport-tool":
            running.insert(0, ("previous-assertions", previous_assertions(record)))
        for switch, section in running:
            pieces = list(section)
            stderr += "".join(piece for piece in pieces if isinstance(piece, ErrorLine))
            sections.append(Section(switch, "".join(piece for piece in pieces if not isinstance(piece, ErrorLine))))
    except Fatal as failure:
        stderr, status = stderr + f"{name}: {failure}", 1
    stdout = "".join(section.text for section in sections)
    return Run(*(text.encode("utf-8", "surrogateescape") for text in (stdout, stderr)), status, [each for each in sections if each.text])
