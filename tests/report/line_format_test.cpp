#include "report/line_format.h"

#include <gtest/gtest.h>

namespace {

TEST(line_format, puts_the_value_in_place_of_the_braces) {
    EXPECT_EQ(line_format("Failed to get quota: {}").with("gone"), "Failed to get quota: gone");
    EXPECT_EQ(line_format("{} of all").with("none"), "none of all");
    EXPECT_EQ(line_format("<{}>").with(""), "<>");
}

TEST(line_format, leaves_the_value_as_it_is) {
    EXPECT_EQ(line_format("{}").with("{} {x} {{}}%s\\"), "{} {x} {{}}%s\\");
}

}  // namespace
