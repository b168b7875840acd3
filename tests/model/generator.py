"""Random snapshots, records of assertions and command lines: the same seed, the same texts.

    snapshot(seed, kind=None)   the text of a snapshot; as UTF-8 with errors="surrogateescape" it is the file
    kind_of(seed)               the kind that snapshot(seed) has
    assertions(seed)            the record of earlier assertions: bytes, None where there is none, or
                                "directory" or "unreadable" for what stands in its place
    command_line(seed, tool)    a command line, argv[0] left out

The kinds: "whole" (every answer is recorded, and the documents of all reports are complete but for
what the odd values in the maps do), "sparse" (answers and keys are missing), "faulty" (answers are
recorded failures), "broken" (a rule of the format is broken: the service cannot be reached)."""

import json
import random

KINDS = ("whole", "sparse", "faulty", "broken")

MAX32 = 4294967295
NUMBERS = (0, 1, 2, 3, 7, 9, 10, 11, 12, 20, 25, 30, 99, 100, 101, 120, 1000, 1080, 1920, 65535, 65536, 6000000,
           2**31 - 1, 2**31, 2**31 + 1, MAX32 - 1, MAX32)
WIDE = (-1, -9, -10, -1000000, 999999, 1000000, 59999999, 3599000000, 86399999999, 86400000000, 360000000000, 2**32,
        -2**31, -2**31 - 1, 2**53 + 1, 2**63 - 1, -2**63, -2**63 + 1)
DOUBLES = ("0.0", "-0.0", "25.0", "29.97", "30.0", "59.94", "60.0", "120.0", "0.1", "0.5", "1e-4", "1e-5", "0.00012345",
           "9.999999999999999e22", "1e22", "1e23", "1E5", "1e+05", "123456.0", "1234567.0", "4294967295.0", "4294967296.0",
           "9007199254740993.0", "12345678901234567890.0", "5e-324", "2.2250738585072014e-308", "-1.5",
           "1.7976931348623157e308", "0.30000000000000004", "1e100", "-1e-7", "999999.9999995")
TEXTS = ("", "a", "north gate", "NV12", "Leanflow", "leanflow ", "16:9", "caf\u00e9", "\u65e5\u672c", "\U0001f3a5 live", "e\u0301",
         'say "no" \\ yes', "/etc/oru", "tab\tline\nreturn\rback\bfeed\f", "\x01\x1b\x1f\x7f\x80", "a, b: [1] {2}", "%s%n{}",
         "// no comment", "/* none */", "\u2028\ufeff\uffff", "\U0010ffff", "N/A", "-1", "null", "x" * 600)
BYTES = ("6fff", "ff", "c3", "80", "eda080", "f4908080", "00c3"[2:], "636166e9", "22ff5c", "01fe0a", "6f6b", "", "c3a9")
OTHERS = ("null", "[]", "{}", "[ ]", "{ }", "[1, 2, 3]", "[1,[2,[ ]],{}]", '{"a": 1, "b": [true, false, null]}', "-0",
          "1.50E+03", '"A\\/b"', '[{"x":{}}, {"y" : [ { } ]}]', "[1, // one\n 2 /* two */]", '{"$error": "no failure"}',
          '"\\ud83c\\udfa5 \\u0000"', "123456789012345678901234567890", '{"a": 1, "a": 2}', "0.10", '"caf\u00e9 // 1"')
ERRORS = ("device busy", "", "caf\u00e9 closed", "100 % \"lost\"", "two\nlines", "%s %n {} {0}", "\U0001f3a5", "a\u2026b\u00a0c",
          "x" * 300, "\x01\x7f", "not found: /dev/video0")
NAMES = ("alpha", "beta", "b", "a", "a.x", "", "wall \"north\"", "tab\there", "caf\u00e9", "back\\slash", "x/y", "\x01", "identity.")
FORMATS = {"h264": 0, "h265": 1, "jpeg": 2, "raw": 3, "av1": 10}


class Token(str):
    """JSON text that stands in the snapshot as it is."""


class Draw(random.Random):
    """What one seed draws."""

    def __init__(self, seed, kind):
        super().__init__(f"{kind} {seed}")
        # How likely an answer is left out, a key is, an answer is a failure, and a value is of any kind.
        self.gap, self.key_gap, self.fault, self.odd = {
            "whole": (0, 0.1, 0, 0.15), "sparse": (0.3, 0.45, 0, 0.2),
            "faulty": (0.06, 0.2, self.choice((0.1, 0.3, 0.3, 1)), 0.15), "broken": (0.1, 0.2, 0.1, 0.1)}[kind]

    def chance(self, share):
        return self.random() < share

    def number(self):
        return self.choice(NUMBERS) if self.chance(0.7) else self.getrandbits(self.choice((4, 8, 16, 24, 32)))

    def double(self):
        if self.chance(0.7):
            return Token(self.choice(DOUBLES))
        # Every size is as likely as any other.
        return Token(repr(self.uniform(1, 10) * 10.0 ** self.randrange(-300, 300)))

    def text(self):
        if self.chance(0.85):
            return self.choice(TEXTS)
        return "".join(chr(self.choice((self.randrange(32, 127), self.randrange(0xa0, 0xd800)))) for _ in range(self.randrange(9)))

    def other(self):
        if self.chance(0.1):  # about as deep as what prints it follows
            depth = self.randrange(120, 132)
            return Token("[" * depth + "]" * depth if self.chance(0.5) else '{"n":' * depth + "7" + "}" * depth)
        return Token(self.choice(OTHERS))

    def any_value(self):
        """A value of any kind, those that only a device's own map holds among them."""
        return self.choice((
            lambda: self.chance(0.5), self.text, self.number, lambda: self.choice(WIDE), self.double,
            lambda: [self.number(), self.number()],
            lambda: {"uint16": self.choice((0, 1, 2, 3, 6, 9, 10, 11, 12, 30, 100, 65534, 65535))},
            lambda: {"uint32": self.number()}, lambda: {"int64": self.choice(WIDE + NUMBERS)},
            lambda: {"double": self.choice((self.double(), self.number(), -1, "nan", "-nan", "inf", "-inf"))},
            lambda: {"bytes": self.choice(BYTES)}, lambda: {"other": self.other()}))()

    # Values of the kind that belongs under a key.
    def flag(self):
        return self.chance(0.6)

    def small(self):
        value = self.randrange(5) if self.chance(0.8) else self.number()
        return {"uint16": value} if value < 65536 and self.chance(0.3) else value

    def format(self):
        value = self.choice((0, 0, 1, 1, 2, 3, 3, 10, 10, 11, 8, 9, 6, 4, 5, 7, 12, 255, 65535, MAX32))
        return {"uint16": value} if value < 65536 and self.chance(0.3) else value

    def strength(self):
        return self.choice(tuple(range(14)) + (0, 0, 0, MAX32))

    def rate(self):
        return self.double() if self.chance(0.8) else self.number()

    def duration(self):
        return self.choice(WIDE[3:13]) if self.chance(0.4) else self.randrange(400 * 3600 * 10**6)

    def subformat(self):
        return self.choice(("NV12", "Y800", "RGB", "leanflow", "leanflow", "", "n\u00e9"))

    def histogram(self):
        return self.choice(("1,2,3", "0", "", "1,", "no json \"", "[1],{}", '"caf\u00e9",null', " 1 , 2 "))

    def pair(self):
        return [self.number(), self.number()]

    def member(self, values, key, value):
        """Draws the value of a key: what belongs there, any other, or none."""
        if not self.chance(self.key_gap):
            values[key] = self.any_value() if self.chance(self.odd) else value()

    def map(self, members):
        """A map with some of these members and a few that nobody asks for, in any order."""
        values = {}
        for key, value in members:
            self.member(values, key, value)
        for _ in range(self.choice((0, 0, 1, 2))):
            key = self.choice(("$error", "x.y", "x_y", "X.Y", "statistics", self.text()))
            values[key] = self.number() if key == "$error" else self.any_value()
        keys = list(values)
        self.shuffle(keys)
        return {key: values[key] for key in keys}

    def answer(self, place, name, value):
        """Puts an answer in its place, or a failure, or nothing."""
        if self.chance(self.fault):
            place[name] = {"$error": self.choice(ERRORS)}
        elif not self.chance(self.gap):
            place[name] = value()

    def ids(self, count, first):
        """Numbers for a list: small, large, each once."""
        pool = [first + i for i in range(count)] + [n for n in NUMBERS + (0x1a2b, 0x12345) if n >= first + count]
        return sorted(self.sample(pool, count)) if self.chance(0.3) else pool[:count]


def indexed(pattern, value):
    return [(pattern.format(n), value) for n in range(9)]


def stream_info(draw):
    return draw.map([(key, draw.number) for key in (
        "channel", "framerate", "bitrate", "peers", "width", "height", "rotation", "monochrome", "statistics.bitrate",
        "statistics.frame_count", "statistics.framerate", "statistics.failed_frames", "statistics.reclaim_count")]
        + [("statistics.duration", draw.duration)]
        + draw.sample([("input", draw.small), ("view", draw.small), ("warp", draw.small)], draw.randrange(4))
        + draw.sample(indexed("identity[{}]", draw.text), draw.randrange(5)))


def stream_settings(draw):
    return draw.map([(key, draw.number) for key in (
        "width", "height", "channel", "compression", "gop_length", "bitrate", "sqz.max_gop_length", "sqz.min_fps_num")]
        + [("format", draw.format), ("subformat", draw.subformat), ("identity", draw.text), ("framerate", draw.rate),
           ("horizontal_flip", draw.flag), ("sign", draw.flag), ("sqz.strength", draw.strength)]
        + [(key, draw.small) for key in ("rc.mode", "rc.prio", "h264.profile", "h265.profile", "av1.profile",
                                         "sqz.gop_mode", "sqz.skip_mode", "sqz.fps_mode")])


def stream_debug(draw):
    per_client = (indexed("tlm[{}].duration", draw.duration) + indexed("tlm[{}].reclaim_histogram", draw.histogram)
                  + indexed("tlm[{}].reclaim_count", draw.small))
    return draw.map([("tlm[0].client_us", draw.pair)] + draw.sample(per_client, draw.choice((0, 5, 15, 27)))
                    + [(key, draw.number) for key in ("global.capacity", "global.encoded.peers",
                                                      "global.encoded.jpeg.peers", "global.raw.peers")])


def service_debug(draw):
    names = draw.sample(NAMES, draw.choice((0, 1, 3, 6)))
    return draw.map([(key, draw.number) for key in ("global.capacity.peak", "global.encoded.peers.peak",
                                                    "global.raw.peers.peak")]
                    + [("identity." + name, draw.number) for name in names] + [("identity", draw.number)])


def mode_info(draw):
    keys = ["view", "capture", "capture.width", "captured", "available.modes", "views", "stream.fps", "a.b.c", "a.b_c", "a_b.c",
            "x.y", "x_y", "..", "caf\u00e9.\u65e5", "q\"\\", "\x01\t"]
    return draw.map([(key, draw.any_value if draw.chance(0.5) else draw.number) for key in draw.sample(keys, draw.randrange(12))])


def crop(draw):
    return [draw.number() for _ in range(4)]


def channel(draw, number):
    made = {"id": number} if number != 0 or draw.chance(0.7) else {}
    made["properties"] = draw.choice(({"key": "input"}, {"key": "input"}, {"kind": "x", "key": "input"}, {"key": "view"},
                                      {"Key": "input"}, {"key": "inputs"}, {}))
    draw.answer(made, "info", lambda: draw.map([("crop.possible", draw.flag), ("type.id", draw.small)]))
    draw.answer(made, "crop", lambda: crop(draw))
    draw.answer(made, "crop_max", draw.pair)

    def resolutions():
        lists = {}
        for select in ("available", "other"):
            draw.answer(lists, select, lambda: [draw.pair() for _ in range(draw.choice((0, 1, 2, 5)))])
        return lists
    draw.answer(made, "resolutions", resolutions)
    return made


def stream(draw, number):
    made = {"id": number} if number != 0 or draw.chance(0.5) else {}
    for name, value in (("info", stream_info), ("settings", stream_settings), ("debug", stream_debug)):
        draw.answer(made, name, lambda: value(draw))
    return made


def opened(draw, number, fill):
    """An input or an output, which may fail to open."""
    made = {"id": number}
    if draw.chance(draw.fault):
        made["$error"] = draw.choice(ERRORS)
    else:
        fill(made)
    return made


def document(draw):
    made = {}

    def members(name, fill):
        if not draw.chance(draw.gap / 4):
            made[name] = {}
            fill(made[name])

    if draw.chance(0.2):
        made["about"] = draw.text()
    count = draw.choice((0, 1, 2, 3, 4, 12))
    inputs = [n for n in range(1, count + 2) if draw.chance(1 - draw.gap)]

    if draw.chance(draw.fault):
        made["system"] = {"$error": draw.choice(ERRORS)}
    else:
        members("system", lambda at: draw.answer(at, "caps", lambda: draw.map([("output", lambda: draw.chance(0.9))])))
    if draw.chance(draw.fault):
        made["mode"] = {"$error": draw.choice(ERRORS)}
    else:
        members("mode", lambda at: draw.answer(at, "info", lambda: mode_info(draw)))

    def streams(at):
        draw.answer(at, "debug", lambda: service_debug(draw))
        draw.answer(at, "quota", lambda: draw.map([(f"global.{name}.limit", draw.number) for name in ("hard", "soft", "buffering")]))
        draw.answer(at, "limit", lambda: draw.map([("global.max.streams.limit.encoded", draw.number)]))
        numbers = draw.ids(draw.choice((0, 1, 2, 3, 5)), 1) + [0] * draw.choice((0, 0, 1, 2))
        if draw.chance(0.5):
            draw.shuffle(numbers)
        draw.answer(at, "all", lambda: [stream(draw, number) for number in numbers])
    members("stream", streams)

    def channels(at):
        # Nobody opens as many inputs as a number may count.
        draw.answer(at, "info", lambda: draw.map([("type.id", draw.number)]) | draw.choice((
            {"input.count": count}, {"input.count": {"uint16": count}}, {"input.count": "3"}, {"input.count": {"int64": 3}}, {})))
        draw.answer(at, "all", lambda: [channel(draw, number) for number in draw.ids(draw.choice((0, 1, 2, 3, 4)), 0)])
        if draw.chance(0.15):
            draw.answer(at, "filtered", lambda: [channel(draw, number) for number in draw.ids(draw.randrange(4), 0)])
    members("channel", channels)

    def fill_input(at):
        draw.answer(at, "info", lambda: draw.map([("crop.possible", draw.flag), ("crop.max", draw.pair)]))
        draw.answer(at, "crop", lambda: crop(draw))

        def resolution():
            sizes = {"other": draw.pair()} if draw.chance(0.2) else {}
            draw.answer(sizes, "capture", draw.pair)
            return sizes
        draw.answer(at, "resolution_unrotated", resolution)
    # An input's channel may be of any number; in a whole snapshot most of them can be opened.
    members("input", lambda at: draw.answer(at, "all", lambda: [
        opened(draw, number, fill_input) for number in inputs + [n for n in (0, 1, 2, 3, 4, MAX32) if n not in inputs]]))

    def fill_output(at):
        draw.answer(at, "info", lambda: draw.map([
            ("running", lambda: draw.chance(0.8)), ("vsdb", draw.flag), ("width", draw.number), ("height", draw.number),
            ("framerate", draw.rate), ("aspect.ratio", draw.text)]))
        draw.answer(at, "settings", lambda: draw.map([("enabled", lambda: draw.chance(0.8)), ("VIC", draw.number)]))
    members("output", lambda at: draw.answer(at, "all", lambda: [
        opened(draw, number, fill_output) for number in draw.choice(((0,), (0, 1), (1, 0)) if draw.gap == 0 else ((0,), (1,), ()))]))

    if draw.chance(0.4):
        made["formats"] = draw.choice((FORMATS, {}, {"raw": 3}, {"yuv": 3, "mpeg 4": 4, "caf\u00e9": 0, "last": MAX32, "h\"x": 10},
                                       {**FORMATS, "sharp": 11, "seven": 7}))
    return made


class Writer:
    """Writes a snapshot in one of the many ways there are to write it."""

    def __init__(self, draw):
        self.draw = draw
        self.indent = draw.choice((None, 1, 4))
        self.escape = draw.choice((0, 0, 0.3))
        self.comments = draw.choice((0, 0, 0.1))

    def gap(self, level):
        comment = ""
        if self.draw.chance(self.comments):
            comment = self.draw.choice(("/* a \u00e9 \" */", "// one line {\n", "/**/", " \t\r\n"))
        return comment + ("" if self.indent is None else "\n" + " " * (self.indent * level))

    def string(self, text):
        written = json.dumps(text, ensure_ascii=self.draw.chance(self.escape)).replace("\x7f", "\\u007F")
        return written.replace("/", "\\/") if self.draw.chance(self.escape) else written

    def value(self, value, level=0):
        if isinstance(value, Token):
            return str(value)
        if isinstance(value, str):
            return self.string(value)
        if isinstance(value, dict):
            members = [self.gap(level + 1) + self.string(key) + ": " + self.value(member, level + 1) for key, member in value.items()]
            return "{" + ",".join(members) + self.gap(level) + "}"
        if isinstance(value, list):
            return "[" + ", ".join(self.value(element, level + 1) for element in value) + "]"
        return json.dumps(value)


# One broken rule each: a member that is put into the class beside the others. A duplicate is a Token.
BROKEN_MEMBERS = (
    ("system", "Caps", {}), ("system", "$error", "with others"), ("mode", "info", Token('{"a": 1, "a": 2}')), ("mode", "info", [1]),
    ("stream", "info", {}), ("stream", "all", [1]), ("stream", "all", {}), ("stream", "all", [{"id": 7}, {"id": 7}]),
    ("stream", "all", [{"id": -1}]), ("stream", "all", [{"$error": "x"}]), ("stream", "quota", {"$error": "x", "a": 1}),
    ("stream", "all", [{"id": 1.0}]), ("stream", "all", [{"id": 1, "crop": [0, 0, 1, 1]}]), ("channel", "all", [{}, {}]),
    ("channel", "all", [{"id": 2**32}]), ("channel", "all", [{"id": 3}, {"id": 3}]), ("channel", "all", [{"crop": [0, 0, 1]}]),
    ("channel", "all", [{"crop_max": [-1, 0]}]), ("channel", "all", [{"resolutions": {"available": [[1]]}}]),
    ("channel", "filtered", [{"id": 3}, {"id": 3}]), ("channel", "filtered", {}), ("channel", "all", [{"properties": {"key": 1}}]),
    ("input", "all", [{}]), ("input", "all", [{"id": 1}, {"id": 1}]), ("input", "all", [{"id": 1, "$error": "x", "info": {}}]),
    ("output", "all", [{"id": 0, "$error": 1}]), ("output", "all", [{"info": {}}]), ("formats", "h264", "0"), ("formats", "x", -1))
BROKEN_VALUES = (
    "null", "{}", "[]", "[1]", "[1, 2, 3]", "[1, -1]", "[1, 4294967296]", "[1.0, 2]", '{"uint16": 65536}', '{"uint16": -1}',
    '{"uint32": 4294967296}', '{"uint32": 1.0}', '{"int64": 9223372036854775808}', '{"int64": "1"}', '{"double": "NaN"}',
    '{"double": null}', '{"uint8": 1}', '{"uint16": 1, "uint32": 1}', '{"bytes": "6F"}', '{"bytes": "6"}', '{"bytes": "zz"}',
    '{"bytes": "00"}', '{"bytes": 6}', '{"other": }', '{"other": 1, "bytes": ""}', "9223372036854775808", "-9223372036854775809",
    '"a\\u0000b"', '"\\ud800"', '"\\udc00 "', '"\\x"', '"tab\t"', '"\udcff"', '"\udcc3"', "01", "1.", ".5", "+1", "1e", "0x1", "NaN",
    "nul", "True", "'x'", "1 2", "1,", '"open')


def broken(draw):
    made, writer = document(draw), Writer(draw)
    how = draw.randrange(5)
    if how == 0:
        text = writer.value(made)
        return text[:draw.randrange(len(text) // 2 + 1)]
    if how == 1:
        return draw.choice(("{}", writer.value(made))) + draw.choice(("x", ",", "}", "{}", "/* open", "/", "\0", "\udcff"))
    if how == 2:
        return draw.choice(("[]", "null", '"{}"', "1", "{,}", '{"about": 1}', '{"About": ""}', '{"a', "{a: 1}", '{"stream": []}',
                            '{"mode": {}, "mode": {}}', '{"formats": []}', "\ufeff\ufeff{}", '{"mode" {}}', '{"mode": {} "input": {}}'))
    if how == 3:
        name, member, value = draw.choice(BROKEN_MEMBERS)
        made[name] = dict(made.get(name, {}) if name != "system" else {"caps": {}}, **{member: value})
        if name in ("system", "mode") and member != "$error":
            made[name].pop("$error", None)
        return writer.value(made)
    made["mode"] = {"info": {"odd": Token(draw.choice(BROKEN_VALUES))}}
    return writer.value(made)


def kind_of(seed):
    return random.Random(f"kind {seed}").choices(KINDS, (40, 25, 25, 10))[0]


def snapshot(seed, kind=None):
    kind = kind or kind_of(seed)
    draw = Draw(seed, kind)
    return broken(draw) if kind == "broken" else Writer(draw).value(document(draw)) + draw.choice(("", "\n", " // end"))


RECORDS = ('{"dsp": 0, "line": 1217}', '{\n  "dsp" : [ 1, 2 ],\n\t"text": "a  b\\t\\u00e9 // c /* d */"\n}\n', "[]", "{ }", " 12 ", "null", "", " \n",
           "[1, /* one */ 2, // two\n 3]", "// only a comment", "{\"a\": 1, \"a\": 2}", '{"caf\u00e9 \U0001f3a5": [true,false , null]}',
           "[-0.0, 1E+5 ,0.10]", '["\\ud83c\\udfa5", "\\/"]', "/**/[ 1 ]/* end */ // end")
BROKEN_RECORDS = ('{"dsp": 0, "li', "[1, 2", "[1 2]", "{ a : 1 }", "[01]", "[1.]", "[+1]", "['a']", "[1,]", '{"a" 1}', '["\\ud800 "]',
                  '["\\udc00"]', '[ "a\tb" ]', '[ "\\q" ]', "[1] x", "/* open", "[ nul ]", "NaN", "\0\0\0", "  not json \u00e9\n")


def assertions(seed):
    draw = Draw(seed, "whole")
    form = draw.choices((None, "directory", "unreadable", "whole", "broken", "deep", "raw"), (30, 3, 3, 34, 20, 5, 5))[0]
    if form == "whole":
        return draw.choice(RECORDS).encode() if draw.chance(0.6) else Writer(draw).value(document(draw)).encode()
    if form == "broken":
        text = draw.choice(BROKEN_RECORDS)
        if draw.chance(0.4):  # cut short by the crash that it describes
            whole = Writer(draw).value({"dsp": draw.number(), "text": draw.text(), "rows": [draw.number(), {"at": "x y"}]})
            text = whole[:draw.randrange(1, len(whole))]
        return text.encode()
    if form == "deep":
        depth = draw.randrange(250, 262)
        return ("[ " * depth + "1 " + "] " * depth).encode()
    if form == "raw":  # what a device's file system may give back after a crash
        return b'{ "dsp" : 1 }'[:draw.randrange(13)] + bytes(draw.getrandbits(8) for _ in range(draw.choice((1, 7, 64, 700))))
    return form


SWITCHES = {
    "oru-tlm-tool": ("qsi", ("stream-max-stats", "system-info", "identity-info")),
    "oru-serverreport-tool": ("lqocrai", ("list-streams", "stream-quotas", "list-output", "list-channels", "list-resolutions",
                                          "list-available-resolutions", "list-inputs"))}


def command_line(seed, tool):
    draw = Draw(f"{seed} {tool}", "whole")
    letters, names = SWITCHES[tool]
    drawn = []
    for _ in range(draw.choice((0, 1, 1, 2, 2, 3, 6))):
        drawn.append(draw.choice((
            lambda: "-" + draw.choice(letters), lambda: "--" + draw.choice(names), lambda: "--" + draw.choice(names),
            lambda: "-" + "".join(draw.sample(letters, draw.randrange(1, len(letters) + 1)))))())
    if draw.chance(0.15):
        odd = draw.choice(("-h", "--help", "--help-all", "-?", "--help-x", "-x", "-" + letters[0] + "x", "-x" + letters[0], "-" + letters[1] + "h",
                           "--", "-", "---", "--foo", "--foo=1", "-\u00e9", "", "operand", "--" + names[0][:-1], "--" + names[0].upper(),
                           "--" + names[1] + "=no", "--" + names[0] + "=", "-" + letters[0] + "=no", "--=", "--help=no", "-\udcff"))
        drawn.insert(draw.randrange(len(drawn) + 1), odd)
    return drawn
