#include "snapshot_tool/columns.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using namespace snapshot_tool;

TEST(columns, are_counted_as_on_a_terminal) {
    EXPECT_EQ(columns_of(""), 0U);
    EXPECT_EQ(columns_of("recorder"), 8U);
    EXPECT_EQ(columns_of("café"), 4U);
    EXPECT_EQ(columns_of("cafe\u0301"), 4U);
    EXPECT_EQ(columns_of("日本"), 4U);
    EXPECT_EQ(columns_of("\U0001f3a5 live"), 7U);
}

TEST(columns, cut_longer_texts_only) {
    EXPECT_EQ(cut_to(8, "recorder"), "recorder");
    EXPECT_EQ(cut_to(7, "recorder"), "record…");
    EXPECT_EQ(cut_to(1, "recorder"), "…");
    EXPECT_EQ(cut_to(4, "日本"), "日本");
    EXPECT_EQ(cut_to(3, "日本"), "日…");
    EXPECT_EQ(cut_to(2, "日本"), "…");  // half a character cannot be shown
    EXPECT_EQ(cut_to(4, "cafe\u0301s"), "caf…");
    EXPECT_EQ(cut_to(5, "cafe\u0301s"), "cafe\u0301s");
}

}  // namespace
