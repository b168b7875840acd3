#include "video/native.h"

#include <cstdlib>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"

namespace {

// Service-wide counters with a value of every kind.
constexpr const char* snapshot = R"({"stream": {"debug": {
    "wide": 4294967295, "narrow": {"uint16": 65535}, "long": {"int64": 7}, "real": 7.0,
    "flag": true, "text": "7", "pair": [1920, 1080], "a.b": 1, "a_b": 2 },
    "quota": { "peak": {"double": "inf"} }, "all": [
    {"id": 1}, {"id": 2} ]}})";

class native_test : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        const temp_directory scratch;
        setenv("ORU_SNAPSHOT", scratch.write("snapshot.json", snapshot).c_str(), 1);
        owned_object<OruMap>{oru_stream_get_debug(
            nullptr, nullptr)};  // reads the file, before the directory is removed
    }

    owned_object<OruMap> map_{oru_stream_get_debug(nullptr, nullptr)};
};

TEST_F(native_test, reads_narrow_unsigned_values) {
    EXPECT_EQ(native_map_get_uint(map_.get(), "wide", 3), 4294967295U);
    EXPECT_EQ(native_map_get_uint(map_.get(), "narrow", 3), 65535U);
}

TEST_F(native_test, reads_no_other_kind_as_a_narrow_unsigned_value) {
    for (const char* key : {"long", "real", "flag", "text", "pair", "absent", "wid", "wide "}) {
        EXPECT_EQ(native_map_get_uint(map_.get(), key, 3), 3U) << key;
    }
}

TEST_F(native_test, keys_ascend_by_their_bytes) {
    EXPECT_EQ(native_map(map_.get()).keys(),
              (std::vector<std::string>{"a.b", "a_b", "flag", "long", "narrow", "pair", "real",
                                        "text", "wide"}));
}

TEST_F(native_test, entries_have_their_kind) {
    const auto entries = native_map(map_.get()).entries();
    ASSERT_EQ(entries.size(), 9U);
    EXPECT_EQ(entries[1].key, "a_b");
    EXPECT_EQ(std::get<std::uint32_t>(entries[1].value), 2U);
    EXPECT_TRUE(std::get<bool>(entries[2].value));
    EXPECT_EQ(std::get<std::int64_t>(entries[3].value), 7);
    EXPECT_EQ(std::get<std::uint16_t>(entries[4].value), 65535);
    EXPECT_EQ(std::get<native_pair>(entries[5].value).first, 1920U);
    EXPECT_EQ(std::get<native_pair>(entries[5].value).second, 1080U);
    EXPECT_EQ(std::get<double>(entries[6].value), 7.0);
    EXPECT_EQ(std::get<std::string>(entries[7].value), "7");
}

TEST_F(native_test, a_map_is_written_as_json) {
    EXPECT_EQ(native_map(map_.get()).to_json(),
              R"({"a.b":1,"a_b":2,"flag":true,"long":7,"narrow":65535,"pair":[1920,1080],)"
              R"("real":7,"text":"7","wide":4294967295})");
}

TEST_F(native_test, a_table_is_written_in_the_order_of_its_names) {
    native_table table;
    EXPECT_EQ(table.to_json(), "{}");
    table.assign("input2", "1280x720");
    table.assign("input10", "1x1");
    table.assign("input2", "1920x1080");
    EXPECT_EQ(table.to_json(), R"({"input10":"1x1","input2":"1920x1080"})");
}

TEST_F(native_test, a_table_keeps_kinds_and_the_first_entry_of_a_name) {
    const native_map native{map_.get()};
    native_table table;
    table.insert("x", native, "text");
    table.insert("x", native, "wide");
    table.insert("flag", native, "flag");
    table.insert("p", native, "pair");
    EXPECT_EQ(table.to_json(), R"({"flag":true,"p":[1920,1080],"x":"7"})");
}

TEST_F(native_test, a_value_without_a_json_form_throws) {
    const owned_object<OruMap> quota{oru_stream_get_quota(nullptr)};
    const native_map native{quota.get()};
    native_table table;
    table.insert("peak", native, "peak");
    EXPECT_THROW((void)native.to_json(), std::runtime_error);
    EXPECT_THROW((void)table.to_json(), std::runtime_error);
}

TEST_F(native_test, a_pair_begins_with_its_low_half) {
    const native_pair halves = halves_of(oru_map_get_pair32u(map_.get(), "pair", 0));
    EXPECT_EQ(halves.first, 1920U);
    EXPECT_EQ(halves.second, 1080U);
}

TEST_F(native_test, an_object_can_be_borrowed_from_or_taken_out_of_its_link) {
    const owned_object_list streams{oru_stream_get_all(nullptr)};
    ASSERT_EQ(g_list_length(streams.get()), 2U);
    EXPECT_EQ(oru_stream_get_id(object_in<OruStream>(streams.get())), 1U);
    const auto taken = take_object<OruStream>(streams.get());
    EXPECT_EQ(oru_stream_get_id(taken.get()), 1U);
    EXPECT_EQ(streams->data, nullptr);  // the list no longer releases it
    EXPECT_EQ(oru_stream_get_id(object_in<OruStream>(streams->next)), 2U);
}

TEST_F(native_test, narrow_kinds_have_the_codes_of_the_bus) {
    const native_map native(map_.get());
    EXPECT_EQ(native.kind_code("narrow"), 7U);
    EXPECT_EQ(native.kind_code("wide"), 8U);
    EXPECT_EQ(native.kind_code("text"), 2U);
}

TEST(native_resolutions, are_read_after_their_count) {
    const std::uint64_t none = 0;
    EXPECT_TRUE(native_resolutions(&none).empty());
    struct {
        std::uint64_t count = 2;
        std::uint32_t numbers[4] = {1920, 1080, 4294967295, 0};
    } set;
    const auto resolutions = native_resolutions(&set);
    ASSERT_EQ(resolutions.size(), 2U);
    EXPECT_EQ(resolutions[0].width, 1920U);
    EXPECT_EQ(resolutions[0].height, 1080U);
    EXPECT_EQ(resolutions[1].width, 4294967295U);
    EXPECT_EQ(resolutions[1].height, 0U);
}

TEST(native_resolutions, are_read_up_to_a_maximum) {
    struct {
        std::uint64_t count = 0xFFFFFFFFFFFFFFFF;  // as read from a block of another layout
        std::uint32_t numbers[2] = {1920, 1080};
    } set;
    EXPECT_EQ(native_resolution_count(&set), 0xFFFFFFFFFFFFFFFFU);
    EXPECT_TRUE(native_resolutions(&set, 0).empty());
    const auto resolutions = native_resolutions(&set, 1);
    ASSERT_EQ(resolutions.size(), 1U);
    EXPECT_EQ(resolutions[0].height, 1080U);
}

// Truncated to 32 bits, this count would be 1.
TEST(native_resolutions, of_an_impossible_count_are_rejected) {
    struct {
        std::uint64_t count = 9223372036854775809U;
        std::uint32_t numbers[2] = {1920, 1080};
    } set;
    try {
        native_resolutions(&set);
        ADD_FAILURE() << "no exception";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "a set of 9223372036854775809 resolutions");
    }
}

}  // namespace
