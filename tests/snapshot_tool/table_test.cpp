#include "snapshot_tool/table.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace snapshot_tool;

table two_columns() {
    return {{}, {{.title = "NAME", .side = align::left}, {.title = "COUNT"}}};
}

std::string printed(const table& table, const page_style& style = {}) {
    page page(style);
    table.print(page);
    return page.text();
}

TEST(table, aligns_columns) {
    table shown = two_columns();
    shown.add_row(false, {{"recorder"}, {"12"}});
    shown.add_row(false, {{"日本"}, {"123456"}});
    shown.add_row(false, {{"cafe\u0301"}, {"-"}});
    EXPECT_EQ(printed(shown),
              "  NAME       COUNT\n"
              "  recorder      12\n"
              "  日本      123456\n"
              "  cafe\u0301           -\n");
}

TEST(table, ends_no_line_with_blanks) {
    table shown({}, {{.title = "COUNT"},
                     {.title = "NAME", .side = align::left},
                     {.title = "", .side = align::left}});
    shown.add_row(false, {{"1"}, {"recorder"}, {""}});
    shown.add_row(false, {{"2"}, {""}, {""}});
    EXPECT_EQ(printed(shown),
              "  COUNT  NAME\n"
              "      1  recorder\n"
              "      2\n");
}

TEST(table, shows_that_it_is_empty) {
    EXPECT_EQ(printed(two_columns()),
              "  NAME  COUNT\n"
              "    none\n");
}

TEST(table, marks_problems_and_shows_failures_below_their_rows) {
    table shown = two_columns();
    shown.add_row(true, {{"recorder"}, {"?"}});
    shown.add_failure("no answer, and a reason for that");
    shown.add_row(false, {{"wall"}, {"7"}});
    EXPECT_EQ(printed(shown),
              "  NAME      COUNT\n"
              "! recorder      ?\n"
              "    no answer, and a reason for that\n"
              "  wall          7\n");
}

TEST(table, colours_alarming_cells) {
    table shown = two_columns();
    shown.add_row(true, {{"recorder"}, {.text = "9", .is_alarming = true}});
    shown.add_failure("no answer");
    EXPECT_EQ(printed(shown, {.has_colours = true}),
              "  NAME      COUNT\n"
              "\033[1;31m!\033[0m recorder      \033[1;31m9\033[0m\n"
              "    \033[1;31mno answer\033[0m\n");
}

TEST(table, has_some_columns_only_on_a_wide_page) {
    for (const bool is_wide : {false, true}) {
        const page_style style{.is_wide = is_wide};
        table shown(style, {{.title = "A"}, {.title = "B", .is_wide = true}, {.title = "C"}});
        shown.add_row(false, {{"1"}, {"2"}, {"3"}});
        EXPECT_EQ(printed(shown, style), is_wide ? "  A  B  C\n  1  2  3\n" : "  A  C\n  1  3\n");
    }
}

// The widest columns are cut, first the first of those that are equally wide, down to their titles.
TEST(table, fits_into_79_columns_unless_the_page_is_wide) {
    const std::string a(40, 'a');
    const std::string b(39, 'b');
    const std::string wide = "日本日本日本日本日本日本日本日本日本日本";
    table shown = two_columns();
    shown.add_row(false, {{a}, {b}});
    shown.add_row(false, {{wide}, {"1"}});
    shown.add_failure(a + ' ' + b);
    EXPECT_EQ(printed(shown, {.is_wide = true}),
              "  NAME" + std::string(36 + 2 + 34, ' ') + "COUNT\n  " + a + "  " + b + "\n  " +
                  wide + "  " + std::string(38, ' ') + "1\n    " + a + ' ' + b + '\n');
    EXPECT_EQ(printed(shown), "  NAME" + std::string(33 + 2 + 33, ' ') + "COUNT\n  " +
                                  std::string(36, 'a') + "…  " + std::string(37, 'b') +
                                  "…\n  日本日本日本日本日本日本日本日本日本…  " +
                                  std::string(37, ' ') + "1\n    " + a + "\n    " + b + '\n');

    table titles({}, {{.title = std::string_view(a)}, {.title = std::string_view(a)}});
    titles.add_row(false, {{a + a}, {"1"}});
    EXPECT_EQ(printed(titles), "  " + a + "  " + a + "\n  " + std::string(39, 'a') + "…  " +
                                   std::string(39, ' ') + "1\n");
}

}  // namespace
