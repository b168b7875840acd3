#include "qwire.h"

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

std::vector<std::string> keys(const qw::map& map) {
    std::vector<std::string> keys;
    for (const auto& entry : map) {
        keys.emplace_back(entry.key);
    }
    return keys;
}

std::string json(const qw::map& map) {
    std::string out = "replaced";
    const auto written = map.to_json(out);
    return written ? out : "failed: " + written.error();
}

template <class T>
T at(const qw::map& map, std::string_view key) {
    const auto* value = map.find(key);
    return value ? value->get_if<T>().value_or(T{}) : T{};
}

TEST(value, has_the_kind_codes_of_the_bus) {
    EXPECT_EQ(static_cast<int>(qw::value(true).kind()), 1);
    EXPECT_EQ(static_cast<int>(qw::value("text"sv).kind()), 2);
    EXPECT_EQ(static_cast<int>(qw::value(std::int64_t{1}).kind()), 3);
    EXPECT_EQ(static_cast<int>(qw::value(1.0).kind()), 4);
    EXPECT_EQ(static_cast<int>(qw::value(qw::pair32u(1, 2)).kind()), 5);
    EXPECT_EQ(static_cast<int>(qw::value(qw::other{"null"}).kind()), 6);
    EXPECT_EQ(static_cast<int>(qw::value(std::uint16_t{1}).kind()), 7);
    EXPECT_EQ(static_cast<int>(qw::value(std::uint32_t{1}).kind()), 8);
}

TEST(value, returns_its_content_only_as_its_own_kind) {
    const qw::value value(std::uint16_t{7});
    EXPECT_EQ(value.get_if<std::uint16_t>(), 7);
    EXPECT_EQ(value.get_if<std::uint32_t>(), std::nullopt);
    EXPECT_EQ(value.get_if<bool>(), std::nullopt);
    EXPECT_EQ(qw::value(false).get_if<bool>(), false);
    EXPECT_EQ(qw::value("text"sv).get_if<std::string_view>(), "text");
    EXPECT_EQ(qw::value(std::int64_t{-5}).get_if<std::int64_t>(), -5);
    EXPECT_EQ(qw::value(-0.5).get_if<double>(), -0.5);
    EXPECT_EQ(qw::value(qw::pair32u(4294967295, 2)).get_if<qw::pair32u>(),
              qw::pair32u(4294967295, 2));
    EXPECT_EQ(qw::value(std::uint32_t{4294967295}).get_if<std::uint32_t>(), 4294967295);
    const qw::value other(qw::other{"[1]"});
    EXPECT_EQ(other.get_if<qw::other>(), qw::other{"[1]"});
    EXPECT_EQ(other.get_if<std::string_view>(), std::nullopt);
    EXPECT_EQ(qw::value("[1]"sv).get_if<qw::other>(), std::nullopt);
}

TEST(map, starts_empty) {
    const qw::map map;
    EXPECT_TRUE(map.empty());
    EXPECT_EQ(map.begin(), map.end());
    EXPECT_EQ(map.find(""), nullptr);
    EXPECT_EQ(json(map), "{}");
    EXPECT_TRUE(map.filter_prefix("").empty());
}

TEST(map, sorts_its_entries_by_the_bytes_of_the_keys) {
    qw::map map;
    for (const auto key : {"input2"sv, "\xC3\xA9"sv, "input10"sv, "Z"sv, "input1"sv, ""sv}) {
        EXPECT_TRUE(map.insert(key, true));
    }
    EXPECT_EQ(keys(map),
              (std::vector<std::string>{"", "Z", "input1", "input10", "input2", "\xC3\xA9"}));
    EXPECT_EQ(map.size(), 6U);
    EXPECT_NE(map.find("input10"), nullptr);
    EXPECT_EQ(map.find("input3"), nullptr);
    EXPECT_EQ(map.find("input"), nullptr);
}

TEST(map, finds_every_key_and_no_other_in_maps_of_any_size) {
    qw::map map;
    for (std::uint32_t count = 0; count <= 100; ++count) {
        for (std::uint32_t i = 0; i < count; ++i) {
            EXPECT_EQ(at<std::uint32_t>(map, std::string(1, static_cast<char>('!' + i)) + "1"), i)
                << "of " << count;
        }
        for (std::uint32_t i = 0; i <= count; ++i) {
            EXPECT_EQ(map.find(std::string(1, static_cast<char>('!' + i)) + "0"), nullptr)
                << i << " of " << count;
        }
        map.assign(std::string(1, static_cast<char>('!' + count)) + "1", count);
    }
}

TEST(map, insert_keeps_an_existing_value_and_assign_replaces_it) {
    qw::map map;
    EXPECT_TRUE(map.insert("a", std::uint32_t{1}));
    EXPECT_FALSE(map.insert("a", std::uint32_t{2}));
    EXPECT_EQ(at<std::uint32_t>(map, "a"), 1U);
    map.assign("a", "text"sv);
    EXPECT_EQ(at<std::string_view>(map, "a"), "text");
    map.assign("b", false);
    EXPECT_EQ(map.size(), 2U);
}

TEST(map, copies_texts) {
    qw::map map;
    {
        std::string key(100, 'k');
        std::string text(100, 't');
        map.insert(key, std::string_view(text));
        map.assign("short", std::string_view(text).substr(0, 3));
        map.assign("unknown", qw::other{std::string_view(text).substr(0, 4)});
        key.assign(100, 'x');
        text.assign(100, 'y');
    }
    const auto text = at<std::string_view>(map, std::string(100, 'k'));
    EXPECT_EQ(text, std::string(100, 't'));
    EXPECT_EQ(text.data()[100], '\0');
    EXPECT_STREQ(at<std::string_view>(map, "short").data(), "ttt");
    EXPECT_STREQ(at<qw::other>(map, "unknown").json.data(), "tttt");
    EXPECT_EQ(map.begin()->key.data()[100], '\0');
}

TEST(map, accepts_a_view_of_its_own_value) {
    qw::map map;
    map.insert("a", "a text that is too long for any small string"sv);
    for (const auto key : {"b"sv, "c"sv, "d"sv, "a"sv}) {
        map.assign(key, *map.find("a"));
    }
    for (const auto key : {"a"sv, "b"sv, "c"sv, "d"sv}) {
        EXPECT_EQ(at<std::string_view>(map, key), "a text that is too long for any small string");
    }
}

TEST(map, a_copy_is_independent) {
    qw::map original;
    original.insert("a", std::uint32_t{1});
    original.insert("b", "text"sv);
    qw::map copy = original;
    EXPECT_EQ(copy.begin(), original.begin());  // shared until one of them changes
    copy.assign("a", std::uint32_t{2});
    EXPECT_EQ(json(original), R"({"a":1,"b":"text"})");
    original.erase("b");
    EXPECT_EQ(json(copy), R"({"a":2,"b":"text"})");
    EXPECT_EQ(json(original), R"({"a":1})");
}

TEST(map, a_copy_outlives_the_original) {
    qw::map copy;
    {
        qw::map original;
        original.insert("a", "a text that is too long for any small string"sv);
        copy = original;
        copy.insert("b", true);
    }
    EXPECT_EQ(json(copy), R"({"a":"a text that is too long for any small string","b":true})");
}

TEST(map, is_empty_after_a_move) {
    qw::map map;
    map.insert("a", true);
    const qw::map taken = std::move(map);
    EXPECT_EQ(taken.size(), 1U);
    EXPECT_TRUE(map.empty());  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(map.insert("b", true));
    EXPECT_EQ(json(map), R"({"b":true})");
}

TEST(map, refers_to_the_entries_of_its_owner_until_it_changes) {
    struct storage {
        std::string text = "left";
        std::vector<qw::map::entry> entries;
    };
    auto owner = std::make_shared<storage>();
    owner->entries = {{"a", std::uint16_t{1}}, {"side", std::string_view(owner->text)}};
    const std::weak_ptr<storage> alive = owner;
    qw::map map(owner->entries.data(), owner->entries.size(), owner);
    const qw::map::entry* entries = owner->entries.data();
    owner.reset();

    EXPECT_FALSE(alive.expired());
    EXPECT_EQ(map.begin(), entries);
    qw::map changed = map;
    changed.erase("a");
    map = qw::map();
    EXPECT_FALSE(alive.expired());  // its text is still in use
    EXPECT_EQ(json(changed), R"({"side":"left"})");
    changed = qw::map();
    EXPECT_TRUE(alive.expired());
}

TEST(map, erases_a_key_or_all_keys_with_a_prefix) {
    qw::map map;
    for (const auto key : {"a", "capture", "capture.width", "captured", "captur", "d"}) {
        map.insert(key, true);
    }
    map.erase("absent");
    map.erase("a");
    EXPECT_EQ(map.size(), 5U);
    map.erase_prefix("capture");
    EXPECT_EQ(keys(map), (std::vector<std::string>{"captur", "d"}));
    map.erase_prefix("x");
    EXPECT_EQ(map.size(), 2U);
    map.erase_prefix("");
    EXPECT_TRUE(map.empty());
    map.erase("d");
    map.insert("d", true);
    EXPECT_EQ(json(map), R"({"d":true})");
}

TEST(map, filters_by_prefix_and_keeps_whole_keys) {
    qw::map filtered;
    {
        qw::map map;
        for (const auto key : {"identity", "identity.", "identity.b", "identity.a", "identity/"}) {
            map.insert(key, std::string_view(key));
        }
        filtered = map.filter_prefix("identity.");
        EXPECT_EQ(map.filter_prefix("").size(), 5U);
        EXPECT_TRUE(map.filter_prefix("other").empty());
    }
    EXPECT_EQ(keys(filtered), (std::vector<std::string>{"identity.", "identity.a", "identity.b"}));
    filtered.erase("identity.");
    EXPECT_EQ(json(filtered), R"({"identity.a":"identity.a","identity.b":"identity.b"})");
}

TEST(map_to_json, writes_every_kind) {
    qw::map map;
    map.insert("boolean", true);
    map.insert("other boolean", false);
    map.insert("string", "text"sv);
    map.insert("int64", std::numeric_limits<std::int64_t>::min());
    map.insert("double", 0.1);
    map.insert("pair", qw::pair32u(1920, 4294967295));
    map.insert("uint16", std::uint16_t{65535});
    map.insert("uint32", std::uint32_t{4294967295});
    EXPECT_EQ(json(map), R"({"boolean":true,"double":0.1,"int64":-9223372036854775808,)"
                         R"("other boolean":false,"pair":[1920,4294967295],"string":"text",)"
                         R"("uint16":65535,"uint32":4294967295})");
}

TEST(map_to_json, writes_the_shortest_decimal_of_a_double) {
    const std::array<std::pair<double, const char*>, 8> cases{{{0.0, "0"},
                                                               {-0.0, "-0"},
                                                               {29.97, "29.97"},
                                                               {1e21, "1e+21"},
                                                               {5e-324, "5e-324"},
                                                               {1.0 / 3, "0.3333333333333333"},
                                                               {-2.5, "-2.5"},
                                                               {1e-7, "1e-07"}}};
    for (const auto& [number, text] : cases) {
        qw::map map;
        map.insert("x", number);
        EXPECT_EQ(json(map), "{\"x\":" + std::string(text) + "}");
    }
}

TEST(map_to_json, writes_an_unknown_kind_unchanged) {
    qw::map map;
    map.insert("a", qw::other{R"({"b":[1.50,"\u0041",null],"b":-0})"});
    map.insert("c", true);
    EXPECT_EQ(json(map), R"({"a":{"b":[1.50,"\u0041",null],"b":-0},"c":true})");
}

TEST(map_to_json, escapes_keys_and_strings) {
    qw::map map;
    map.insert("\"\\/\b\f\n\r\t\x01\x1f\x7f\xC3\xA9"sv, "\x0e\xff"sv);
    EXPECT_EQ(json(map),
              "{\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\xC3\xA9\":\"\\u000e\xff\"}");
}

TEST(map_to_json, names_the_key_of_a_double_that_is_not_finite) {
    for (const double number :
         {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()}) {
        qw::map map;
        map.insert("a", true);
        map.insert("frame.rate", number);
        std::string out = "as it was";
        const auto written = map.to_json(out);
        ASSERT_FALSE(written);
        EXPECT_NE(written.error().find("'frame.rate'"), std::string::npos) << written.error();
        EXPECT_EQ(out, "as it was");
    }
}

}  // namespace
