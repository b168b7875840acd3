#include "report/json.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include <gtest/gtest.h>

struct unwritable {};

namespace glz {
template <>
struct to<JSON, unwritable> {
    template <auto Options>
    static void op(unwritable, is_context auto&& context, auto&&, auto&) {
        context.error = error_code::invalid_partial_key;
    }
};
}  // namespace glz

namespace {

template <class Value>
std::string written(const Value& value) {
    std::string text = "what was there before";
    EXPECT_TRUE(write_compact(value, text));
    return text;
}

TEST(json, members_are_in_ascending_order_of_their_keys) {
    json object;
    object["b"] = 1;
    object["a"] = 2;
    object["B"] = 3;
    object["\xc3\xa5"] = 4;
    EXPECT_EQ(written(object), R"({"B":3,"a":2,"b":1,"å":4})");
}

TEST(json, every_kind_is_written_compactly) {
    json object;
    object["number"] = std::uint32_t{4294967295};
    object["tens"] = std::uint32_t{1200};
    object["text"] = "t";
    object["true"] = true;
    object["null"] = nullptr;
    object["array"] = json::array_t{1.0, 10.0, "x"};
    object["object"]["inner"] = 0.1;
    EXPECT_EQ(written(object),
              R"({"array":[1,1e+1,"x"],"null":null,"number":4294967295,)"
              R"("object":{"inner":0.10000000000000001},"tens":1.2e+3,"text":"t","true":true})");
}

// Each byte at each position of texts of several lengths: a writer that scans eight or sixteen
// bytes at once may treat the start and the end of a text differently.
TEST(json, seven_characters_are_escaped_and_no_others) {
    const std::string_view escapes = "\b\t\n\f\r\"\\";
    const std::string_view letters = "btnfr\"\\";
    for (int byte = 0; byte < 256; ++byte) {
        const auto character = static_cast<char>(byte);
        const std::size_t escape = byte == 0 ? std::string_view::npos : escapes.find(character);
        const std::string form = escape == std::string_view::npos
                                     ? std::string(1, character)
                                     : std::string("\\") + letters[escape];
        for (const std::size_t length : {1U, 7U, 8U, 9U, 15U, 16U, 17U, 31U, 32U, 33U, 70U}) {
            for (std::size_t at = 0; at < length; ++at) {
                std::string text(length, 'x');
                text[at] = character;
                std::string expected = '"' + std::string(at, 'x') + form;
                expected += std::string(length - at - 1, 'x') + '"';
                ASSERT_EQ(written(json(text)), expected) << "byte " << byte << " at " << at;
                ASSERT_EQ(written(std::map<std::string, std::uint32_t>{{text, 5}}),
                          '{' + expected + ":5}");
            }
        }
    }
}

TEST(json, maps_have_the_same_forms_and_whole_numbers_of_their_own) {
    using value = std::variant<std::string, std::uint32_t>;
    const std::map<std::string, value> map{{"b", "\x01 and \""}, {"a", std::uint32_t{1200}}};
    EXPECT_EQ(written(map), "{\"a\":1200,\"b\":\"\x01 and \\\"\"}");
}

TEST(json, merged_objects_follow_each_other_in_one_pair_of_braces) {
    json numbers;
    numbers["z"] = 10;
    numbers["a"] = 1;
    const std::map<std::string, std::string> texts{{"m", "00:00:01"}};
    const std::map<std::string, std::uint32_t> counts{{"k", 20}};
    const std::map<std::string, glz::raw_json> raw{{"h", glz::raw_json{"[1,2,oops]"}}};
    const std::map<std::string, std::string> none;

    EXPECT_EQ(written(merged(numbers, texts, counts, raw)),
              R"({"a":1,"z":1e+1,"m":"00:00:01","k":20,"h":[1,2,oops]})");
    EXPECT_EQ(written(merged(numbers, none)), R"({"a":1,"z":1e+1})");
    EXPECT_EQ(written(merged(numbers, none, counts)), R"({"a":1,"z":1e+1,"k":20})");
}

TEST(json, an_error_of_the_writer_is_returned) {
    std::string text;
    EXPECT_FALSE(write_compact(unwritable(), text));
    EXPECT_FALSE(write_document(unwritable(), text));
}

TEST(json, documents_are_indented_by_four_with_arrays_on_one_line) {
    json document;
    document["outer"]["number"] = 30;
    document["outer"]["list"] = json::array_t{1.0, 2.0};
    document["outer"]["empty"] = json::object_t{};
    document["outer"]["none"] = json::array_t{};
    std::string text;
    ASSERT_TRUE(write_document(document, text));
    EXPECT_EQ(text, R"({
    "outer": {
        "empty": {},
        "list": [1, 2],
        "none": [],
        "number": 3e+1
    }
})");
}

}  // namespace
