#include "oru.h"

#include <cmath>
#include <format>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <stdlib.h>

#include "qwire.h"
#include "replay/current.h"
#include "support/snapshot_file.h"

namespace {

using namespace std::string_literals;

struct unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

template <class Object>
using owned = std::unique_ptr<Object, unref>;

// A GError as an out-parameter, and as text.
class error {
  public:
    ~error() { g_clear_error(&error_); }
    operator GError**() { return &error_; }  // NOLINT(google-explicit-constructor)

    // Returns such as "unreachable: MESSAGE", or "" if it is not set.
    std::string text() const {
        if (!error_) {
            return "";
        }
        EXPECT_EQ(error_->domain, ORU_ERROR);
        constexpr const char* names[] = {"unreachable", "not recorded", "failed"};
        return std::format("{}: {}", names[error_->code], error_->message);
    }

  private:
    GError* error_ = nullptr;
};

// A list of owned objects.
template <class Object>
class list {
  public:
    explicit list(GList* first) : first_(first) {}
    ~list() { g_list_free_full(first_, g_object_unref); }
    list(const list&) = delete;
    list& operator=(const list&) = delete;

    guint size() const { return g_list_length(first_); }
    Object* operator[](guint i) const { return static_cast<Object*>(g_list_nth_data(first_, i)); }

  private:
    GList* first_;
};

class oru_test : public testing::Test {
  protected:
    oru_test() { setenv("ORU_SNAPSHOT", file.path().c_str(), 1); }
    ~oru_test() override {
        unsetenv("ORU_SNAPSHOT");
        replay::reset();
    }

    void record(std::string_view text) {
        file.write(text);
        replay::reset();
    }

    const snapshot_file file;
};

// Checks that a function returns a map with this JSON text, or the error with this text.
template <class Get>
void expect_map(Get&& get, const std::string& expected) {
    error wrong;
    const owned<OruMap> map(get(wrong));
    std::string answer = wrong.text();
    EXPECT_EQ(map == nullptr, !answer.empty());
    if (map) {
        EXPECT_TRUE(oru_map_native_ref(map.get())->to_json(answer));
    }
    EXPECT_EQ(answer, expected);
    // The error is optional.
    const owned<OruMap> again(get(nullptr));
    EXPECT_EQ(again == nullptr, map == nullptr);
}

// --- Maps ---------------------------------------------------------------------------------------

// One value of each kind, and what each getter returns for it. The defaults are 7, 7.0, FALSE,
// "default" and 7.
TEST_F(oru_test, map_getters_widen_unsigned_numbers_and_nothing_else) {
    record(R"({"system":{"caps":{
        "boolean": true, "string": "text", "uint32": 4294967295, "int64": -5, "double": 2.5,
        "pair": [1, 2], "uint16": {"uint16": 65535}, "small int64": {"int64": 5},
        "whole double": {"double": 5}, "bytes": {"bytes": "6fff"}, "other text": {"other": "text"},
        "other number": {"other": 5}, "other pair": {"other": [1, 2]}, "other flag": {"other": true}
        }}})");
    const owned<OruSystem> system(oru_system_new(nullptr));
    ASSERT_NE(system, nullptr);
    const owned<OruMap> map(oru_system_get_caps(system.get(), nullptr));
    ASSERT_NE(map, nullptr);

    struct row {
        const char* key;
        guint32 as_uint32;
        gint64 as_int64;
        gdouble as_double;
        gboolean as_boolean;
        const char* as_string;
        guint64 as_pair;
    };
    const row rows[] = {
        {"boolean", 7, 7, 7.0, TRUE, "default", 7},
        {"string", 7, 7, 7.0, FALSE, "text", 7},
        {"uint32", 4294967295, 4294967295, 4294967295.0, FALSE, "default", 7},
        {"int64", 7, -5, 7.0, FALSE, "default", 7},
        {"double", 7, 7, 2.5, FALSE, "default", 7},
        {"pair", 7, 7, 7.0, FALSE, "default", (guint64{2} << 32) + 1},
        {"uint16", 65535, 65535, 65535.0, FALSE, "default", 7},
        {"small int64", 7, 5, 7.0, FALSE, "default", 7},
        {"whole double", 7, 7, 5.0, FALSE, "default", 7},
        {"bytes", 7, 7, 7.0, FALSE, "o\xFF", 7},
        {"other text", 7, 7, 7.0, FALSE, "default", 7},
        {"other number", 7, 7, 7.0, FALSE, "default", 7},
        {"other pair", 7, 7, 7.0, FALSE, "default", 7},
        {"other flag", 7, 7, 7.0, FALSE, "default", 7},
        {"absent", 7, 7, 7.0, FALSE, "default", 7},
    };
    for (const row& expected : rows) {
        EXPECT_EQ(oru_map_get_uint32(map.get(), expected.key, 7), expected.as_uint32)
            << expected.key;
        EXPECT_EQ(oru_map_get_int64(map.get(), expected.key, 7), expected.as_int64) << expected.key;
        EXPECT_EQ(oru_map_get_double(map.get(), expected.key, 7.0), expected.as_double)
            << expected.key;
        EXPECT_EQ(oru_map_get_boolean(map.get(), expected.key, FALSE), expected.as_boolean)
            << expected.key;
        EXPECT_EQ(oru_map_get_boolean(map.get(), expected.key, TRUE), TRUE) << expected.key;
        gsize length = 99;
        EXPECT_STREQ(oru_map_get_string(map.get(), expected.key, &length, "default"),
                     expected.as_string);
        EXPECT_EQ(length, strlen(expected.as_string)) << expected.key;
        EXPECT_EQ(oru_map_get_pair32u(map.get(), expected.key, 7), expected.as_pair)
            << expected.key;
    }
    EXPECT_TRUE(oru_map_contains(map.get(), "pair"));
    EXPECT_TRUE(oru_map_contains(map.get(), "other text"));
    EXPECT_FALSE(oru_map_contains(map.get(), "absent"));
}

TEST_F(oru_test, map_string_default_can_be_null) {
    const owned<OruMap> map(oru_map_new());
    EXPECT_EQ(oru_map_get_string(map.get(), "absent", nullptr, nullptr), nullptr);
    gsize length = 99;
    EXPECT_EQ(oru_map_get_string(map.get(), "absent", &length, nullptr), nullptr);
    EXPECT_EQ(length, 0U);
    oru_map_set_string(map.get(), "key", "first");
    oru_map_set_string(map.get(), "key", "second");
    EXPECT_STREQ(oru_map_get_string(map.get(), "key", nullptr, nullptr), "second");
}

TEST_F(oru_test, map_changes_affect_no_other_map) {
    record(R"({"mode":{"info":{"view":"a","capture.width":1,"captured":2,"available":3,"x":4}}})");
    const owned<OruMode> mode(oru_mode_new(nullptr));
    ASSERT_NE(mode, nullptr);
    const owned<OruMap> map(oru_mode_get_info(mode.get(), nullptr));
    oru_map_remove(map.get(), "view");
    oru_map_remove(map.get(), "absent");
    oru_map_remove_prefix(map.get(), "capture");
    EXPECT_FALSE(oru_map_empty(map.get()));
    std::string json;
    ASSERT_TRUE(oru_map_native_ref(map.get())->to_json(json));
    EXPECT_EQ(json, R"({"available":3,"x":4})");

    const owned<OruMap> filtered(oru_map_filter_prefix(map.get(), "av"));
    oru_map_remove_prefix(map.get(), "");
    EXPECT_TRUE(oru_map_empty(map.get()));
    ASSERT_TRUE(oru_map_native_ref(filtered.get())->to_json(json));
    EXPECT_EQ(json, R"({"available":3})");
    expect_map([&](GError** e) { return oru_mode_get_info(mode.get(), e); },
               R"({"available":3,"capture.width":1,"captured":2,"view":"a","x":4})");
}

// --- Every operation, recorded ------------------------------------------------------------------

TEST_F(oru_test, returns_recorded_answers) {
    record(R"({
        "system": {"caps": {"is": "caps"}},
        "mode": {"info": {"is": "mode info"}},
        "stream": {"debug": {"is": "all debug"}, "quota": {"is": "quota"}, "limit": {"is": "limit"},
                   "all": [{"id": 3, "info": {"is": "info"}, "settings": {"is": "settings"},
                            "debug": {"is": "debug"}}, {"id": 1}, {}]},
        "channel": {"info": {"is": "channels"},
                    "all": [{"id": 0, "properties": {"key": "input", "n": 1}, "info": {"is": "channel"},
                             "crop": [1, 2, 3, 4], "crop_max": [5, 6],
                             "resolutions": {"none": [], "available": [[1920, 1080], [1280, 720]]}},
                            {"id": 7, "properties": {"key": "view"}},
                            {"id": 8, "properties": {"key": "input", "side": "left"}}]},
        "input": {"all": [{"id": 2}, {"id": 1, "info": {"is": "input"}, "crop": [9, 8, 7, 4294967295],
                           "resolution_unrotated": {"view": [1, 1], "capture": [640, 480]}}]},
        "output": {"all": [{"id": 0, "info": {"is": "output"}, "settings": {"is": "set"}}]}})");

    const owned<OruSystem> system(oru_system_new(nullptr));
    ASSERT_NE(system, nullptr);
    expect_map([&](GError** e) { return oru_system_get_caps(system.get(), e); },
               R"({"is":"caps"})");
    const owned<OruMode> mode(oru_mode_new(nullptr));
    ASSERT_NE(mode, nullptr);
    expect_map([&](GError** e) { return oru_mode_get_info(mode.get(), e); },
               R"({"is":"mode info"})");

    error wrong;
    const list<OruStream> streams(oru_stream_get_all(wrong));
    EXPECT_EQ(wrong.text(), "");
    ASSERT_EQ(streams.size(), 3U);
    EXPECT_EQ(oru_stream_get_id(streams[0]), 3U);
    EXPECT_EQ(oru_stream_get_id(streams[1]), 1U);
    EXPECT_EQ(oru_stream_get_id(streams[2]), 0U);
    expect_map([&](GError** e) { return oru_stream_get_info(streams[0], e); }, R"({"is":"info"})");
    expect_map([&](GError** e) { return oru_stream_get_settings(streams[0], e); },
               R"({"is":"settings"})");
    expect_map([&](GError** e) { return oru_stream_get_debug(streams[0], e); },
               R"({"is":"debug"})");
    expect_map([&](GError** e) { return oru_stream_get_debug(nullptr, e); },
               R"({"is":"all debug"})");
    expect_map(oru_stream_get_quota, R"({"is":"quota"})");
    expect_map(oru_stream_get_limit, R"({"is":"limit"})");

    const list<OruChannel> channels(oru_channel_get_all(wrong));
    EXPECT_EQ(wrong.text(), "");
    ASSERT_EQ(channels.size(), 3U);
    EXPECT_EQ(oru_channel_get_id(channels[0]), 0U);
    EXPECT_EQ(oru_channel_get_id(channels[1]), 7U);
    expect_map([&](GError** e) { return oru_channel_get_info(nullptr, e); },
               R"({"is":"channels"})");
    expect_map([&](GError** e) { return oru_channel_get_info(channels[0], e); },
               R"({"is":"channel"})");
    guint32 x = 0;
    guint32 y = 0;
    guint32 width = 0;
    guint32 height = 0;
    EXPECT_TRUE(oru_channel_get_crop(channels[0], &x, &y, &width, &height, wrong));
    EXPECT_EQ((std::vector<guint32>{x, y, width, height}), (std::vector<guint32>{1, 2, 3, 4}));
    EXPECT_TRUE(oru_channel_get_crop_max(channels[0], &width, &height, wrong));
    EXPECT_EQ((std::vector<guint32>{width, height}), (std::vector<guint32>{5, 6}));

    const owned<OruMap> filter(oru_map_new());
    oru_map_set_string(filter.get(), "select", "available");
    OruResolutionSet* set = oru_channel_get_resolutions(channels[0], filter.get(), wrong);
    ASSERT_NE(set, nullptr);
    ASSERT_EQ(set->count, 2U);
    EXPECT_EQ(oru_resolution_set_items(set)[0].width, 1920U);
    EXPECT_EQ(oru_resolution_set_items(set)[0].height, 1080U);
    EXPECT_EQ(oru_resolution_set_items(set)[1].width, 1280U);
    EXPECT_EQ(oru_resolution_set_items(set)[1].height, 720U);
    g_free(set);
    oru_map_set_string(filter.get(), "select", "none");
    set = oru_channel_get_resolutions(channels[0], filter.get(), wrong);
    ASSERT_NE(set, nullptr);
    EXPECT_EQ(set->count, 0U);
    g_free(set);

    const owned<OruInput> input(oru_input_new(1, wrong));
    ASSERT_NE(input, nullptr);
    expect_map([&](GError** e) { return oru_input_get_info(input.get(), e); }, R"({"is":"input"})");
    EXPECT_TRUE(oru_input_get_crop(input.get(), &x, &y, &width, &height, wrong));
    EXPECT_EQ((std::vector<guint32>{x, y, width, height}),
              (std::vector<guint32>{9, 8, 7, 4294967295}));
    EXPECT_TRUE(oru_input_get_resolution_unrotated(input.get(), "capture", &width, &height, wrong));
    EXPECT_EQ((std::vector<guint32>{width, height}), (std::vector<guint32>{640, 480}));

    const owned<OruOutput> output(oru_output_new(0, wrong));
    ASSERT_NE(output, nullptr);
    expect_map([&](GError** e) { return oru_output_get_info(output.get(), e); },
               R"({"is":"output"})");
    expect_map([&](GError** e) { return oru_output_get_settings(output.get(), e); },
               R"({"is":"set"})");
    EXPECT_EQ(wrong.text(), "");
}

std::vector<guint32> ids_of(GList* list_of_channels) {
    const list<OruChannel> channels(list_of_channels);
    std::vector<guint32> found;
    for (guint i = 0; i < channels.size(); ++i) {
        found.push_back(oru_channel_get_id(channels[i]));
    }
    return found;
}

// Returns the ids of the channels that the filter finds.
std::vector<guint32> filtered(OruMap* filter) {
    error wrong;
    const auto found = ids_of(oru_channel_get_filtered(filter, wrong));
    EXPECT_EQ(wrong.text(), "");
    return found;
}

TEST_F(oru_test, filters_channels_by_their_properties) {
    record(R"({"channel":{"all":[
        {"id":0,"properties":{"key":"input","n":1}}, {"id":1,"properties":{"key":"view"}}, {"id":2},
        {"id":3,"properties":{"side":"left","key":"input"}}, {"id":4,"properties":{"key":5}}]}})");
    const owned<OruMap> filter(oru_map_new());
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{0, 1, 2, 3, 4}));
    oru_map_set_string(filter.get(), "key", "input");
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{0, 3}));
    oru_map_set_string(filter.get(), "side", "left");
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{3}));
    oru_map_set_string(filter.get(), "key", "inpu");
    EXPECT_EQ(filtered(filter.get()), std::vector<guint32>{});

    // Other values than strings in the filter are ignored.
    const owned<OruMap> other(oru_map_new());
    record(R"({"mode":{"info":{"n":2}},"channel":{"all":[{"id":0,"properties":{"n":1}}]}})");
    const owned<OruMode> mode(oru_mode_new(nullptr));
    const owned<OruMap> number(oru_mode_get_info(mode.get(), nullptr));
    EXPECT_EQ(filtered(number.get()), (std::vector<guint32>{0}));
}

TEST_F(oru_test, answers_the_filter_for_inputs_with_the_filtered_list) {
    record(R"({"channel":{
        "all":[{"id":0,"properties":{"key":"input"}},{"id":1,"properties":{"key":"view"}}],
        "filtered":[{"id":5,"info":{"is":"five"}},{"id":1,"properties":{"key":"view"},
                     "info":{"is":"one"}}]}})");
    EXPECT_EQ(ids_of(oru_channel_get_all(nullptr)), (std::vector<guint32>{0, 1}));
    const owned<OruMap> filter(oru_map_new());
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{0, 1}));
    oru_map_set_string(filter.get(), "key", "view");
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{1}));
    oru_map_set_string(filter.get(), "key", "input");
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{5, 1}));
    oru_map_set_string(filter.get(), "side", "left");
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{5, 1}));

    const list<OruChannel> channels(oru_channel_get_filtered(filter.get(), nullptr));
    expect_map([&](GError** e) { return oru_channel_get_info(channels[1], e); }, R"({"is":"one"})");
    expect_map([](GError** e) { return oru_channel_get_info(nullptr, e); },
               "not recorded: channel info not recorded");
}

TEST_F(oru_test, answers_the_filter_for_inputs_if_the_list_of_all_channels_fails) {
    record(R"({"channel":{"all":{"$error":"busy"},"filtered":[{"id":5}]}})");
    error all;
    EXPECT_EQ(oru_channel_get_all(all), nullptr);
    EXPECT_EQ(all.text(), "failed: busy");
    const owned<OruMap> filter(oru_map_new());
    error other;
    EXPECT_EQ(oru_channel_get_filtered(filter.get(), other), nullptr);
    EXPECT_EQ(other.text(), "failed: busy");
    oru_map_set_string(filter.get(), "key", "input");
    EXPECT_EQ(filtered(filter.get()), (std::vector<guint32>{5}));
    record(R"({"channel":{"all":[{"properties":{"key":"input"}}],"filtered":[]}})");
    EXPECT_EQ(filtered(filter.get()), std::vector<guint32>{});
}

TEST_F(oru_test, an_empty_list_is_not_an_error) {
    record(R"({"stream":{"all":[]},"channel":{"all":[]}})");
    error wrong;
    const owned<OruMap> filter(oru_map_new());
    EXPECT_EQ(oru_stream_get_all(wrong), nullptr);
    EXPECT_EQ(oru_channel_get_all(wrong), nullptr);
    EXPECT_EQ(oru_channel_get_filtered(filter.get(), wrong), nullptr);
    EXPECT_EQ(wrong.text(), "");
}

// --- Every operation, failing -------------------------------------------------------------------

// Calls every operation by name. Operations on objects are called if the object exists: a stream, a
// channel, input 1, output 0.
std::vector<std::pair<std::string, std::string>> every_error() {
    std::vector<std::pair<std::string, std::string>> errors;
    const auto note = [&](const char* operation, auto&& call) {
        guint32 untouched[4] = {11, 22, 33, 44};
        error wrong;
        const bool succeeded = call(static_cast<GError**>(wrong), untouched);
        EXPECT_EQ(succeeded, wrong.text().empty()) << operation;
        EXPECT_EQ(
            untouched[0] == 11 && untouched[1] == 22 && untouched[2] == 33 && untouched[3] == 44,
            wrong.text() != "" || !strstr(operation, "_crop"))
            << operation;
        // The same without an error.
        EXPECT_EQ(succeeded, call(nullptr, untouched)) << operation;
        errors.emplace_back(operation, wrong.text());
    };
    const auto note_object = [&](const char* operation, auto&& call) {
        note(operation, [&](GError** e, guint32*) {
            const owned<std::remove_pointer_t<decltype(call(e))>> object(call(e));
            return object != nullptr;
        });
    };
    const auto note_list = [&](const char* operation, auto&& call) {
        note(operation, [&](GError** e, guint32*) {
            const list<GObject> all(call(e));
            return all.size() > 0;
        });
    };

    note_list("stream_get_all", oru_stream_get_all);
    note_object("stream_get_debug(NULL)",
                [](GError** e) { return oru_stream_get_debug(nullptr, e); });
    note_object("stream_get_quota", oru_stream_get_quota);
    note_object("stream_get_limit", oru_stream_get_limit);
    const list<OruStream> streams(oru_stream_get_all(nullptr));
    if (OruStream* stream = streams[0]) {
        note_object("stream_get_info", [&](GError** e) { return oru_stream_get_info(stream, e); });
        note_object("stream_get_settings",
                    [&](GError** e) { return oru_stream_get_settings(stream, e); });
        note_object("stream_get_debug",
                    [&](GError** e) { return oru_stream_get_debug(stream, e); });
    }

    const owned<OruMap> filter(oru_map_new());
    note_list("channel_get_all", oru_channel_get_all);
    note_list("channel_get_filtered",
              [&](GError** e) { return oru_channel_get_filtered(filter.get(), e); });
    oru_map_set_string(filter.get(), "select", "available");
    note_object("channel_get_info(NULL)",
                [](GError** e) { return oru_channel_get_info(nullptr, e); });
    const list<OruChannel> channels(oru_channel_get_all(nullptr));
    if (OruChannel* channel = channels[0]) {
        note_object("channel_get_info",
                    [&](GError** e) { return oru_channel_get_info(channel, e); });
        note("channel_get_resolutions", [&](GError** e, guint32*) {
            OruResolutionSet* set = oru_channel_get_resolutions(channel, filter.get(), e);
            const bool there = set != nullptr;
            g_free(set);
            return there;
        });
        note("channel_get_crop", [&](GError** e, guint32* to) {
            return bool(oru_channel_get_crop(channel, to, to + 1, to + 2, to + 3, e));
        });
        note("channel_get_crop_max", [&](GError** e, guint32* to) {
            return bool(oru_channel_get_crop_max(channel, to, to + 1, e));
        });
    }

    note_object("input_new", [](GError** e) { return oru_input_new(1, e); });
    const owned<OruInput> input(oru_input_new(1, nullptr));
    if (input) {
        note_object("input_get_info",
                    [&](GError** e) { return oru_input_get_info(input.get(), e); });
        note("input_get_crop", [&](GError** e, guint32* to) {
            return bool(oru_input_get_crop(input.get(), to, to + 1, to + 2, to + 3, e));
        });
        note("input_get_resolution_unrotated", [&](GError** e, guint32*) {
            guint32 width = 1;
            guint32 height = 2;
            const bool there =
                oru_input_get_resolution_unrotated(input.get(), "capture", &width, &height, e);
            EXPECT_EQ(there, width != 1 || height != 2);
            return there;
        });
    }
    note_object("output_new", [](GError** e) { return oru_output_new(0, e); });
    const owned<OruOutput> output(oru_output_new(0, nullptr));
    if (output) {
        note_object("output_get_info",
                    [&](GError** e) { return oru_output_get_info(output.get(), e); });
        note_object("output_get_settings",
                    [&](GError** e) { return oru_output_get_settings(output.get(), e); });
    }
    note_object("system_new", oru_system_new);
    const owned<OruSystem> system(oru_system_new(nullptr));
    if (system) {
        note_object("system_get_caps",
                    [&](GError** e) { return oru_system_get_caps(system.get(), e); });
    }
    note_object("mode_new", oru_mode_new);
    const owned<OruMode> mode(oru_mode_new(nullptr));
    if (mode) {
        note_object("mode_get_info", [&](GError** e) { return oru_mode_get_info(mode.get(), e); });
    }
    return errors;
}

using errors = std::vector<std::pair<std::string, std::string>>;

TEST_F(oru_test, reports_what_is_not_recorded) {
    record("{}");
    EXPECT_EQ(every_error(),
              (errors{{"stream_get_all", "not recorded: streams not recorded"},
                      {"stream_get_debug(NULL)", "not recorded: stream debug not recorded"},
                      {"stream_get_quota", "not recorded: stream quota not recorded"},
                      {"stream_get_limit", "not recorded: stream limit not recorded"},
                      {"channel_get_all", "not recorded: channels not recorded"},
                      {"channel_get_filtered", "not recorded: channels not recorded"},
                      {"channel_get_info(NULL)", "not recorded: channel info not recorded"},
                      {"input_new", "not recorded: input 1 not recorded"},
                      {"output_new", "not recorded: output 0 not recorded"},
                      {"system_new", "not recorded: system not recorded"},
                      {"mode_new", "not recorded: mode not recorded"}}));
}

TEST_F(oru_test, reports_what_is_not_recorded_of_an_object) {
    record(R"({"system":{},"mode":{},"stream":{"all":[{"id":3}]},"channel":{"all":[{"id":5}]},
               "input":{"all":[{"id":1}]},"output":{"all":[{"id":0}]}})");
    EXPECT_EQ(
        every_error(),
        (errors{{"stream_get_all", ""},
                {"stream_get_debug(NULL)", "not recorded: stream debug not recorded"},
                {"stream_get_quota", "not recorded: stream quota not recorded"},
                {"stream_get_limit", "not recorded: stream limit not recorded"},
                {"stream_get_info", "not recorded: stream 3: info not recorded"},
                {"stream_get_settings", "not recorded: stream 3: settings not recorded"},
                {"stream_get_debug", "not recorded: stream 3: debug not recorded"},
                {"channel_get_all", ""},
                {"channel_get_filtered", ""},
                {"channel_get_info(NULL)", "not recorded: channel info not recorded"},
                {"channel_get_info", "not recorded: channel 5: info not recorded"},
                {"channel_get_resolutions", "not recorded: channel 5: resolutions not recorded"},
                {"channel_get_crop", "not recorded: channel 5: crop not recorded"},
                {"channel_get_crop_max", "not recorded: channel 5: crop_max not recorded"},
                {"input_new", ""},
                {"input_get_info", "not recorded: input 1: info not recorded"},
                {"input_get_crop", "not recorded: input 1: crop not recorded"},
                {"input_get_resolution_unrotated",
                 "not recorded: input 1: resolution_unrotated not recorded"},
                {"output_new", ""},
                {"output_get_info", "not recorded: output 0: info not recorded"},
                {"output_get_settings", "not recorded: output 0: settings not recorded"},
                {"system_new", ""},
                {"system_get_caps", "not recorded: system caps not recorded"},
                {"mode_new", ""},
                {"mode_get_info", "not recorded: mode info not recorded"}}));
}

TEST_F(oru_test, fails_with_the_recorded_message) {
    record(R"({"system":{"$error":"1"},"mode":{"$error":"2"},
               "stream":{"debug":{"$error":"3"},"quota":{"$error":"4"},"limit":{"$error":"5"},
               "all":{"$error":"6"}},"channel":{"info":{"$error":"7"},"all":{"$error":"8"}},
               "input":{"all":[{"id":1,"$error":"9"}]},"output":{"all":[{"id":0,"$error":"10 %s \u00e9"}]}})");
    EXPECT_EQ(every_error(), (errors{{"stream_get_all", "failed: 6"},
                                     {"stream_get_debug(NULL)", "failed: 3"},
                                     {"stream_get_quota", "failed: 4"},
                                     {"stream_get_limit", "failed: 5"},
                                     {"channel_get_all", "failed: 8"},
                                     {"channel_get_filtered", "failed: 8"},
                                     {"channel_get_info(NULL)", "failed: 7"},
                                     {"input_new", "failed: 9"},
                                     {"output_new", "failed: 10 %s \xC3\xA9"},
                                     {"system_new", "failed: 1"},
                                     {"mode_new", "failed: 2"}}));
}

TEST_F(oru_test, fails_with_the_recorded_message_of_an_object) {
    record(R"({"system":{"caps":{"$error":"1"}},"mode":{"info":{"$error":"2"}},
               "stream":{"debug":{},"quota":{},"limit":{},"all":[{"info":{"$error":"3"},
               "settings":{"$error":"4"},"debug":{"$error":"5"}}]},
               "channel":{"info":{},"filtered":{"$error":"6"},"all":[{"info":{"$error":"7"},
               "crop":{"$error":"8"},"crop_max":{"$error":"9"},"resolutions":{"$error":"10"}}]},
               "input":{"all":[{"id":1,"info":{"$error":"11"},"crop":{"$error":"12"},
               "resolution_unrotated":{"$error":"13"}}]},
               "output":{"all":[{"id":0,"info":{"$error":"14"},"settings":{"$error":"15"}}]}})");
    EXPECT_EQ(every_error(), (errors{{"stream_get_all", ""},
                                     {"stream_get_debug(NULL)", ""},
                                     {"stream_get_quota", ""},
                                     {"stream_get_limit", ""},
                                     {"stream_get_info", "failed: 3"},
                                     {"stream_get_settings", "failed: 4"},
                                     {"stream_get_debug", "failed: 5"},
                                     {"channel_get_all", ""},
                                     {"channel_get_filtered", "failed: 6"},
                                     {"channel_get_info(NULL)", ""},
                                     {"channel_get_info", "failed: 7"},
                                     {"channel_get_resolutions", "failed: 10"},
                                     {"channel_get_crop", "failed: 8"},
                                     {"channel_get_crop_max", "failed: 9"},
                                     {"input_new", ""},
                                     {"input_get_info", "failed: 11"},
                                     {"input_get_crop", "failed: 12"},
                                     {"input_get_resolution_unrotated", "failed: 13"},
                                     {"output_new", ""},
                                     {"output_get_info", "failed: 14"},
                                     {"output_get_settings", "failed: 15"},
                                     {"system_new", ""},
                                     {"system_get_caps", "failed: 1"},
                                     {"mode_new", ""},
                                     {"mode_get_info", "failed: 2"}}));
}

TEST_F(oru_test, fails_every_operation_alike_if_unreachable) {
    record("{}");
    const errors operations = every_error();
    for (const auto& [text, reason] : {std::pair("{"s, ":1:2: "s), std::pair(""s, ": "s)}) {
        record(text);
        const errors all = every_error();
        ASSERT_EQ(all.size(), operations.size());
        for (std::size_t i = 0; i < all.size(); ++i) {
            EXPECT_EQ(all[i].first, operations[i].first);
            EXPECT_TRUE(all[i].second.starts_with("unreachable: " + file.path() + reason))
                << all[i].second;
            EXPECT_EQ(all[i].second, all[0].second);
        }
    }
}

TEST_F(oru_test, finds_answers_by_name) {
    record(R"({"channel":{"all":[{"id":4,"resolutions":{"b":[[1,2]],"a":{"$error":"no a"},"":[]}}]},
               "input":{"all":[{"id":1,"resolution_unrotated":{"view":[1,2],"a":{"$error":"no a"}}}]}})");
    const list<OruChannel> channels(oru_channel_get_all(nullptr));
    const owned<OruMap> filter(oru_map_new());
    const auto select = [&](const char* name) {
        oru_map_set_string(filter.get(), "select", name);
        error wrong;
        OruResolutionSet* set = oru_channel_get_resolutions(channels[0], filter.get(), wrong);
        const std::string found = set ? std::to_string(set->count) : wrong.text();
        g_free(set);
        return found;
    };
    EXPECT_EQ(select("b"), "1");
    EXPECT_EQ(select("a"), "failed: no a");
    EXPECT_EQ(select("available"), "not recorded: channel 4: resolutions 'available' not recorded");
    EXPECT_EQ(select(""), "0");

    const owned<OruInput> input(oru_input_new(1, nullptr));
    const auto mode = [&](const char* name) {
        error wrong;
        guint32 width = 0;
        guint32 height = 0;
        return oru_input_get_resolution_unrotated(input.get(), name, &width, &height, wrong)
                   ? std::format("{}x{}", width, height)
                   : wrong.text();
    };
    EXPECT_EQ(mode("view"), "1x2");
    EXPECT_EQ(mode("a"), "failed: no a");
    EXPECT_EQ(mode("capture"),
              "not recorded: input 1: resolution_unrotated 'capture' not recorded");
}

TEST_F(oru_test, finds_inputs_and_outputs_by_number) {
    record(R"({"input":{"all":[{"id":4294967295},{"id":2,"info":{}}]},"output":{"all":[]}})");
    const auto open = [](guint32 number) {
        error wrong;
        const owned<OruInput> input(oru_input_new(number, wrong));
        return wrong.text();
    };
    EXPECT_EQ(open(2), "");
    EXPECT_EQ(open(4294967295), "");
    EXPECT_EQ(open(0), "not recorded: input 0 not recorded");
    EXPECT_EQ(open(3), "not recorded: input 3 not recorded");
    error wrong;
    EXPECT_EQ(oru_output_new(0, wrong), nullptr);
    EXPECT_EQ(wrong.text(), "not recorded: output 0 not recorded");
}

// --- Place and lifetime of the snapshot ---------------------------------------------------------

TEST_F(oru_test, reads_the_snapshot_once) {
    record(R"({"stream":{"quota":{"n":1}}})");
    expect_map(oru_stream_get_quota, R"({"n":1})");
    file.write(R"({"stream":{"quota":{"n":2}}})");
    expect_map(oru_stream_get_quota, R"({"n":1})");
    replay::reset();
    expect_map(oru_stream_get_quota, R"({"n":2})");
}

TEST_F(oru_test, looks_once_if_it_is_unreachable) {
    record("{");
    const errors before = every_error();
    file.write("{}");
    EXPECT_EQ(every_error(), before);
    replay::reset();
    EXPECT_NE(every_error(), before);
}

TEST_F(oru_test, objects_and_maps_outlive_the_snapshot) {
    record(R"({"stream":{"all":[{"id":9,"info":{"text":"plain","escaped":"a\nb"}}]}})");
    const list<OruStream> streams(oru_stream_get_all(nullptr));
    const owned<OruMap> map(oru_stream_get_info(streams[0], nullptr));
    record("{}");
    error wrong;
    EXPECT_EQ(oru_stream_get_all(wrong), nullptr);
    EXPECT_EQ(oru_stream_get_id(streams[0]), 9U);
    expect_map([&](GError** e) { return oru_stream_get_info(streams[0], e); },
               R"({"escaped":"a\nb","text":"plain"})");
    EXPECT_STREQ(oru_map_get_string(map.get(), "text", nullptr, ""), "plain");
    EXPECT_STREQ(oru_map_get_string(map.get(), "escaped", nullptr, ""), "a\nb");
}

TEST_F(oru_test, reads_the_default_place_unless_another_is_named) {
    if (std::filesystem::exists("/run/oru/snapshot.json")) {
        GTEST_SKIP() << "this machine has a snapshot at a default place";
    }
    for (const char* named : {"", static_cast<const char*>(nullptr)}) {
        if (named) {
            setenv("ORU_SNAPSHOT", named, 1);
        } else {
            unsetenv("ORU_SNAPSHOT");
        }
        replay::reset();
        error wrong;
        EXPECT_EQ(oru_stream_get_quota(wrong), nullptr);
        EXPECT_EQ(wrong.text(), "unreachable: /run/oru/snapshot.json: No such file or directory");
    }
}

// --- Formats ------------------------------------------------------------------------------------

// Returns nick and name of a code in the enumeration.
std::string nick(guint32 code) {
    auto* type = static_cast<GEnumClass*>(g_type_class_ref(ORU_TYPE_FORMAT));
    const GEnumValue* value = g_enum_get_value(type, static_cast<gint>(code));
    const std::string found =
        value ? std::format("{}={}", value->value_nick, value->value_name) : "(none)";
    g_type_class_unref(type);
    return found;
}

struct code_and_nick {
    guint32 code;
    const char* nick;
};

// Returns the number of codes with another nick than expected, and prints them.
int count_other_nicks(std::string_view text, const std::vector<code_and_nick>& expected) {
    const snapshot_file file(text);
    setenv("ORU_SNAPSHOT", file.path().c_str(), 1);
    int wrong = 0;
    for (const auto& [code, expected_nick] : expected) {
        if (nick(code) != expected_nick) {
            fprintf(stderr, "%u is %s\n", code, nick(code).c_str());
            ++wrong;
        }
    }
    return wrong;
}

// A process registers its formats only once, so each test runs in a new process.
void expect_formats(std::string_view text, const std::vector<code_and_nick>& expected) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(exit(count_other_nicks(text, expected)), testing::ExitedWithCode(0), "^$");
}

TEST(oru_formats, are_the_default_five_unless_recorded) {
    expect_formats("{}", {{0, "h264=h264"},
                          {1, "h265=h265"},
                          {2, "jpeg=jpeg"},
                          {3, "raw=raw"},
                          {10, "av1=av1"},
                          {4, "(none)"}});
}

TEST(oru_formats, are_the_recorded_ones) {
    expect_formats(R"({"formats":{"zz":5,"y\u00e9":4294967295,"aa":5,"h264":1}})",
                   {{5, "zz=zz"},
                    {4294967295, "y\xC3\xA9=y\xC3\xA9"},
                    {1, "h264=h264"},
                    {0, "(none)"},
                    {10, "(none)"}});
}

TEST(oru_formats, can_be_none) {
    expect_formats(R"({"formats":{}})", {{0, "(none)"}, {1, "(none)"}});
}

TEST(oru_formats, are_the_default_five_if_unreachable) {
    expect_formats("{", {{0, "h264=h264"}, {10, "av1=av1"}, {5, "(none)"}});
}

}  // namespace
