#!/usr/bin/python3
"""Runs every program on files of many shapes, each at two sizes of which one is four times the other. Prints how
processor time and peak memory grow. Fails if the time grows by more than LIMIT, or if the memory exceeds 32 MiB, plus
20 times the file, plus 200 bytes for each stream, channel, input and output in it, plus 4 times what the program prints.

usage: growth.py BIN SIZE LIMIT [NAME...]: where the programs are; the size of the larger files, in bytes; how often
the time for the smaller file may fit into the time for the larger one; the shapes, by default all."""

import collections
import os
import resource
import subprocess
import sys
import tempfile

MIB = 1 << 20

# --- The shapes: functions from a count to the pieces of a text ---------------------------------------------------


def listed(count, element):
    for first in range(0, count, 1000):
        yield ("," if first else "") + ",".join(element(i) for i in range(first, min(first + 1000, count)))


def around(before, count, element, after):
    yield before
    yield from listed(count, element)
    yield after


def streams(count):
    return around('{"stream":{"quota":{},"limit":{},"all":[', count,
                  lambda i: '{"id":%d,"info":{},"settings":{"format":2},"debug":{}}' % (i + 1), "]}}")


def empty_streams(count):
    return around('{"stream":{"all":[', count, lambda i: "{}", "]}}")


def failing_streams(count):
    return around('{"stream":{"quota":{},"limit":{},"all":[', count, lambda i: '{"settings":{"$error":"x"}}', "]}}")


def streams_of_many_formats(count):
    yield from around('{"formats":{', count, lambda i: f'"f{i}":{i}', '},"stream":{"all":[')
    yield from listed(count, lambda i: '{"id":%d,"info":{},"settings":{"format":%d},"debug":{}}' % (i + 1, i + 7))
    yield "]}}"


def channels(count):
    return around('{"channel":{"all":[', count,
                  lambda i: '{"id":%d,"info":{"crop.possible":true},"crop":[1,2,3,4]}' % i, "]}}")


def inputs(count):
    """Each input has a channel. Their numbers descend in one list and ascend in the other."""
    yield from around('{"channel":{"info":{"input.count":%d},"all":[' % count, count,
                      lambda i: '{"id":%d,"properties":{"key":"input"},"info":{"crop.possible":true,"type.id":%d},'
                                '"resolutions":{"available":[[1,2]]}}' % (i, count - i), ']},"input":{"all":[')
    yield from listed(count, lambda i: '{"id":%d,"info":{},"resolution_unrotated":{"capture":[1,2]}}' % (i + 1))
    yield "]}}"


def missing_inputs(count):
    return around('{"channel":{"info":{},"all":[', count,
                  lambda i: '{"id":%d,"properties":{"key":"input"},"info":{"type.id":%d}}' % (i, count - i), "]}}")


def keys(count):
    return around('{"mode":{"info":{', count, lambda i: '"k%08d":%d' % (count - i, i), "}}}")


def keys_that_change_places(count):
    """Once their full stops become underscores, their order differs."""
    return around('{"mode":{"info":{', count, lambda i: '"k%s%08d":1' % (".A"[i % 2], i), "}}}")


def capabilities(count):
    return around('{"system":{"caps":{"output":true,', count, lambda i: f'"c{i}":true', "}}}")


def identities(count):
    return around('{"stream":{"debug":{', count, lambda i: '"identity.%08d":%d' % (count - i, i), "}}}")


def clients_of_one_stream(count):
    return around('{"stream":{"all":[{"id":1,"settings":{},"debug":{},"info":{', count,
                  lambda i: f'"identity[{i}]":"c"', "}}]}}")


def formats(count):
    return around('{"stream":{"all":[]},"formats":{', count, lambda i: f'"f{i}":{i}', "}}")


def resolutions(count):
    return around('{"channel":{"all":[{"id":1,"resolutions":{"available":[', count, lambda i: f"[{i},2]", "]}}]}}")


def resolution_lists(count):
    return around('{"channel":{"all":[{"id":1,"resolutions":{', count, lambda i: f'"{count - i}":[[1,2]]', "}}]}}")


def long_text(count):
    yield '{"stream":{"all":[{"id":1,"info":{},"debug":{},"settings":{"identity":"'
    for _ in range(count):
        yield '\\"\\\\\\u0001\\n\\u00e9x\u00e9'
    yield '"}}]}}'


def values_of_another_kind(count):
    return around('{"mode":{"info":{', count, lambda i: '"%08d":{"other":[[[{"a":[1.50,"\\u0000"]}]]]}' % i, "}}}")


def long_value_of_another_kind(count):
    return around('{"mode":{"info":{"k":{"other":[', count, lambda i: '{"a":[1.50,"\\u0000"]}', "]}}}}")


def repeated_keys(count):
    return around('{"mode":{"info":{', count, lambda i: f'"k{i % 1000}":1', "}}}")


def comments(count):
    yield from ("/* x */ // y\n" for _ in range(count))
    yield "{}"


def lines_before_the_mistake(count):
    yield from ("\n" * 8 for _ in range(count))
    yield "[]"


def open_brackets(count):
    yield '{"mode":{"info":{"k":'
    yield from ("[" * 8 for _ in range(count))


# A list of objects has one for each count, or two: the limit of memory depends on their number.
Shape = collections.namedtuple("Shape", "text objects is_read")
SHAPES = [Shape(text, objects, True) for text, objects in [
    (streams, 1), (empty_streams, 1), (failing_streams, 1), (streams_of_many_formats, 1), (channels, 1), (inputs, 2),
    (missing_inputs, 1), (keys, 0), (keys_that_change_places, 0), (capabilities, 0), (identities, 0),
    (clients_of_one_stream, 0), (formats, 0), (resolutions, 0), (resolution_lists, 0), (long_text, 0),
    (values_of_another_kind, 0), (long_value_of_another_kind, 0)]]
# These are rejected or empty, the same in every program.
SHAPES += [Shape(text, 0, False) for text in (repeated_keys, comments, lines_before_the_mistake, open_brackets)]


def command_lines(binaries, shape, path):
    """Returns the command lines for a file of this shape, each with the service's answers in it."""
    yield "oru-snapshot", "check", path
    if not shape.is_read:
        return
    yield "oru-tlm-tool", "-qsi"
    # Of many streams and many formats, the report takes time for the product: see docs/reliability.md.
    yield "oru-serverreport-tool", "-qocai" if shape.text is streams_of_many_formats else "-lqocai"
    yield "oru-snapshot", "record"
    yield "oru-snapshot", "diff", path, path
    for command in "show", "graph", "metrics":
        yield "oru-snapshot", command, path
    if os.path.exists(os.path.join(binaries, "oru-probe")):
        yield ("oru-probe",)


# --- Measuring ------------------------------------------------------------------------------------------------------

Run = collections.namedtuple("Run", "time peak printed")


def write(shape, count, path):
    """Returns the size of the file."""
    with open(path, "w", encoding="utf-8") as file:
        file.writelines(shape.text(count))
    return os.path.getsize(path)


def write_at_most(shape, size, path):
    """Writes a file of at most this size. Returns its count."""
    count = 2000
    while True:
        count = count * size // write(shape, count, path)
        if write(shape, count, path) <= size:
            return count


def run(binaries, line, path, scratch):
    """Returns processor time in seconds, peak memory and number of printed bytes of a run."""
    printed = os.path.join(scratch, "printed")
    with open(printed, "wb") as out:
        child = subprocess.Popen([os.path.join(binaries, line[0]), *line[1:]], stdin=subprocess.DEVNULL, stdout=out,
                                 stderr=out, env=dict(os.environ, ORU_SNAPSHOT=path))
        _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode not in (0, 1):
        sys.exit(f"growth: {' '.join(line)}: status {child.returncode}")
    return Run(usage.ru_utime + usage.ru_stime, usage.ru_maxrss * 1024, os.path.getsize(printed))


def least(runs):
    """Returns the run with the least time: other load on the machine adds to it."""
    return min(runs, key=lambda each: each.time)


def measure(binaries, shape, size, limit, scratch):
    """Prints a line for each program. Returns the number of those that take too much."""
    paths = [os.path.join(scratch, name) for name in ("small.json", "large.json")]
    count = write_at_most(shape, size, paths[1])
    write(shape, count // 4, paths[0])
    file_size = os.path.getsize(paths[1])
    failed = 0
    for small_line, large_line in zip(*(command_lines(binaries, shape, path) for path in paths)):
        small, large = [], []
        while len(small) < 3 and (not small or least(large).time > limit * least(small).time):
            small.append(run(binaries, small_line, paths[0], scratch))
            large.append(run(binaries, large_line, paths[1], scratch))
        before, after = least(small), least(large)
        ratio = after.time / before.time
        most = 32 * MIB + 20 * file_size + 200 * shape.objects * count + 4 * after.printed
        is_too_much = ratio > limit or after.peak > most
        failed += is_too_much
        program = " ".join(word for word in large_line[:2] if word != paths[1]).removeprefix("oru-")
        print(f"{shape.text.__name__:27} {program:24} {file_size / MIB:6.1f} MiB {before.time:8.3f} s {after.time:8.3f} s "
              f"x{ratio:4.1f} {before.peak / MIB:7.1f} MiB {after.peak / MIB:7.1f} MiB x{after.peak / before.peak:4.1f}"
              f" of {most / MIB:7.1f} MiB{'  TOO MUCH' if is_too_much else ''}", flush=True)
    return failed


def main():
    binaries, size, limit = os.path.abspath(sys.argv[1]), int(sys.argv[2]), float(sys.argv[3])
    names = sys.argv[4:]
    chosen = [shape for shape in SHAPES if not names or shape.text.__name__ in names]
    if len(chosen) < len(names):
        sys.exit(__doc__)
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    with tempfile.TemporaryDirectory() as scratch:
        failed = sum(measure(binaries, shape, size, limit, scratch) for shape in chosen)
    print(f"{len(chosen)} shapes, {failed} runs took too much")
    sys.exit(failed != 0)


if __name__ == "__main__":
    main()
