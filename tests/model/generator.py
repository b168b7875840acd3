"""Random snapshots, records of assertions and command lines: the same seed draws the same ones.

    snapshot(seed, kind=None)   the text of a snapshot; its file is text.encode("utf-8", "surrogateescape")
    kind_of(seed)               the kind that snapshot(seed) has
    assertions(seed)            a record of earlier assertions, an argument of model.run
    command_line(seed, tool)    a command line without argv[0]

The kinds: "whole", every answer is recorded; "sparse", answers and keys are missing; "faulty", some answers are
recorded failures; "broken", the text violates a rule of the format, so that the service cannot be reached. All of them
have odd values: of another kind than the tools read, too large, not valid UTF-8."""

import functools
import json
import random

from model import ALL_ONES, TOOLS, Raw

KINDS = ("whole", "sparse", "faulty", "broken")
NUMBERS = (0, 1, 2, 3, 7, 9, 10, 11, 12, 20, 25, 30, 99, 100, 101, 120, 1000, 1080, 1920, 65535, 65536, 6000000,
           2**31 - 1, 2**31, 2**31 + 1, ALL_ONES - 1, ALL_ONES)
WIDE = (0, -1, -9, -10, -1000000, -999999, 999999, 1000000, 59999999, 3599999999, 3600000000, 86399999999, 86400000000,
        360000000000, 2**32, -2**31, -2**31 - 1, 2**53 + 1, 2**63 - 1, -2**63, -2**63 + 1)
DOUBLES = tuple(map(Raw, (
    "0.0", "-0.0", "25.0", "29.97", "30.0", "59.94", "60.0", "120.0", "0.1", "0.5", "1e-4", "1e-5", "0.00012345",
    "1e22", "9.999999999999999e22", "1e23", "1E5", "1e+05", "123456.0", "1234567.0", "4294967295.0", "4294967296.0",
    "5e-324", "9007199254740993.0", "12345678901234567890.0", "2.2250738585072014e-308", "-1.5", "-1e-7", "1e100",
    "1.7976931348623157e308", "0.30000000000000004", "999999.9999995")))
TEXTS = ("", "a", "north gate", "Leanflow", "leanflow ", "16:9", "caf\u00e9", "\u65e5\u672c", "\U0001f3a5 live",
         "e\u0301", "%s%n{}", 'say "no" \\ yes', "/etc/oru", "tab\tline\nreturn\rback\bfeed\f", "a, b: [1] {2}",
         "\x01\x1b\x1f\x7f\x80", "// no comment", "/* none */", "\u2028\ufeff\uffff", "\U0010ffff", "null", "x" * 600)
BYTES = ("6fff", "ff", "c3", "80", "eda080", "f4908080", "c080", "636166e9", "22ff5c", "01fe0a", "6f6b", "", "c3a9")
OTHERS = ("null", "[]", "{}", "[ ]", "{ }", "[1, 2, 3]", "[1,[2,[ ]],{}]", '{"a": 1, "b": [true, false, null]}', "-0",
          "1.50E+03", '"A\\/b"', '[{"x":{}}, {"y" : [ { } ]}]', "[1, // one\n 2 /* two */]", '{"$error": "no failure"}',
          '"\\ud83c\\udfa5 \\u0000"', "123456789012345678901234567890", '"caf\u00e9 // 1"')
ERRORS = ("device busy", "", "caf\u00e9 closed", "100 % \"lost\"", "two\nlines", "%s %n {} {0}", "\U0001f3a5",
          "a\u2026b\u00a0c", "x" * 300, "\x01\x7f", "not found: /dev/video0")
TIMES = ("2026-11-22T07:14:32Z", "0001-01-01T00:00:00Z", "2024-02-29T23:59:59Z", "9999-12-31T23:59:59Z")
FORMATS = {"h264": 0, "h265": 1, "jpeg": 2, "raw": 3, "av1": 10}


def recorded(**answers):
    return {name: answer for name, answer in answers.items() if answer is not None}


class Draw(random.Random):
    """The random numbers of one seed."""

    def __init__(self, seed, kind):
        super().__init__(f"{kind} {seed}")
        # The probabilities that an answer is missing, a key is missing, an answer is a failure, a value has any kind.
        self.gap, self.key_gap, self.fault, self.odd = {
            "whole": (0, 0.1, 0, 0.15), "sparse": (0.3, 0.45, 0, 0.2), "broken": (0.1, 0.2, 0.1, 0.1),
            "faulty": (0.06, 0.2, self.choice((0.1, 0.3, 0.3, 1)), 0.15)}[kind]

    def chance(self, probability):
        return self.random() < probability

    def number(self):
        return self.choice(NUMBERS) if self.chance(0.7) else self.getrandbits(self.choice((4, 8, 16, 24, 32)))

    def double(self):
        any_double = Raw(self.uniform(1, 10) * 10.0 ** self.randrange(-300, 300))
        return self.choice(DOUBLES) if self.chance(0.7) else any_double

    def text(self):
        any_text = "".join(chr(self.randrange(32, 0xd800)) for _ in range(self.randrange(9)))
        return self.choice(TEXTS) if self.chance(0.85) else any_text

    def duration(self):
        return self.choice(WIDE) if self.chance(0.4) else self.randrange(400 * 3600 * 10**6)

    def pair(self):
        return [self.number(), self.number()]

    def other(self):
        depth = self.randrange(124, 129)  # around the limit of the printed documents
        deep = ("[" * depth + "]" * depth, '{"n":' * depth + "7" + "}" * depth)
        return Raw(self.choice(deep if self.chance(0.1) else OTHERS))

    def any_value(self):
        """Returns a value of any kind, also of those that only a map of a device has."""
        return self.choice((
            lambda: self.chance(0.5), self.text, self.number, lambda: self.choice(WIDE), self.double, self.pair,
            lambda: {"uint16": self.choice((0, 1, 2, 3, 6, 9, 10, 11, 12, 30, 100, 65534, 65535))},
            lambda: {"uint32": self.number()}, lambda: {"int64": self.choice(WIDE + NUMBERS)},
            lambda: {"double": self.choice((self.double(), self.number(), -1, "nan", "-nan", "inf", "-inf"))},
            lambda: {"bytes": self.choice(BYTES)}, lambda: {"other": self.other()}))()

    def map(self, values):
        """Returns a map with some of these keys and with a few others, in any order."""
        drawn = {}
        for key, value in values.items():
            if not self.chance(0.6 if key in OFTEN_ABSENT else self.key_gap):
                usual = self.choice(value) if isinstance(value, tuple) else value(self)
                drawn[key] = self.any_value() if self.chance(self.odd) else usual
        for key in self.sample(("x.y", "x_y", "X.Y", "statistics", "$error", self.text()), self.choice((0, 0, 1, 2))):
            drawn[key] = self.number() if key == "$error" else self.any_value()
        return dict(self.sample(list(drawn.items()), len(drawn)))

    def answer(self, value):
        """Returns the value, a failure instead of it, or None: not recorded."""
        if self.chance(self.fault):
            return {"$error": self.choice(ERRORS)}
        return None if self.chance(self.gap) else value

    def map_answer(self, values):
        return self.answer(self.map(values))

    def each(self, make, count, ids=(0, 1, 2, 3, 4, 5, 0x1a2b, 0x12345, 65535, 65536, 2**31, ALL_ONES)):
        """Returns the answer to a list query: `count` objects, each with a number of its own."""
        return self.answer([make(number) for number in (self.sample(ids, count) if self.chance(0.3) else ids[:count])])

    def stream(self, number):
        return recorded(id=number or self.choice((0, None)), info=self.map_answer(STREAM_INFO),
                        settings=self.map_answer(STREAM_SETTINGS), debug=self.map_answer(STREAM_DEBUG))

    def channel(self, number):
        sizes = [self.pair() for _ in range(self.choice((0, 1, 2, 5)))]
        return recorded(
            id=number or self.choice((0, None)), properties=self.choice(PROPERTIES),
            info=self.map_answer({"crop.possible": FLAG, "type.id": INPUTS[:6] + (1, 2, {"uint16": 3})}),
            crop=self.answer(self.pair() + self.pair()), crop_max=self.answer(self.pair()),
            resolutions=self.answer(recorded(other=self.answer([[1, 2]]), available=self.answer(sizes))))

    def input(self, number):
        """Returns an input, which may fail to open."""
        return {"id": number} | ({"$error": self.choice(ERRORS)} if self.chance(self.fault) else recorded(
            info=self.map_answer({"crop.possible": FLAG, "crop.max": Draw.pair}),
            crop=self.answer(self.pair() + self.pair()),
            resolution_unrotated=self.answer(recorded(capture=self.answer(self.pair()), other=self.answer([1, 2])))))

    def output(self, number):
        return {"id": number} | ({"$error": self.choice(ERRORS)} if self.chance(self.fault) else recorded(
            info=self.map_answer(OUTPUT_INFO), settings=self.map_answer({"enabled": FLAG, "VIC": Draw.number})))

    def document(self):
        count = self.choice((0, 1, 2, 3, 4, 12, {"uint16": 12}, "3"))  # larger counts would take too long
        streams = self.sample((1, 2, 3, 4, 0x1a2b, 0x12345, 65535, 2**31, ALL_ONES, 0, 0), self.choice((0, 1, 2, 3, 5)))
        filtered = self.each(self.channel, self.randrange(4)) if self.chance(0.2) else None
        made = recorded(
            version=self.choice((None, 1)), about=self.choice((None, None, self.text())),
            recorded=self.choice((None, None, *TIMES)),
            system=self.answer(recorded(caps=self.map_answer({"output": (True,) * 7 + (False,)}))),
            mode=self.answer(recorded(info=self.map_answer(MODE_INFO))),
            stream=recorded(debug=self.map_answer(PEAKS | IDENTITIES), quota=self.map_answer(QUOTA),
                            limit=self.map_answer({"global.max.streams.limit.encoded": Draw.number}),
                            all=self.answer([self.stream(number) for number in streams])),
            channel=recorded(info=self.answer(self.map({}) | self.choice(({"input.count": count}, {}))),
                             filtered=filtered, all=self.each(self.channel, self.randrange(5))),
            input=recorded(all=self.each(self.input, 14 if self.gap == 0 else self.randrange(14), INPUTS)),
            output=recorded(all=self.each(self.output, self.choice((1, 1, 2)), (0, 1))), formats=self.choice((
                None, None, FORMATS, {}, {"raw": 3}, {**FORMATS, "sharp": 11, "seven": 7},
                {"yuv": 3, "mpeg 4": 4, "caf\u00e9": 0, "second": 0, "last": ALL_ONES, "h\"x": 10})))
        return dict(self.sample(list(made.items()), len(made) - self.chance(self.gap)))


def all_of(value, *keys):
    return dict.fromkeys(keys, value)


# The keys that the sections read, and their usual values.
FLAG = (True, True, True, False)
SMALL = (0, 1, 2, 3, 4, 1, 2, {"uint16": 0}, {"uint16": 1}, {"uint16": 2}, 7, 65536, ALL_ONES)
CODES = (0, 0, 0, 1, 1, 2, 3, 3, 10, 10, 11, 8, 9, 6, 4, 5, 7, 12, 255, ALL_ONES)
RATES = (*DOUBLES, 30, 25, 30, {"uint16": 60}, *({"double": name} for name in ("nan", "-nan", "-nan", "inf", "-inf")))
INPUTS = (1, 2, 3, 4, 0, ALL_ONES, *range(5, 13))
STREAM_INFO = {
    **all_of(Draw.number, "channel", "framerate", "bitrate", "peers", "width", "height", "rotation", "monochrome",
             "statistics.bitrate", "statistics.frame_count", "statistics.framerate", "statistics.failed_frames",
             "statistics.reclaim_count"), **all_of(TEXTS, *(f"identity[{n}]" for n in range(9))),
    "statistics.duration": Draw.duration, **all_of(SMALL, "input", "view", "warp")}
STREAM_SETTINGS = {
    **all_of(Draw.number, "width", "height", "channel", "compression", "gop_length", "bitrate", "sqz.max_gop_length",
             "sqz.min_fps_num"), "identity": Draw.text,
    "subformat": ("NV12", "Y800", "", "n\u00e9", "leanflow", "Leanflow", "leanflow "),
    "format": CODES + tuple({"uint16": code} for code in CODES[:-1]), "framerate": RATES,
    **all_of(FLAG, "horizontal_flip", "sign"), "sqz.strength": (*range(14), 0, 0, 0, ALL_ONES),
    **all_of(SMALL, "rc.mode", "rc.prio", "h264.profile", "h265.profile", "av1.profile", "sqz.gop_mode",
             "sqz.skip_mode", "sqz.fps_mode")}
STREAM_DEBUG = {
    **all_of(Draw.number, "global.capacity", "global.encoded.peers", "global.encoded.jpeg.peers", "global.raw.peers"),
    "tlm[0].client_us": Draw.pair, **all_of(Draw.duration, *(f"tlm[{n}].duration" for n in range(9))),
    **all_of(("1,2,3", "0", "", "1,", "no json \"", "[1],{}", '"caf\u00e9",null', " 1 , 2 "),
             *(f"tlm[{n}].reclaim_histogram" for n in range(9))),
    **all_of(SMALL, *(f"tlm[{n}].reclaim_count" for n in range(9)))}
IDENTITIES = all_of(Draw.number, *("identity." + name for name in (
    "alpha", "b ", "a", "a.x", "", 'wall "north"', "tab\there", "caf\u00e9", "back\\slash", "\x01", "identity.")))
PEAKS = all_of(Draw.number, "global.capacity.peak", "global.encoded.peers.peak", "global.raw.peers.peak", "identity")
MODE_INFO = all_of(
    Draw.any_value, "view", "capture", "capture.width", "captured", "available.modes", "views", "stream.fps", "a.b.c",
    "a.b_c", "a_b.c", "x.y", "x_y", "..", "caf\u00e9.\u65e5", "q\"\\", "\x01\t")
QUOTA = all_of(Draw.number, "global.hard.limit", "global.soft.limit", "global.buffering.limit")
PROPERTIES = (*({"key": key} for key in (
    "input", "input", "inputs", "view", 1, {"bytes": "696e707574"}, {"other": Raw('"input"')})),
              {"kind": "x", "key": "input"}, {"Key": "input"}, {}, None)
OUTPUT_INFO = {**all_of(FLAG, "running", "vsdb"), "framerate": RATES, "aspect.ratio": Draw.text,
               **all_of(Draw.number, "width", "height")}
OFTEN_ABSENT = {key for key in (*STREAM_INFO, *STREAM_DEBUG) if "[" in key} | {*MODE_INFO, *IDENTITIES, "input", "warp"}


WITH_ESCAPES, WITHOUT_ESCAPES = json.JSONEncoder(), json.JSONEncoder(ensure_ascii=False)


class Writer:
    """Writes a snapshot with random layout, escapes and comments."""

    def __init__(self, draw):
        self.draw, self.indent = draw, draw.choice((-1, 1, 4))
        self.escapes, self.comments = draw.choice((0, 0, 0.3)), draw.choice((0, 0, 0.1))

    def space(self, level):
        comment = self.draw.choice(("/* a \u00e9 \" */", "// one line {\n", "/**/", " \t\r\n"))
        return comment * self.draw.chance(self.comments) + ("\n" + " " * self.indent * level) * (self.indent >= 0)

    def string(self, text):
        written = (WITH_ESCAPES if self.draw.chance(self.escapes) else WITHOUT_ESCAPES).encode(text)
        return written.replace("/", "\\/") if self.draw.chance(self.escapes) else written

    def write(self, value, level=0):
        if isinstance(value, str):
            return value if isinstance(value, Raw) else self.string(value)
        if isinstance(value, dict):
            inner = level + 1
            members = (f"{self.space(inner)}{self.string(key)}: {self.write(value[key], inner)}" for key in value)
            return "{" + ",".join(members) + self.space(level) + "}"
        return "[" + ", ".join(map(self.write, value)) + "]" if isinstance(value, list) else json.dumps(value)


# Each violates one rule: members of a class, values of a map, and whole texts.
BROKEN_MEMBERS = {
    "system": ('"Caps": {}', '"$error": "x"'), "mode": ('"info": {"a": 1, "a": 2}', '"info": [1]', '"caps": {}'),
    "stream": ('"info": {}', '"all": [1]', '"all": {}', '"all": [{"id": 7}, {"id": 7}]', '"all": [{"id": -1}]',
               '"all": [{"id": 1.0}]', '"all": [{"$error": "x"}]', '"quota": {"$error": "x", "a": 1}'),
    "channel": ('"all": [{}, {}]', '"all": [{"id": 4294967296}]', '"all": [{"id": 3}, {"id": 3}]', '"filtered": {}',
                '"all": [{"crop": [0, 0, 1]}]', '"all": [{"crop_max": [-1, 0]}]', '"filtered": [{"id": 3}, {"id": 3}]',
                '"all": [{"resolutions": {"available": [[1]]}}]', '"all": [{"properties": 1}]'),
    "input": ('"all": [{}]', '"all": [{"id": 1}, {"id": 1}]', '"all": [{"id": 1, "$error": "x", "info": {}}]'),
    "output": ('"all": [{"id": 0, "$error": 1}]', '"all": [{"info": {}}]'), "formats": ('"h264": "0"', '"x": -1')}
BROKEN_VALUES = (
    "null", "{}", "[]", "[1]", "[1, 2, 3]", "[1, -1]", "[1, 4294967296]", "[1.0, 2]", '{"uint16": 65536}',
    '{"uint16": -1}', '{"uint32": 4294967296}', '{"uint32": 1.0}', '{"int64": 9223372036854775808}', '{"int64": "1"}',
    '{"double": "NaN"}', '{"double": null}', '{"uint8": 1}', '{"uint16": 1, "uint32": 1}', '{"bytes": "6F"}',
    '{"bytes": "6"}', '{"bytes": "zz"}', '{"bytes": "00"}', '{"bytes": 6}', '{"other": }', '{"other": 1, "bytes": ""}',
    "9223372036854775808", "-9223372036854775809", '"a\\u0000b"', '"\\ud800"', '"\\udc00 "', '"\\x"', '"tab\t"',
    '"\udcff"', '"\udcc3"', "01", "1.", ".5", "+1", "1e", "0x1", "NaN", "nul", "True", "'x'", "1 2", "1,", '"open')
BROKEN_TEXTS = ('{"version": 2}', '{"version": 0}', '{"version": 1.0}', '{"version": "1"}', '{"version": -1}',
                '{"recorded": "2026-02-29T00:00:00Z"}', '{"recorded": "2026-11-22T07:14:32+00:00"}', '{"recorded": 1}',
                "", " \n", "[]", "null", '"{}"', "1", "{,}", '{"about": 1}', '{"About": ""}', '{"a', "{a: 1}", "{}x",
                '{"stream": []}', "{},", '{"mode": {}, "mode": {}}', '{"formats": []}', "\ufeff\ufeff{}", '{"mode" {}}',
                '{"mode": {} "input": {}}', "{}}", "{} {}", "{} /* open", "{} /", "{}\0", "{}\udcff")


def kind_of(seed):
    return random.Random(f"kind {seed}").choices(KINDS, (40, 25, 25, 10))[0]


@functools.lru_cache(maxsize=1)  # several benches use it
def snapshot(seed, kind=None):
    kind = kind or kind_of(seed)
    draw = Draw(seed, kind)
    text = Writer(draw).write(draw.document())
    if kind != "broken":
        return text + draw.choice(("", "\n", " // end"))
    name = draw.choice(list(BROKEN_MEMBERS))
    member = '"caps": {}, ' * (name == "system") + draw.choice(BROKEN_MEMBERS[name])
    value = '{"mode": {"info": {"odd": %s}}}' % draw.choice(BROKEN_VALUES)
    cut = text[:draw.randrange(len(text) // 2 + 1)]
    return draw.choice((cut, draw.choice(BROKEN_TEXTS), value, value, '{"%s": {%s}}' % (name, member)))


RECORDS = (
    '{"dsp": 0, "line": 1217}', '{\n  "dsp" : [ 1, 2 ],\n\t"text": "a  b\\t\\u00e9 // c /* d */"\n}\n', "[]", "{ }",
    " 12 ", "null", "[1, /* one */ 2, // two\n 3]", '{"a": 1, "a": 2}', '{"caf\u00e9 \U0001f3a5": [true,false , null]}',
    "[-0.0, 1E+5 ,0.10, 1e999]", '[ "\\ud83c\\udfa5", "\\/", "\x7f" ]', "/**/[ 1 ]/* end */ // end", "", " \n",
    "// only a comment", '{"dsp": 0, "li', "[1, 2", "[1 2]", "{ a : 1 }", "[ 01 ]", "[ 1. ]", "[ +1]", "[ 'a' ]",
    "[1, ]", '{"a" 1}', '[ "\\ud800 " ]', '[ "\\udc00" ]', '[ "a\tb" ]', '[ "\\q" ]', "[1] x", "/* open", "[ nul ]",
    " NaN", "\0\0\0", '{ "dsp" : \udcb3\0 {}', "[ 1 ]\0", "\ufeff[ 1 ]", "[ 1\f ]", '[ "\udcff" ]', '[ "\udcc3" ]',
    '[ "\\ud83c\\u0041" ]')


def assertions(seed):
    draw = Draw(seed, "whole")
    form = draw.choices((None, "directory", "unreadable", "listed", "whole", "deep"), (25, 3, 3, 40, 24, 5))[0]
    if form in (None, "directory", "unreadable"):
        return form
    depth, text = draw.choice((255, 256, 257, 300)), draw.choice(RECORDS)
    if form == "whole":  # or cut short
        text = Writer(draw).write(draw.document())[:draw.choice((None, draw.randrange(200)))]
    return ("[ " * depth + "1 " + "] " * depth if form == "deep" else text).encode("utf-8", "surrogateescape")


def command_line(seed, tool):
    draw = Draw(f"{seed} {tool}", "whole")
    letters, names, _, _ = zip(*TOOLS[tool].SWITCHES)
    drawn = [draw.choice(("-" + draw.choice(letters), "--" + draw.choice(names), "--" + draw.choice(names),
                          "-" + "".join(draw.sample(letters, draw.randrange(1, len(letters) + 1)))))
             for _ in range(draw.choice((0, 1, 1, 2, 2, 3, 6)))]
    for _ in range(draw.choice((0, 0, 0, 0, 1, 2))):
        drawn.insert(draw.randrange(len(drawn) + 1), draw.choice((
            "-h", "--help", "--help-all", "-?", "--help-x", "-x", "-qx", "-xq", "-ih", "-i?x", "--", "-", "---",
            "--foo", "--foo=1", "-\u00e9", "", "operand", "--" + names[0][:-1], "--" + names[0].upper(),
            f"--{names[1]}=no", f"--{names[0]}=", "-q=no", "--=", "--help=no", "-\udcff")))
    return drawn
