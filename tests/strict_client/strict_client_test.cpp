// Tests of the strict client: each misuse of its functions ends the process, and it returns values
// as unusual as the interface allows.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <format>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <oru.h>
#include <qwire.h>

#include "support/temp_directory.h"

// Disables the leak checker, because the runs below release little, to test the report of it.
extern "C" int __lsan_is_turned_off() {
    return 1;
}

namespace {

const std::string full = R"({
    "system": {"caps": {"yes": true, "u16": {"uint16": 7}, "u32": 8, "i64": -9, "real": 1.5,
                        "text": "a", "pair": [1, 2], "bytes": {"bytes": "6fff"},
                        "other": {"other": [1, {"a" : 1e2}, "\u0041/*" /* */]}}},
    "stream": {"all": [{"id": 1, "info": {}}, {"id": 2}]},
    "channel": {"all": [{"id": 3, "properties": {"key": "input"}, "crop": {"$error": "no crop"},
                         "resolutions": {"available": [[1, 2]]}}]},
    "formats": {"h264": 5}
})";

struct outcome {
    std::string text;  // what the body returned, or the line of a misuse
    int signal = 0;
    std::string log = {};
};

// Runs the body in a process of its own, with this snapshot as the service.
outcome run(const std::string& snapshot, const std::function<std::string()>& body,
            const char* variable = nullptr) {
    const temp_directory directory;
    const std::string file = directory.write("snapshot.json", snapshot);
    const std::string log = directory.path() + "/log";
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        setenv("ORU_SNAPSHOT", file.c_str(), 1);
        setenv("ORU_STRICT_LOG", log.c_str(), 1);
        if (variable != nullptr) {
            setenv(variable, "1", 1);
        }
        const std::string text = body();
        std::fputs(text.c_str(), stderr);
        std::exit(0);
    }
    close(ends[1]);
    outcome got;
    char buffer[4096];
    while (const ssize_t count = read(ends[0], buffer, sizeof buffer)) {
        got.text.append(buffer, static_cast<std::size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    got.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    std::ifstream lines(log);
    got.log = {std::istreambuf_iterator<char>(lines), {}};
    return got;
}

void expect_misuse(const std::function<void()>& mistake, const std::string& line) {
    const outcome got = run(full, [&] {
        mistake();
        return std::string("nothing was noticed");
    });
    EXPECT_EQ(got.text, line + '\n');
    EXPECT_EQ(got.signal, SIGABRT);
}

OruMap* caps() {
    return oru_system_get_caps(oru_system_new(nullptr), nullptr);
}

OruStream* first_stream() {
    return static_cast<OruStream*>(oru_stream_get_all(nullptr)->data);
}

OruChannel* channel() {
    return static_cast<OruChannel*>(oru_channel_get_all(nullptr)->data);
}

// --- Mistakes -----------------------------------------------------------------------------------

TEST(strict_client, aborts_if_an_error_pointer_is_not_null) {
    expect_misuse(
        [] {
            GError* error = nullptr;
            oru_mode_new(&error);
            oru_system_new(&error);
        },
        "oru_system_new: the error pointer holds an error already");
}

TEST(strict_client, aborts_on_a_use_after_the_release) {
    expect_misuse(
        [] {
            OruMap* map = caps();
            g_object_unref(map);
            oru_map_get_uint32(map, "u32", 0);
        },
        "oru_map_get_uint32: system caps was released");
    expect_misuse(
        [] {
            GList* all = oru_stream_get_all(nullptr);
            OruStream* stream = static_cast<OruStream*>(all->data);
            g_list_free_full(all, g_object_unref);
            oru_stream_get_id(stream);
        },
        "oru_stream_get_id: stream 1 was released");
}

TEST(strict_client, aborts_on_a_second_release) {
    expect_misuse(
        [] {
            OruMap* map = caps();
            g_object_unref(map);
            g_object_unref(map);
        },
        "g_object_unref: system caps was released before");
}

TEST(strict_client, aborts_if_a_list_is_freed_without_its_elements) {
    expect_misuse(
        [] {
            GList* all = oru_stream_get_all(nullptr);
            g_object_unref(all->data);
            g_list_free(all);
        },
        "g_list_free: list of oru_stream_get_all is freed without its element stream 2");
    expect_misuse([] { g_list_free_full(oru_channel_get_all(nullptr), [](gpointer) {}); },
                  "g_list_free_full: list of oru_channel_get_all is freed without its element "
                  "channel 3");
}

TEST(strict_client, aborts_on_arguments_that_cannot_be_right) {
    expect_misuse([] { oru_stream_get_info(nullptr, nullptr); },
                  "oru_stream_get_info: NULL is no OruStream");
    expect_misuse([] { oru_map_contains(nullptr, "a"); }, "oru_map_contains: NULL is no OruMap");
    expect_misuse([] { oru_map_contains(caps(), nullptr); }, "oru_map_contains: NULL is no text");
    expect_misuse([] { oru_map_set_string(caps(), "a", nullptr); },
                  "oru_map_set_string: NULL is no text");
    expect_misuse([] { oru_stream_get_id(reinterpret_cast<OruStream*>(channel())); },
                  "oru_stream_get_id: channel 3 is no OruStream");
    expect_misuse(
        [] {
            int other = 0;
            oru_stream_get_id(reinterpret_cast<OruStream*>(&other));
        },
        "oru_stream_get_id: something else is no OruStream");
    expect_misuse([] { oru_map_get_string(caps(), "text", caps(), nullptr); },
                  "oru_map_get_string: an argument is not NULL");
    expect_misuse([] { oru_output_new("0", nullptr); }, "oru_output_new: an argument is not NULL");
    expect_misuse([] { oru_map_get_boolean(caps(), "yes", 2); },
                  "oru_map_get_boolean: 2 is no boolean");
    expect_misuse(
        [] {
            guint32 width = 0;
            oru_channel_get_crop_max(channel(), &width, nullptr, nullptr);
        },
        "oru_channel_get_crop_max: there is no place for a result");
    expect_misuse(
        [] {
            guint32 width = 0;
            oru_channel_get_crop_max(channel(), &width, &width, nullptr);
        },
        "oru_channel_get_crop_max: two results have one place");
}

// --- Returned objects ---------------------------------------------------------------------------

std::string text_of(const std::string& snapshot, const std::function<std::string()>& body,
                    const char* variable = nullptr) {
    const outcome got = run(snapshot, body, variable);
    EXPECT_EQ(got.signal, 0);
    return got.text;
}

TEST(strict_client, an_element_with_a_reference_outlives_its_list) {
    EXPECT_EQ(text_of(full,
                      [] {
                          GList* all = oru_stream_get_all(nullptr);
                          auto* stream = static_cast<OruStream*>(g_object_ref(all->data));
                          g_list_free_full(all, g_object_unref);
                          const guint32 id = oru_stream_get_id(stream);
                          g_object_unref(stream);
                          return std::to_string(id);
                      }),
              "1");
}

TEST(strict_client, overwrites_a_text_when_its_map_changes_or_is_released) {
    EXPECT_EQ(text_of(full,
                      [] {
                          OruMap* map = caps();
                          const char* first = oru_map_get_string(map, "text", nullptr, nullptr);
                          const char* second = oru_map_get_string(map, "text", nullptr, nullptr);
                          std::string seen = std::format("{} {} ", first, first == second);
                          oru_map_remove(map, "yes");
                          const char* third = oru_map_get_string(map, "text", nullptr, nullptr);
                          seen += std::format("{} {} {} ", first, second, third);
                          g_object_unref(map);
                          return seen + third;
                      }),
              "a false ? ? a ?");
}

TEST(strict_client, makes_new_objects_for_each_list) {
    EXPECT_EQ(text_of(full, [] { return std::format("{}", first_stream() == first_stream()); }),
              "false");
}

TEST(strict_client, writes_odd_values_if_a_call_fails) {
    EXPECT_EQ(text_of(full,
                      [] {
                          guint32 x = 0;
                          guint32 y = 0;
                          guint32 width = 0;
                          guint32 height = 0;
                          const gboolean ok =
                              oru_channel_get_crop(channel(), &x, &y, &width, &height, nullptr);
                          return std::format("{} {:x} {:x} {:x} {:x}", ok, x, y, width, height);
                      }),
              "0 dead0001 dead0002 dead0003 dead0004");
}

TEST(strict_client, a_format_s_nick_name_and_code_differ) {
    EXPECT_EQ(text_of(full,
                      [] {
                          auto* formats =
                              static_cast<GEnumClass*>(g_type_class_ref(oru_format_get_type()));
                          const GEnumValue* value = g_enum_get_value(formats, 5);
                          std::string seen =
                              std::format("{} {}", value->value_nick, value->value_name);
                          g_type_class_unref(formats);
                          return seen;
                      }),
              "h264 ORU_FORMAT_h264");
}

TEST(strict_client, accepts_null_and_an_address_for_the_error) {
    EXPECT_EQ(text_of(full,
                      [] {
                          GError* error = nullptr;
                          const bool failed =
                              oru_mode_new(nullptr) == nullptr && oru_mode_new(&error) == nullptr;
                          return std::format("{} {}", failed, error->message);
                      }),
              "true mode not recorded");
    EXPECT_EQ(text_of(full,
                      [] {
                          GError* error = nullptr;
                          guint32 x[4] = {};
                          oru_channel_get_crop(channel(), &x[0], &x[1], &x[2], &x[3], &error);
                          return std::string(error->message);
                      }),
              "no crop");
}

// --- Getters ------------------------------------------------------------------------------------

// Reads each key by each getter, with a default of 99, "none" or FALSE.
std::string all_getters() {
    OruMap* map = caps();
    std::string seen;
    for (const char* key : {"yes", "u16", "u32", "i64", "real", "text", "pair", "bytes", "other"}) {
        const char* text = oru_map_get_string(map, key, nullptr, "none");
        const std::uint64_t pair = oru_map_get_pair32u(map, key, 99);
        seen += std::format("{}: {} {} {} {} {} {}/{}\n", key, oru_map_get_uint32(map, key, 99),
                            oru_map_get_int64(map, key, 99), oru_map_get_double(map, key, 99),
                            oru_map_get_boolean(map, key, FALSE),
                            std::string(text) == "o\xFF" ? "o, 255" : text, pair & 0xFFFFFFFF,
                            pair >> 32);
    }
    return seen;
}

TEST(strict_client, getters_widen) {
    EXPECT_EQ(text_of(full, all_getters),
              "yes: 99 99 99 1 none 99/0\n"
              "u16: 7 7 7 0 none 99/0\n"
              "u32: 8 8 8 0 none 99/0\n"
              "i64: 99 -9 99 0 none 99/0\n"
              "real: 99 99 1.5 0 none 99/0\n"
              "text: 99 99 99 0 a 99/0\n"
              "pair: 99 99 99 0 none 1/2\n"
              "bytes: 99 99 99 0 o, 255 99/0\n"
              "other: 99 99 99 0 none 99/0\n");
}

TEST(strict_client, exact_getters_do_not_widen) {
    EXPECT_EQ(text_of(full, all_getters, "ORU_STRICT_EXACT"),
              "yes: 99 99 99 1 none 99/0\n"
              "u16: 99 99 99 0 none 99/0\n"
              "u32: 8 99 99 0 none 99/0\n"
              "i64: 99 -9 99 0 none 99/0\n"
              "real: 99 99 1.5 0 none 99/0\n"
              "text: 99 99 99 0 a 99/0\n"
              "pair: 99 99 99 0 none 1/2\n"
              "bytes: 99 99 99 0 o, 255 99/0\n"
              "other: 99 99 99 0 none 99/0\n");
}

// --- Snapshots ----------------------------------------------------------------------------------

// Returns the capabilities as JSON, or the message if they cannot be read.
std::string caps_of(const std::string& snapshot) {
    return text_of(snapshot, [] {
        GError* error = nullptr;
        OruSystem* system = oru_system_new(&error);
        OruMap* map = system == nullptr ? nullptr : oru_system_get_caps(system, &error);
        if (map == nullptr) {
            const std::string message = error->message;
            const std::string path = std::getenv("ORU_SNAPSHOT");
            return message.starts_with(path) ? message.substr(path.size() + 2) : message;
        }
        std::string text;
        return oru_map_native_ref(map)->to_json(text).value_or(text);
    });
}

std::string value(const std::string& written) {
    return caps_of(R"({"system": {"caps": {"k": )" + written + "}}}");
}

TEST(strict_client, reads_each_kind_of_value) {
    EXPECT_EQ(caps_of(full),
              R"({"bytes":"o)"
              "\xFF"
              R"(","i64":-9,"other":[1,{"a":1e2},"\u0041/*"],"pair":[1,2],"real":1.5,"text":"a",)"
              R"("u16":7,"u32":8,"yes":true})");
    for (const char* unchanged : {"0", "4294967296", "-9223372036854775808", "\"\\\"\\t\\u001f/\"",
                                  "[0,4294967295]", "true", "false"}) {
        EXPECT_EQ(value(unchanged), R"({"k":)" + std::string(unchanged) + "}") << unchanged;
    }
    EXPECT_EQ(value("-0"), R"({"k":0})");
    EXPECT_EQ(value(R"({"double": -0})"), R"({"k":-0})");
    EXPECT_EQ(value(R"({"double": 5})"), R"({"k":5})");
    EXPECT_EQ(value("1e22"), R"({"k":1e+22})");
    EXPECT_EQ(value(R"({"uint32": 5})"), R"({"k":5})");
    EXPECT_EQ(value(R"({"int64": 5})"), R"({"k":5})");
    EXPECT_EQ(value(R"({"other": {"a": [ null , -0 , 1.50E+1, 18446744073709551616 ], "a": 1}})"),
              R"({"k":{"a":[null,-0,1.50E+1,18446744073709551616],"a":1}})");
    for (const char* not_finite : {"nan", "-nan", "inf", "-inf"}) {
        EXPECT_EQ(value(R"({"double": ")" + std::string(not_finite) + "\"}"),
                  "the value of 'k' is not finite: JSON has no form for it");
    }
}

TEST(strict_client, rejects_invalid_snapshots) {
    for (const char* invalid : {"null",
                                "[1]",
                                "[1, 2, 3]",
                                "[1, -2]",
                                "{}",
                                R"({"uint16": 65536})",
                                R"({"uint32": 4294967296})",
                                R"({"uint16": 1.0})",
                                R"({"int64": 9223372036854775808})",
                                "9223372036854775808",
                                "18446744073709551616",
                                "-9223372036854775809",
                                "1e999",
                                R"({"bytes": "6"})",
                                R"({"bytes": "6F"})",
                                R"({"bytes": "00"})",
                                R"({"double": "NaN"})",
                                R"({"uint16": 1, "uint32": 1})",
                                R"("a\u0000b")",
                                "\"\x01\"",
                                "\"\xFF\"",
                                "01"}) {
        EXPECT_NE(value(invalid)[0], '{') << invalid;
    }
    for (const char* invalid : {"",
                                "[]",
                                "{} {}",
                                "\xEF\xBB\xBF{}",
                                R"({"systems": {}})",
                                R"({"mode": {}, "mode": {}})",
                                R"({"mode": {"info": {"a": 1, "a": 1}}})",
                                R"({"stream": {"$error": "x"}})",
                                R"({"stream": {"all": [{"id": 1}, {"id": 1}]}})",
                                R"({"channel": {"all": [{}, {"id": 0}]}})",
                                R"({"input": {"all": [{}]}})",
                                R"({"output": {"all": [{"info": {}}]}})",
                                R"({"input": {"all": [{"id": 1, "$error": "x", "info": {}}]}})",
                                R"({"mode": {"$error": "x", "info": {}}})",
                                R"({"mode": {"info": {"$error": "x", "a": 1}}})",
                                R"({"formats": {"$error": "x"}})",
                                R"({"version": 2})",
                                R"({"version": 1.0})",
                                R"({"version": "1"})",
                                R"({"recorded": "2026-02-29T00:00:00Z"})",
                                R"({"recorded": "2026-11-22T07:14:60Z"})",
                                R"({"recorded": "2026-11-22T07:14:32z"})",
                                R"({"recorded": 1})",
                                R"({"about": 5})",
                                R"({"channel": {"all": [{"crop": [1, 2, 3]}]}})"}) {
        EXPECT_NE(caps_of(invalid), "system not recorded") << invalid;
    }
    for (const char* valid :
         {"{}", R"({"version": 1, "recorded": "2024-02-29T23:59:59Z"})", "/* a */ {} // b",
          R"({"about": "x"})", R"({"stream": {"all": [{}, {"id": 0}]}})",
          R"({"channel": {"all": [{"id": 1}], "filtered": [{"id": 1}]}})",
          R"({"mode": {"info": {"$error": 1, "a": 1}}})", R"({"formats": {}})",
          R"({"input": {"all": {"$error": "x"}}})"}) {
        EXPECT_EQ(caps_of(valid), "system not recorded") << valid;
    }
}

// --- The log ------------------------------------------------------------------------------------

TEST(strict_client, logs_each_call_each_release_and_what_is_left) {
    const outcome got = run(full, [] {
        GList* all = oru_stream_get_all(nullptr);
        auto* stream = static_cast<OruStream*>(all->data);
        GError* error = nullptr;
        OruMap* info = oru_stream_get_info(stream, nullptr);
        oru_stream_get_settings(stream, &error);
        oru_map_get_string(info, "a \"b\"", nullptr, nullptr);
        oru_map_native_ref(info)->find("c");
        OruMap* filter = oru_map_new();
        oru_map_set_string(filter, "select", "available");
        g_free(oru_channel_get_resolutions(channel(), filter, nullptr));
        g_error_free(error);
        g_list_free_full(all, g_object_unref);
        g_print("%s\n", "");
        oru_mode_new(&(error = nullptr));
        return std::string();
    });
    EXPECT_EQ(got.log, R"(oru_stream_get_all(NULL) -> stream 1, stream 2
oru_stream_get_info(stream 1, NULL) -> stream 1 info
oru_stream_get_settings(stream 1, &error) -> failed
oru_map_get_string(stream 1 info, "a \"b\"", NULL, NULL)
oru_map_native_ref(stream 1 info)
find(stream 1 info, "c")
oru_map_new() -> new map
oru_map_set_string(new map, "select", "available")
oru_channel_get_all(NULL) -> channel 3
oru_channel_get_resolutions(channel 3, new map, NULL) -> channel 3 resolutions
g_free(channel 3 resolutions)
g_error_free(error of oru_stream_get_settings)
g_list_free_full(list of oru_stream_get_all)
release stream 1
release stream 2
g_print("\n")
oru_mode_new(&error) -> failed
never released: stream 1 info
never released: new map
never released: channel 3
never released: list of oru_channel_get_all
never released: error of oru_mode_new
)");
}

}  // namespace
