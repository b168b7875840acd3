#include "report/line_format.h"

#include <gtest/gtest.h>

namespace {

TEST(line_format, replaces_the_braces_by_the_value) {
    EXPECT_EQ(line_format("Failed to get quota: {}").with("gone"), "Failed to get quota: gone");
    EXPECT_EQ(line_format("{} of all").with("none"), "none of all");
    EXPECT_EQ(line_format("<{}>").with(""), "<>");
}

TEST(line_format, does_not_interpret_the_value) {
    EXPECT_EQ(line_format("{}").with("{} {x} {{}}%s\\"), "{} {x} {{}}%s\\");
}

}  // namespace
