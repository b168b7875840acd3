#include "snapshot_tool/snapshot_writer.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

std::optional<std::string> form(native_value value) {
    return value_form({"key", std::move(value)});
}

TEST(snapshot_writer, puts_a_member_on_a_line) {
    snapshot_writer out;
    out.member("one", "1");
    out.open_object("empty");
    out.close();
    out.open_object("object");
    out.open_array("none");
    out.close();
    out.open_array("some");
    out.open_element();
    out.member("map", map_form({{"a", "1"}, {"b\"", "[1, 2]"}}));
    out.close();
    out.open_element();
    out.close();
    out.close();
    out.member("map", map_form({}));
    out.close();
    EXPECT_EQ(out.finish(), R"({
    "one": 1,
    "empty": {},
    "object": {
        "none": [],
        "some": [
            {
                "map": {
                    "a": 1,
                    "b\"": [1, 2]
                }
            },
            {}
        ],
        "map": {}
    }
}
)");
    EXPECT_EQ(snapshot_writer().finish(), "{}\n");
}

TEST(snapshot_writer, refuses_what_is_longer_than_a_snapshot) {
    constexpr std::size_t longest = 134217728;
    const auto text_with = [](std::size_t length) {
        snapshot_writer out;
        out.member("about", std::string(length, '1'));
        return out.finish();
    };
    const std::size_t rest = text_with(0).size();
    EXPECT_EQ(text_with(longest - rest).size(), longest);
    try {
        text_with(longest - rest + 1);
        FAIL();
    } catch (const not_recordable& error) {
        EXPECT_STREQ(
            error.what(),
            "the recording is 134217729 bytes long, more than the 134217728 of a snapshot");
    }
}

TEST(value_form, is_the_shortest_that_gives_the_kind_back) {
    EXPECT_EQ(form(true), "true");
    EXPECT_EQ(form(false), "false");
    EXPECT_EQ(form(std::uint32_t{0}), "0");
    EXPECT_EQ(form(std::uint32_t{4294967295}), "4294967295");
    EXPECT_EQ(form(std::uint16_t{0}), R"({ "uint16": 0 })");
    EXPECT_EQ(form(std::uint16_t{65535}), R"({ "uint16": 65535 })");
    EXPECT_EQ(form(std::int64_t{-1}), "-1");
    EXPECT_EQ(form(std::int64_t{0}), R"({ "int64": 0 })");
    EXPECT_EQ(form(std::int64_t{4294967295}), R"({ "int64": 4294967295 })");
    EXPECT_EQ(form(std::int64_t{4294967296}), "4294967296");
    EXPECT_EQ(form(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(form(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
    EXPECT_EQ(form(native_pair{4294967295, 0}), "[4294967295, 0]");
    EXPECT_EQ(form(native_other()), std::nullopt);
}

TEST(value_form, shows_that_a_double_is_one) {
    EXPECT_EQ(form(60.0), "60.0");
    EXPECT_EQ(form(0.0), "0.0");
    EXPECT_EQ(form(-0.0), "-0.0");
    EXPECT_EQ(form(29.97), "29.97");
    EXPECT_EQ(form(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(form(123456.0), "123456.0");
    EXPECT_EQ(form(1e5), "1e+05");
    EXPECT_EQ(form(1e22), "1e+22");
    EXPECT_EQ(form(5e-324), "5e-324");
    EXPECT_EQ(form(-1.7976931348623157e308), "-1.7976931348623157e+308");
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(form(std::copysign(nan, 1.0)), R"({ "double": "nan" })");
    EXPECT_EQ(form(std::copysign(nan, -1.0)), R"({ "double": "-nan" })");
    EXPECT_EQ(form(inf), R"({ "double": "inf" })");
    EXPECT_EQ(form(-inf), R"({ "double": "-inf" })");
}

TEST(value_form, escapes_what_json_cannot_hold_in_a_text) {
    EXPECT_EQ(form(std::string("")), R"("")");
    EXPECT_EQ(form(std::string("plain /text")), R"("plain /text")");
    EXPECT_EQ(form(std::string("\"\\\b\f\n\r\t")), R"("\"\\\b\f\n\r\t")");
    EXPECT_EQ(form(std::string("\x01\x0b\x1f\x7f")), "\"\\u0001\\u000b\\u001f\x7f\"");
    EXPECT_EQ(form(std::string("café 🎥 \u0080")), "\"café 🎥 \u0080\"");
}

TEST(value_form, gives_the_bytes_of_a_text_that_is_no_utf8) {
    EXPECT_EQ(form(std::string("o\xff")), R"({ "bytes": "6fff" })");
    EXPECT_EQ(form(std::string("\x01\xed\xa0\x80")), R"({ "bytes": "01eda080" })");
    EXPECT_EQ(form(std::string("\xc0\xaf")), R"({ "bytes": "c0af" })");
}

TEST(forms, are_short) {
    EXPECT_EQ(text_form("a \"b\"", "it"), R"("a \"b\"")");
    EXPECT_EQ(failure_form(text_form("busy", "it")), R"({ "$error": "busy" })");
    EXPECT_EQ(numbers_form({1, 2, 3, 4294967295}), "[1, 2, 3, 4294967295]");
    EXPECT_EQ(resolutions_form({}), "[]");
    EXPECT_EQ(resolutions_form({{1920, 1080}}), "[[1920, 1080]]");
    EXPECT_EQ(resolutions_form({{1920, 1080}, {1, 0}}), "[[1920, 1080], [1, 0]]");
    EXPECT_EQ(other_form("[1,2]"), R"({ "other": [1,2] })");
}

}  // namespace
