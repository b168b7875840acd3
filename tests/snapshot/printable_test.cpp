#include "snapshot/printable.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace snapshot;

TEST(printable, leaves_readable_text) {
    EXPECT_EQ(printable(""), "");
    EXPECT_EQ(printable("wall \"north\" \\ <b>&amp;"), "wall \"north\" \\ <b>&amp;");
    EXPECT_EQ(printable("café e\u0301 日本 \U0001f3a5"), "café e\u0301 日本 \U0001f3a5");
}

TEST(printable, escapes_what_a_terminal_obeys) {
    EXPECT_EQ(printable("a\nb\rc\td"), "a\\nb\\rc\\td");
    EXPECT_EQ(printable("\033[2J\x01\x7f\b"), "\\x1b[2J\\x01\\x7f\\x08");
    EXPECT_EQ(printable(std::string_view("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(printable("\u0080\u009b"), "\\u0080\\u009b");
}

TEST(printable, escapes_invisible_characters) {
    EXPECT_EQ(printable("\u202egnp.exe"), "\\u202egnp.exe");
    EXPECT_EQ(printable("a\u2028b\u2029c\u200b\ufeff\u00ad"),
              "a\\u2028b\\u2029c\\u200b\\ufeff\\u00ad");
    EXPECT_EQ(printable("\uffff\U0010ffff"), "\\uffff\\U0010ffff");
}

TEST(printable, escapes_invalid_utf8) {
    EXPECT_EQ(printable("o\xff"), "o\\xff");
    EXPECT_EQ(printable("\xc3"), "\\xc3");
    EXPECT_EQ(printable("\xc3(\xa9"), "\\xc3(\\xa9");
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80");           // a surrogate
    EXPECT_EQ(printable("\xc0\xaf"), "\\xc0\\xaf");                    // longer than need be
    EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // beyond the last
    EXPECT_EQ(printable("caf\xe9 caf\xc3\xa9"), "caf\\xe9 café");
}

}  // namespace
