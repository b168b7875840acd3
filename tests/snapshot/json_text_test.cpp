#include "snapshot/json_text.h"

#include <gtest/gtest.h>

namespace {

using namespace snapshot;

using names = std::vector<std::string>;

std::string wrong_part(std::string_view text) {
    const auto got = member_names(text);
    return got ? "all is well" : std::string(got.error());
}

TEST(json_text, accepts_json_and_nothing_else) {
    for (const char* text : {"null", "-1.5e+3", R"("a\u0000b\/")", R"("\ud83c")", R"("\uD83C")",
                             R"("\\u\ud83c")", "\"\xff\"", R"([1, {"a" : []}])", " true "}) {
        EXPECT_TRUE(is_json(text)) << text;
    }
    for (const char* text : {"", "nul", "1,", "01", R"("a)", R"("\x")", "[1", "{1: 2}", "\xff"}) {
        EXPECT_FALSE(is_json(text)) << text;
    }
}

TEST(json_text, names_members_in_order) {
    EXPECT_EQ(member_names("{}"), names());
    EXPECT_EQ(member_names(" { \n} "), names());
    EXPECT_EQ(member_names(R"({"b":1,"a":[1,2],"":{"x":",","y":"}"},"\"\u0001é":"a\":,\\"})"),
              (names{"b", "a", "", "\"\1é"}));
    EXPECT_EQ(member_names("{\"b\" : \"\xff\" ,\t\"b\":null}"), (names{"b", "b"}));
    // The greatest depth of a value, in a map.
    const std::string deepest = std::string(256, '[') + std::string(256, ']');
    EXPECT_EQ(member_names("{\"deep\":" + deepest + "}"), names{"deep"});
}

TEST(json_text, returns_the_part_that_is_not_a_member) {
    EXPECT_EQ(wrong_part(""), "");
    EXPECT_EQ(wrong_part("[1]"), "[1]");
    EXPECT_EQ(wrong_part(R"({"a":1)"), R"({"a":1)");
    EXPECT_EQ(wrong_part(R"({"a":1,})"), "");
    EXPECT_EQ(wrong_part(R"({"a":1,"b"})"), R"("b")");
    EXPECT_EQ(wrong_part(R"({"a":1,b:2})"), "b:2");
    EXPECT_EQ(wrong_part(R"({"a":1,"b":nan,"c":3})"), R"("b":nan)");
    EXPECT_EQ(wrong_part(R"({"a":1 "b":2})"), R"("a":1 "b":2)");
    EXPECT_EQ(wrong_part(R"({"a":[1})"), R"("a":[1)");
    EXPECT_EQ(wrong_part(R"({"a":1}})"), R"("a":1})");
    EXPECT_EQ(wrong_part(R"({"a":"})"), R"("a":")");
}

}  // namespace
