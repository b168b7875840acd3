#include "snapshot_tool/figures.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace snapshot_tool;

TEST(figures, write_sizes_and_places) {
    EXPECT_EQ(resolution_text({1920, 1080}), "1920x1080");
    EXPECT_EQ(resolution_text({0, 4294967295}), "0x4294967295");
    EXPECT_EQ(rectangle_text({.x = 320, .y = 180, .width = 1280, .height = 720}),
              "1280x720 at 320,180");
}

TEST(figures, write_bit_rates) {
    EXPECT_EQ(bit_rate_text(0), "0.0 kbit/s");
    EXPECT_EQ(bit_rate_text(409600), "409.6 kbit/s");
    EXPECT_EQ(bit_rate_text(999949), "999.9 kbit/s");
    EXPECT_EQ(bit_rate_text(1000000), "1.00 Mbit/s");
    EXPECT_EQ(bit_rate_text(5987654), "5.99 Mbit/s");
    EXPECT_EQ(bit_rate_text(4294967295), "4294.97 Mbit/s");
}

TEST(figures, write_mebibytes) {
    EXPECT_EQ(mebibytes_text(0), "0.0");
    EXPECT_EQ(mebibytes_text(52429), "0.1");
    EXPECT_EQ(mebibytes_text(134217728), "128.0");
    EXPECT_EQ(mebibytes_text(4294967295), "4096.0");
}

TEST(figures, write_frame_rates) {
    EXPECT_EQ(frame_rate_text(0), "0");
    EXPECT_EQ(frame_rate_text(30), "30");
    EXPECT_EQ(frame_rate_text(29.97), "29.97");
    EXPECT_EQ(frame_rate_text(0.1), "0.1");
    EXPECT_EQ(frame_rate_text(12.499), "12.5");
    EXPECT_EQ(frame_rate_text(100000), "100000");
    EXPECT_EQ(frame_rate_text(-1.5), "-1.5");
    EXPECT_EQ(frame_rate_text(999999), "999999");
    EXPECT_EQ(frame_rate_text(1e6), "1e+06");
    EXPECT_EQ(frame_rate_text(1e300), "1e+300");
    EXPECT_EQ(frame_rate_text(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(frame_rate_text(-std::numeric_limits<double>::infinity()), "-inf");
}

TEST(figures, shorten_texts_of_the_service) {
    EXPECT_EQ(short_text(8, "recorder"), "recorder");
    EXPECT_EQ(short_text(5, "a\nb\nc"), "a\\nb…");
    EXPECT_EQ(short_text(5, ""), "\"\"");
    EXPECT_EQ(whole_text(""), "\"\"");
    EXPECT_EQ(whole_text("a\nb"), "a\\nb");
}

TEST(figures, describe_failures) {
    EXPECT_EQ(failure_text("settings", "no such\nstream"), "settings failed: no such\\nstream");
    EXPECT_EQ(failure_text("streams", ""), "streams failed");
}

}  // namespace
