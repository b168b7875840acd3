#include "snapshot_tool/table.h"

#include <gtest/gtest.h>

namespace {

using namespace snapshot_tool;

table two_columns() {
    return table({{"NAME", align::left}, {"COUNT", align::right}});
}

TEST(table, aligns_columns) {
    table shown = two_columns();
    shown.add_row({{"recorder"}, {"12"}});
    shown.add_row({{"日本"}, {"123456"}});
    shown.add_row({{"cafe\u0301"}, {"-"}});
    EXPECT_EQ(shown.text(false),
              "NAME       COUNT\n"
              "recorder      12\n"
              "日本      123456\n"
              "cafe\u0301           -\n");
}

TEST(table, ends_no_line_with_blanks) {
    table shown({{"COUNT", align::right}, {"NAME", align::left}, {"", align::left}});
    shown.add_row({{"1"}, {"recorder"}, {""}});
    shown.add_row({{"2"}, {""}, {""}});
    EXPECT_EQ(shown.text(false),
              "COUNT  NAME\n"
              "    1  recorder\n"
              "    2\n");
}

TEST(table, shows_that_it_is_empty) {
    EXPECT_EQ(two_columns().text(false),
              "NAME  COUNT\n"
              "    none\n");
}

TEST(table, shows_failures_below_their_rows) {
    table shown = two_columns();
    shown.add_row({{"recorder"}, {"?"}});
    shown.add_failure("no answer, and a long reason for that");
    shown.add_row({{"wall"}, {"7"}});
    EXPECT_EQ(shown.text(false),
              "NAME      COUNT\n"
              "recorder      ?\n"
              "    no answer, and a long reason for that\n"
              "wall          7\n");
}

TEST(table, colours_alarming_cells) {
    table shown = two_columns();
    shown.add_row({{"recorder"}, {.text = "9", .is_alarming = true}});
    shown.add_failure("no answer");
    EXPECT_EQ(shown.text(true),
              "NAME      COUNT\n"
              "recorder      \033[1;31m9\033[0m\n"
              "    \033[1;31mno answer\033[0m\n");
}

}  // namespace
