#include "snapshot_tool/page.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace snapshot_tool;

TEST(page, wraps_long_lines_between_words) {
    const std::string word(38, 'w');
    page page({});
    page.add("! ", word + ' ' + word + " b");  // 2 + 38 + 1 + 38 columns
    page.add("", std::string(80, 'x'));
    page.add("", "");
    EXPECT_EQ(page.text(), "! " + word + ' ' + word + "\n  b\n" + std::string(79, 'x') + "\nx\n\n");
}

TEST(page, counts_wide_characters_twice) {
    std::string text;
    for (int i = 0; i < 39; ++i) {
        text += "日";
    }
    page page({});
    page.add("  ", text);
    EXPECT_EQ(page.text(), "  " + text.substr(0, std::size_t{38} * 3) + "\n  日\n");
}

TEST(page, wraps_nothing_if_it_is_wide) {
    page page({.is_wide = true});
    page.add("! ", std::string(100, 'x'));
    EXPECT_EQ(page.text(), "! " + std::string(100, 'x') + '\n');
}

TEST(page, colours_what_is_alarming_but_no_blanks_before_it) {
    page page({.has_colours = true});
    page.add("! ", std::string(78, 'x'), true);
    page.add("  ", "y", true);
    page.add("! ", "z");
    EXPECT_EQ(page.text(), "\033[1;31m! " + std::string(77, 'x') +
                               "\033[0m\n  \033[1;31mx\033[0m\n  \033[1;31my\033[0m\n! z\n");
}

}  // namespace
