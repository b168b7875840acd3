#!/usr/bin/python3
"""Tests which mistakes scripts/mutate makes and which of them it draws.

usage: mutate_test.py TREE: the root of the source tree"""

import importlib.machinery
import importlib.util
import sys
import time
import unittest

sys.dont_write_bytecode = True

SOURCE = r"""// if (a < 1) { return; }
#include "x/1.h"
#define LIMIT 5
static_assert(sizeof(int) >= 4, "small");
extern "C" int used(int n);

template <class T>
struct box {
    T&& held = 0x0F;
    OruMap* info;
};

const std::map<int, char> table{{1'000, '\n'}};
constexpr auto raw = R"(q)";

int walk(box<int>& b, OruMap* info) {
    std::vector<int> seen;
    /* return 2; */
    for (int i = 7; i != b.end && !(i >= 3.5); ++i) {
        if (oru_map_get_double(info, "", 1e2) == true) {
            continue;
        }
        b.held = i;
        find(seen, [&](int each) {
            ++b.held;
            return each;
        });
    }
    switch (b.held) {
        case 8:
            seen.clear();
            break;
    }
    std::sort<int>(seen,
                   info);
    return a || b;
}
"""

# Derived by hand from the text above.
MISTAKES = [
    (3, "constant off by one", "5", "6"),
    (3, "constant off by one", "5", "4"),
    (9, "constant off by one", "0x0F", "0x10"),
    (9, "constant off by one", "0x0F", "0x0E"),
    (13, "constant off by one", "1'000", "1001"),
    (13, "constant off by one", "1'000", "999"),
    (13, "character changed", r"'\n'", "'_'"),
    (14, "character changed", 'R"(q)"', 'R"(r)"'),
    (19, "constant off by one", "7", "8"),
    (19, "constant off by one", "7", "6"),
    (19, "comparison swapped", "!=", "=="),
    (19, "logical operator swapped", "&&", "||"),
    (19, "logical operator swapped", "!", ""),
    (19, "comparison swapped", ">=", ">"),
    (19, "comparison swapped", ">=", "<="),
    (19, "constant off by one", "3.5", "4.5"),
    (19, "constant off by one", "3.5", "2.5"),
    (20, "another getter", "oru_map_get_double", "native_map_get_uint"),
    (20, "another getter", "oru_map_get_double", "oru_map_get_boolean"),
    (20, "another getter", "oru_map_get_double", "oru_map_get_int64"),
    (20, "another getter", "oru_map_get_double", "oru_map_get_uint32"),
    (20, "another map", "info", "debug"),
    (20, "another map", "info", "settings"),
    (20, "constant off by one", "1e2", "2e2"),
    (20, "constant off by one", "1e2", "0e2"),
    (20, "comparison swapped", "==", "!="),
    (20, "truth swapped", "true", "false"),
    (21, "jump swapped", "continue", "break"),
    (21, "statement left out", "continue;", ";"),
    (23, "statement left out", "b.held = i;", ";"),
    (24, "statement left out", "find(seen, [&](int each) {\n            ++b.held;\n"
     "            return each;\n        });", ";\n\n\n"),
    (25, "statement left out", "++b.held;", ";"),
    (26, "statement left out", "return each;", ";"),
    (30, "constant off by one", "8", "9"),
    (30, "constant off by one", "8", "7"),
    (31, "statement left out", "seen.clear();", ";"),
    (32, "jump swapped", "break", "continue"),
    (32, "statement left out", "break;", ";"),
    (34, "statement left out", "std::sort<int>(seen,\n                   info);", ";\n"),
    (35, "another map", "info", "debug"),
    (35, "another map", "info", "settings"),
    (36, "logical operator swapped", "||", "&&"),
    (36, "statement left out", "return a || b;", ";"),
]


class Mistakes(unittest.TestCase):
    def test_are_complete_and_only_in_code(self):
        found = mutate.mistakes_of("f.cpp", SOURCE, 1)
        self.assertEqual({(each.line, each.kind, each.before, each.after) for each in found},
                         set(MISTAKES))
        self.assertEqual(len(found), len(MISTAKES))
        for each in found:
            self.assertEqual(each.before, SOURCE[each.start:each.end])

    def test_are_shown_with_place_and_lines(self):
        first = mutate.mistakes_of("src/f.cpp", "int f() {\n    return  a < b;\n}\n", 1)[0]
        self.assertEqual(mutate.shown(first), "src/f.cpp:2: statement left out: return a < b;")
        swapped = mutate.mistakes_of("src/f.cpp", "bool b = 1 < two;\n", 1)[-1]
        self.assertEqual(mutate.shown(swapped), "src/f.cpp:1: comparison swapped: < -> >")
        self.assertEqual(mutate.shown_lines(swapped, "bool b = 1 < two;\n"),
                         "    - bool b = 1 < two;\n    + bool b = 1 > two;")

    def test_change_one_character_of_a_literal(self):
        def changed(literal, draw):
            class Rng:
                def random(self):
                    return draw
            return mutate.changed_character(literal, Rng())
        self.assertEqual(changed('"aZ9"', 0.0), ['"bZ9"'])
        self.assertEqual(changed('"aZ9"', 0.5), ['"aA9"'])
        self.assertEqual(changed('"aZ9"', 0.99), ['"aZ0"'])
        self.assertEqual(changed(r'"a\n"', 0.5), ['"a_"'])
        self.assertEqual(changed(r'"\xEF\xBB"', 0.0), [r'"_\xBB"'])
        self.assertEqual(changed('"_"', 0.0), ['"-"'])
        self.assertEqual(changed(r'R"x(\n)x"', 0.0), [r'R"x(_n)x"'])
        self.assertEqual(changed('""', 0.0), [])


class Draw(unittest.TestCase):
    # Two files of three mistakes each, in the order of the draw.
    ORDER = ["a1", "a2", "b1", "a3", "b2", "b3"]

    def drawn(self, count, refused=()):
        order = [mutate.Mistake(name[0], 0, "", int(name[1]), 0, "", "") for name in self.ORDER]
        outcomes = {each: mutate.REFUSED if f"{each.file}{each.start}" in refused else None
                    for each in order}
        return [f"{each.file}{each.start}" for each in mutate.draw(order, outcomes.get, count)]

    def test_takes_one_of_each_file_and_then_the_first(self):
        self.assertEqual(self.drawn(2), ["a1", "b1"])
        self.assertEqual(self.drawn(4), ["a1", "b1", "a2", "a3"])
        self.assertEqual(self.drawn(9), ["a1", "b1", "a2", "a3", "b2", "b3"])

    def test_takes_one_of_each_file_even_if_the_count_is_smaller(self):
        self.assertEqual(self.drawn(1), ["a1", "b1"])

    def test_takes_another_for_one_that_does_not_compile(self):
        self.assertEqual(self.drawn(3, refused=["b1", "a2"]), ["a1", "b1", "b2", "a2", "a3"])

    def test_is_the_same_for_the_same_seed(self):
        text = 'auto s = "one long text of which one character is changed";\n'
        changed = [mutate.mistakes_of("f.cpp", text, seed)[0].after for seed in (1, 1, 2, 3, 4, 5)]
        self.assertEqual(changed[0], changed[1])
        self.assertGreater(len(set(changed)), 1)


class Commands(unittest.TestCase):
    def test_report_success_and_kill_after_the_time_limit(self):
        commands = mutate.Commands()
        self.assertTrue(commands.passes(["true"], 20))
        self.assertFalse(commands.passes(["false"], 20))
        start = time.monotonic()
        self.assertFalse(commands.passes(["sh", "-c", "sleep 60 & sleep 60"], 0.1))
        self.assertLess(time.monotonic() - start, 20)


if __name__ == "__main__":
    script = sys.argv.pop(1) + "/scripts/mutate"
    loader = importlib.machinery.SourceFileLoader("mutate", script)
    mutate = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutate", loader))
    loader.exec_module(mutate)
    unittest.main()
