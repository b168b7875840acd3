#include "snapshot_tool/recording.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "snapshot_tool/command.h"
#include "snapshot_tool/fake_service.h"
#include "support/temp_directory.h"

namespace {

using namespace snapshot_tool;

using namespace std::string_literals;

class recording : public testing::Test {
  protected:
    recording() {
        service = {};
        setenv("SOURCE_DATE_EPOCH", "1795331672", 1);  // 2026-11-22T07:14:32Z
    }
};

std::string recorded(const recording_options& options = {}) {
    service.opened_inputs.clear();
    return record_service(options);
}

// Returns why recording fails, or nothing if it succeeds.
std::optional<std::string> refusal(const recording_options& options = {}) {
    try {
        record_service(options);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return std::nullopt;
}

// Returns `count` lines of the recording from the first that contains `from`.
std::string lines_from(const std::string& text, const std::string& from, int count) {
    std::size_t begin = text.find(from);
    if (begin == std::string::npos) {
        return text;
    }
    begin = text.rfind('\n', begin) + 1;
    std::size_t end = begin;
    for (int i = 0; i < count; ++i) {
        end = text.find('\n', end) + 1;
    }
    return text.substr(begin, end - begin);
}

fake_map one(const std::string& key, fake_value value) {
    return {{key, std::move(value)}};
}

fake_value text(std::string content) {
    return native_value(std::move(content));
}

fake_value number(std::uint32_t content) {
    return native_value(content);
}

// Captures the output to a stream in a file. GoogleTest's function ignores $TMPDIR.
class captured {
  public:
    explicit captured(FILE* stream)
        : stream_(stream), path_(scratch_.write("text", "")), before_(dup(fileno(stream))) {
        std::fflush(stream_);
        const int file = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        EXPECT_GE(dup2(file, fileno(stream_)), 0);
        close(file);
    }
    captured(const captured&) = delete;
    captured& operator=(const captured&) = delete;
    ~captured() {
        std::fflush(stream_);
        dup2(before_, fileno(stream_));
        close(before_);
    }

    std::string text() const {
        std::fflush(stream_);
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    FILE* stream_;
    temp_directory scratch_;
    std::string path_;
    int before_;
};

TEST_F(recording, contains_the_failure_of_each_query) {
    service.stream_quota = fake_failure{"no quota"};
    service.stream_limit = fake_map{};
    service.streams = std::vector{fake_stream{.id = 3}};
    service.channels = std::vector{fake_channel{.id = 0}};
    service.channels_of_inputs = fake_failure{"no filter"};
    EXPECT_EQ(recorded(), R"({
    "version": 1,
    "recorded": "2026-11-22T07:14:32Z",
    "system": { "$error": "" },
    "mode": { "$error": "" },
    "stream": {
        "debug": { "$error": "" },
        "quota": { "$error": "no quota" },
        "limit": {},
        "all": [
            {
                "id": 3,
                "info": { "$error": "" },
                "settings": { "$error": "" },
                "debug": { "$error": "" }
            }
        ]
    },
    "channel": {
        "info": { "$error": "" },
        "all": [
            {
                "id": 0,
                "info": { "$error": "" },
                "crop": { "$error": "" },
                "crop_max": { "$error": "" },
                "resolutions": {
                    "available": { "$error": "" }
                }
            }
        ],
        "filtered": { "$error": "no filter" }
    },
    "input": {
        "all": []
    },
    "output": {
        "all": [
            {
                "id": 0,
                "$error": ""
            }
        ]
    },
    "formats": {}
}
)");
}

// --- The time -----------------------------------------------------------------------------------

// Returns the line with the time of the recording.
std::string recorded_line() {
    return lines_from(recorded(), "\"recorded\"", 1);
}

TEST_F(recording, contains_the_time_of_the_clock) {
    service.streams = std::vector<fake_stream>();
    for (const char* unset : {"", static_cast<const char*>(nullptr)}) {
        unset != nullptr ? setenv("SOURCE_DATE_EPOCH", unset, 1) : unsetenv("SOURCE_DATE_EPOCH");
        const std::time_t before = std::time(nullptr);
        const std::string line = recorded_line();
        const std::time_t after = std::time(nullptr);
        std::tm read{};
        ASSERT_NE(strptime(line.c_str(), "    \"recorded\": \"%Y-%m-%dT%H:%M:%SZ\",\n", &read),
                  nullptr)
            << line;
        EXPECT_GE(timegm(&read), before);
        EXPECT_LE(timegm(&read), after);
    }
}

TEST_F(recording, contains_the_time_that_is_set) {
    service.streams = std::vector<fake_stream>();
    const std::pair<const char*, const char*> times[] = {{"0", "1970-01-01T00:00:00Z"},
                                                         {"951782399", "2000-02-28T23:59:59Z"},
                                                         {"951868800", "2000-03-01T00:00:00Z"},
                                                         {"253402300799", "9999-12-31T23:59:59Z"}};
    for (const auto& [seconds, time] : times) {
        setenv("SOURCE_DATE_EPOCH", seconds, 1);
        EXPECT_EQ(recorded_line(), std::string("    \"recorded\": \"") + time + "\",\n");
    }
    for (const char* wrong : {"253402300800", "18446744073709551616", "-1", "+1", "1.0", "1e3",
                              " 1", "1 ", "now", "0x1"}) {
        setenv("SOURCE_DATE_EPOCH", wrong, 1);
        EXPECT_EQ(refusal(), std::string("SOURCE_DATE_EPOCH is '") + wrong +
                                 "', not a whole number of seconds from 0 to 253402300799");
    }
}

TEST_F(recording, keeps_the_time_of_the_snapshot_that_answers) {
    service.streams = std::vector<fake_stream>();
    service.origin = replay::origin{.path = "old.json", .recorded = "0001-01-01T00:00:00Z"};
    EXPECT_EQ(recorded_line(), "    \"recorded\": \"0001-01-01T00:00:00Z\",\n");
    service.origin->recorded = {};
    EXPECT_EQ(recorded_line(), "    \"recorded\": \"2026-11-22T07:14:32Z\",\n");
}

TEST_F(recording, treats_a_null_list_without_an_error_as_empty) {
    const std::string all = recorded();
    EXPECT_EQ(lines_from(all, "\"all\": []", 1), "        \"all\": []\n");
    EXPECT_EQ(lines_from(all, "\"channel\"", 4),
              "    \"channel\": {\n"
              "        \"info\": { \"$error\": \"\" },\n"
              "        \"all\": []\n"
              "    },\n");
}

TEST_F(recording, fails_with_the_first_failure_if_no_query_is_answered) {
    service.streams = fake_failure{"third"};
    service.channels = fake_failure{"fourth"};
    service.channels_of_inputs = fake_failure{"fifth"};
    EXPECT_EQ(refusal(), "");
    service.stream_limit = fake_failure{"second"};
    service.system = fake_failure{"f\xffirst"};
    EXPECT_EQ(refusal(), "f\xffirst");
    // The enumeration of formats is not a query, and the writer is not called.
    service.formats = {{1, "one"}};
    EXPECT_EQ(refusal({.about = "\xff"}), "f\xffirst");
}

TEST_F(recording, succeeds_if_any_query_is_answered) {
    const auto answers = [](const auto& answer) {
        service = {};
        service.streams = fake_failure{"a"};
        service.channels = fake_failure{"b"};
        service.channels_of_inputs = fake_failure{"c"};
        service.system = fake_failure{"d"};
        answer();
        return !refusal();
    };
    EXPECT_FALSE(answers([] {}));
    EXPECT_TRUE(answers([] { service.streams = std::vector<fake_stream>(); }));
    EXPECT_TRUE(answers([] { service.channels = std::vector<fake_channel>(); }));
    EXPECT_TRUE(answers([] { service.channels_of_inputs = std::vector<fake_channel>(); }));
    EXPECT_TRUE(answers([] { service.system = fake_answer<fake_map>(); }));
    EXPECT_TRUE(answers([] { service.mode = fake_answer<fake_map>(); }));
    EXPECT_TRUE(answers([] { service.stream_debug = fake_map(); }));
    EXPECT_TRUE(answers([] { service.channel_info = fake_map(); }));
    EXPECT_TRUE(answers([] { service.output = fake_output(); }));
}

// --- Inputs -------------------------------------------------------------------------------------

fake_channel of_type(std::uint32_t id, fake_value type) {
    fake_channel channel{.id = id};
    channel.info = one("type.id", std::move(type));
    return channel;
}

TEST_F(recording, queries_counted_inputs_and_those_that_channels_name) {
    using numbers = std::vector<std::uint32_t>;
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers());  // no channel information
    service.channel_info = fake_map();
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers({1}));
    service.channel_info = one("input.count", number(0));
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers());
    service.channel_info = one("input.count", number(3));
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers({1, 2, 3}));

    fake_channel without_type{.id = 4};
    without_type.info = fake_map();
    service.channels_of_inputs =
        std::vector{of_type(0, number(7)), of_type(1, number(2)), of_type(2, number(0)),
                    fake_channel{.id = 3}, of_type(5, number(4294967295))};
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers({0, 1, 2, 3, 7, 4294967295}));
    service.channel_info = fake_failure{"none"};
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers({0, 2, 7, 4294967295}));
    service.channels_of_inputs = std::vector{without_type};
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers({1}));
    // A channel that the filter does not find is not one of an input.
    service.channels = service.channels_of_inputs;
    service.channels_of_inputs = fake_failure{"none"};
    recorded();
    EXPECT_EQ(service.opened_inputs, numbers());
}

TEST_F(recording, omits_a_counted_input_that_cannot_be_opened) {
    service.channel_info = one("input.count", number(3));
    service.channels_of_inputs = std::vector{of_type(0, number(2)), of_type(1, number(9))};
    service.inputs[1] = fake_failure{"never shown"};
    service.inputs[2] = fake_failure{"no input 2"};
    fake_input third;
    third.crop = fake_rectangle{1, 2, 3, 4};
    third.resolution = fake_size{1920, 1080};
    service.inputs[3] = third;
    EXPECT_EQ(lines_from(recorded(), "\"input\": {", 20), R"(    "input": {
        "all": [
            {
                "id": 2,
                "$error": "no input 2"
            },
            {
                "id": 3,
                "info": { "$error": "" },
                "crop": [1, 2, 3, 4],
                "resolution_unrotated": {
                    "capture": [1920, 1080]
                }
            },
            {
                "id": 9,
                "$error": ""
            }
        ]
    },
)");
}

TEST_F(recording, stops_after_1024_counted_inputs_that_do_not_exist) {
    service.channel_info = one("input.count", number(4294967295));
    service.channels_of_inputs = std::vector{of_type(0, number(5000))};
    service.inputs[3] = fake_input();
    const captured errors(stderr);
    recorded();
    EXPECT_EQ(
        errors.text(),
        "oru-snapshot: the service counts 4294967295 inputs, but 1024 in a row do not exist: of "
        "the others, only those that a channel names are recorded\n");
    ASSERT_EQ(service.opened_inputs.size(), 1028U);
    EXPECT_EQ(service.opened_inputs[1026], 1027U);
    EXPECT_EQ(service.opened_inputs[1027], 5000U);
}

// --- Channels of inputs -------------------------------------------------------------------------

TEST_F(recording, marks_or_lists_the_channels_that_the_filter_finds) {
    // Returns such as "marked 1 2", "listed 1 2" or "failed".
    const auto shown = [] {
        const std::string all = recorded();
        const auto begin = all.find("\"channel\": {");
        const std::string channels = all.substr(begin, all.find("\"input\": {") - begin);
        const auto filtered = channels.find("\"filtered\": ");
        std::string marked = "marked";
        std::string listed = "listed";
        for (std::size_t at = 0; (at = channels.find("\"id\": ", at)) != std::string::npos; ++at) {
            const std::string id = ' ' + channels.substr(at + 6, 1);
            if (at > filtered) {
                listed += id;
            } else if (channels.substr(at, 60).contains("\"properties\"")) {
                marked += id;
            }
        }
        if (filtered != std::string::npos) {
            EXPECT_EQ(marked, "marked");
            return channels.contains("\"filtered\": {") ? "failed" : listed;
        }
        return marked;
    };
    const fake_channel first = of_type(1, number(1));
    const fake_channel second = of_type(2, number(2));
    const fake_channel third = of_type(3, number(3));
    fake_channel changed = third;
    changed.crop_max = fake_size{1, 1};

    service.channels = std::vector{first, second, third};
    service.channels_of_inputs = std::vector<fake_channel>();
    EXPECT_EQ(shown(), "marked");
    service.channels_of_inputs = std::vector{first, third};
    EXPECT_EQ(shown(), "marked 1 3");
    service.channels_of_inputs = std::vector{first, second, third};
    EXPECT_EQ(shown(), "marked 1 2 3");
    // Another order, another channel, another answer.
    service.channels_of_inputs = std::vector{third, first};
    EXPECT_EQ(shown(), "listed 3 1");
    service.channels_of_inputs = std::vector{first, of_type(4, number(1))};
    EXPECT_EQ(shown(), "listed 1 4");
    service.channels_of_inputs = std::vector{first, changed};
    EXPECT_EQ(shown(), "listed 1 3");
    service.channels_of_inputs = fake_failure{"none"};
    EXPECT_EQ(shown(), "failed");

    service.channels = fake_failure{"none"};
    EXPECT_EQ(shown(), "failed");
    service.channels_of_inputs = std::vector{second};
    EXPECT_EQ(shown(), "listed 2");
    service.channels_of_inputs = std::vector<fake_channel>();
    EXPECT_EQ(shown(), "listed");
}

// --- Formats ------------------------------------------------------------------------------------

TEST_F(recording, contains_each_format_code_once) {
    service.streams = std::vector<fake_stream>();
    service.formats = {
        {4294967295, "last"}, {3, "raw"}, {0, "h264"}, {3, "yuv"}, {2147483648, "$error"}};
    EXPECT_EQ(lines_from(recorded(), "\"formats\"", 7), R"(    "formats": {
        "h264": 0,
        "raw": 3,
        "$error": 2147483648,
        "last": 4294967295
    }
}
)");
}

// --- What a snapshot cannot contain -------------------------------------------------------------

TEST_F(recording, rejects_duplicate_stream_ids) {
    service.streams = std::vector{fake_stream{.id = 0}, fake_stream{.id = 7}, fake_stream{.id = 0}};
    EXPECT_EQ(refusal(), std::nullopt);
    service.streams.value->push_back(fake_stream{.id = 7});
    EXPECT_EQ(refusal(), "stream 7 is listed twice");
}

TEST_F(recording, rejects_duplicate_channel_ids_in_a_list) {
    service.channels = std::vector{fake_channel{.id = 0}, fake_channel{.id = 1}};
    service.channels_of_inputs = service.channels;
    EXPECT_EQ(refusal(), std::nullopt);
    service.channels_of_inputs.value->push_back(fake_channel{.id = 1});
    EXPECT_EQ(refusal(), "channel 1 is listed twice");
    service.channels.value->push_back(fake_channel{.id = 0});
    EXPECT_EQ(refusal(), "channel 0 is listed twice");
}

TEST_F(recording, rejects_texts_that_json_cannot_contain) {
    fake_stream stream{.id = 7};
    const auto with_info = [&](const std::string& key, const fake_value& value) {
        stream.info = one(key, value);
        service.streams = std::vector{stream};
        return refusal();
    };
    EXPECT_EQ(with_info("k\xff", number(1)), "stream 7: info: the key 'k\\xff' is not valid UTF-8");
    EXPECT_EQ(with_info("a\0\n"s, number(1)), "stream 7: info: the key 'a\\x00\\n' contains a NUL");
    EXPECT_EQ(with_info("key", text("a\0"s)), "stream 7: info: the text of 'key' contains a NUL");
    EXPECT_EQ(with_info("key", text("\xff\0"s)),
              "stream 7: info: the text of 'key' contains a NUL");
    EXPECT_EQ(with_info("key", text("\xff")), std::nullopt);
    EXPECT_EQ(with_info("$error", text("busy")),
              "stream 7: info: the value of '$error' is a text, which would be read as a failure");
    EXPECT_EQ(with_info("$error", text("\xff")), std::nullopt);
    EXPECT_EQ(with_info("$error", number(5)), std::nullopt);

    stream.info = fake_failure{"\xe9"};
    service.streams = std::vector{stream};
    EXPECT_EQ(refusal(), "stream 7: info: the message of the failure is not valid UTF-8");
    service.streams = fake_failure{"\xe9"};
    EXPECT_EQ(refusal(), "streams: the message of the failure is not valid UTF-8");
    service.streams = std::vector<fake_stream>();
    EXPECT_EQ(refusal({.about = "\xe9"}), "--about: the text is not valid UTF-8");
}

TEST_F(recording, rejects_a_text_longer_than_a_snapshot) {
    const std::string about(134217728, '1');
    EXPECT_EQ(refusal({.about = about.c_str()}),
              "the recording is longer than 134217728 bytes, the limit of a snapshot");
}

TEST_F(recording, rejects_values_of_other_kinds_without_json) {
    const auto with = [](const fake_other& value) {
        service.mode = fake_answer<fake_map>(one("k\t", value));
        return refusal();
    };
    EXPECT_EQ(with({}),
              "mode info: the value of 'k\\t' has no JSON form: the bus has no form for it");
    for (const char* json :
         {"", "nul", "[1", "1 2", "1, \"b\": 2", "'a'", "\"\xff\"", "\"\t\"", "/**/1"}) {
        EXPECT_EQ(with({json}),
                  "mode info: the JSON form of the value of 'k\\t' is not valid JSON in UTF-8, or "
                  "is nested too deeply")
            << json;
    }
    const auto nested = [&](std::size_t levels) {
        return with({std::string(levels, '[') + std::string(levels, ']')});
    };
    EXPECT_EQ(nested(256), std::nullopt);
    EXPECT_EQ(nested(257),
              "mode info: the JSON form of the value of 'k\\t' is not valid JSON in UTF-8, or is "
              "nested too deeply");
}

TEST_F(recording, rejects_formats_with_the_same_or_an_invalid_nick) {
    service.streams = std::vector<fake_stream>();
    service.formats = {{3, "raw"}, {5, "raw"}};
    EXPECT_EQ(refusal(), "formats 3 and 5 have the same name, 'raw'");
    service.formats = {{3, "r\xe4w"}};
    EXPECT_EQ(refusal(), "formats: the key 'r\\xe4w' is not valid UTF-8");
}

// --- Other kinds --------------------------------------------------------------------------------

TEST_F(recording, reports_each_value_of_another_kind_on_standard_error) {
    fake_stream stream{.id = 7};
    stream.debug = fake_map{{"two\nlines", fake_other{" [ 1 ,\n2 ] "}}, {"plain", number(1)}};
    service.streams = std::vector{stream};
    service.mode = fake_answer<fake_map>(
        fake_map{{"a", fake_other{R"("\ud800 \u0000 x")"}}, {"b", fake_other{"-0"}}});
    const captured errors(stderr);
    const std::string all = recorded();
    EXPECT_EQ(errors.text(),
              "oru-snapshot: mode info: 'a' is of an unknown kind: recorded as JSON\n"
              "oru-snapshot: mode info: 'b' is of an unknown kind: recorded as JSON\n"
              "oru-snapshot: stream 7: debug: 'two\\nlines' is of an unknown kind: recorded "
              "as JSON\n");
    EXPECT_EQ(lines_from(all, "\"a\"", 2),
              "            \"a\": { \"other\": \"\\ud800 \\u0000 x\" },\n"
              "            \"b\": { \"other\": -0 }\n");
    EXPECT_EQ(lines_from(all, "\"two", 1),
              "                    \"two\\nlines\": { \"other\": [1,2] }\n");
}

// --- Redaction ----------------------------------------------------------------------------------

TEST_F(recording, redacts_identities_and_messages) {
    service.system = fake_failure{"Berta is logged in"};
    service.mode = fake_answer<fake_map>(fake_map{{"identity", fake_other{R"(["Emil"])"}},
                                                  {"identity[0]", fake_other{"[1]"}},
                                                  {"operator", text("kept")}});
    service.stream_debug = fake_map{{"identity", number(3)},          {"identity.", number(4)},
                                    {"identity.Anton", number(1)},    {"identity.B\xff", number(2)},
                                    {"identity.client-1", number(5)}, {"peak", number(6)}};
    fake_stream stream{.id = 1};
    stream.info = fake_map{{"identity", text("Caesar")},    {"identity[0]", text("Anton")},
                           {"identity[12]", text("B\xff")}, {"identity[1]x", text("kept")},
                           {"identity[]", text("kept")},    {"identity[a]", text("kept")},
                           {"identitys", text("kept")},     {"the identity", text("kept")}};
    stream.settings = fake_map{{"identity", text("Anton")}};
    stream.debug = fake_failure{"D\xffra"};
    service.streams = std::vector{stream};
    service.channel_info = one("input.count", number(0));
    service.channels = std::vector<fake_channel>();
    service.channels_of_inputs = fake_failure{"Friedrich"};
    service.output = fake_failure{"Gustav"};

    const captured errors(stderr);
    EXPECT_EQ(recorded({.about = "by Heinrich", .is_redacted = true}), R"({
    "version": 1,
    "about": "by Heinrich",
    "recorded": "2026-11-22T07:14:32Z",
    "system": { "$error": "redacted" },
    "mode": {
        "info": {
            "identity": { "other": "redacted" },
            "identity[0]": { "other": [1] },
            "operator": "kept"
        }
    },
    "stream": {
        "debug": {
            "identity": 3,
            "identity.client-1": 4,
            "identity.client-2": 1,
            "identity.client-3": 2,
            "identity.client-4": 5,
            "peak": 6
        },
        "quota": { "$error": "redacted" },
        "limit": { "$error": "redacted" },
        "all": [
            {
                "id": 1,
                "info": {
                    "identity": "client-5",
                    "identity[0]": "client-2",
                    "identity[12]": "client-3",
                    "identity[1]x": "kept",
                    "identity[]": "kept",
                    "identity[a]": "kept",
                    "identitys": "kept",
                    "the identity": "kept"
                },
                "settings": {
                    "identity": "client-2"
                },
                "debug": { "$error": "redacted" }
            }
        ]
    },
    "channel": {
        "info": {
            "input.count": 0
        },
        "all": [],
        "filtered": { "$error": "redacted" }
    },
    "input": {
        "all": []
    },
    "output": {
        "all": [
            {
                "id": 0,
                "$error": "redacted"
            }
        ]
    },
    "formats": {}
}
)");
    EXPECT_EQ(errors.text(),
              "oru-snapshot: mode info: 'identity' is of an unknown kind: recorded as JSON\n"
              "oru-snapshot: mode info: 'identity[0]' is of an unknown kind: recorded as "
              "JSON\n");
}

TEST_F(recording, sorts_the_keys_that_redaction_changed) {
    fake_map debug;
    for (char name = 'a'; name <= 'k'; ++name) {
        debug[std::string("identity.") + name] = number(static_cast<std::uint32_t>(name - 'a'));
    }
    service.stream_debug = debug;
    EXPECT_EQ(lines_from(recorded({.is_redacted = true}), "\"debug\"", 6),
              "        \"debug\": {\n"
              "            \"identity.client-1\": 0,\n"
              "            \"identity.client-10\": 9,\n"
              "            \"identity.client-11\": 10,\n"
              "            \"identity.client-2\": 1,\n"
              "            \"identity.client-3\": 2,\n");
}

TEST_F(recording, does_not_redact_the_message_if_no_query_is_answered) {
    service.system = fake_failure{"/run/oru: refused"};
    service.streams = fake_failure{"x"};
    service.channels = fake_failure{"x"};
    service.channels_of_inputs = fake_failure{"x"};
    EXPECT_EQ(refusal({.is_redacted = true}), "/run/oru: refused");
}

// --- What a service can answer and a file cannot contain ----------------------------------------

// Returns what a command prints.
std::string printed(const command& command) {
    const captured output(stdout);
    EXPECT_EQ(command.run({}), 0);
    return output.text();
}

class more_than_a_file_contains : public recording {
  protected:
    more_than_a_file_contains() {
        fake_stream first{.id = 7};
        first.settings = fake_map{{"identity", text("gate\xff\0north"s)}, {"format", number(6)}};
        first.info = fake_map{{"$error", text("busy")}, {"peers", number(2)}};
        fake_stream second{.id = 7};
        second.settings = fake_map{{"identity", fake_other{}}, {"format", number(3)}};
        second.info = fake_map{{"peers", number(5)}};
        service.streams = std::vector{first, second};
        service.stream_debug = fake_map{{"identity.k\xff", number(4)}};
        service.formats = {{6, "x\xe4"}, {6, "never"}};
        service.origin = replay::origin{.path = "old.json", .recorded = "0001-01-01T00:00:00Z"};
    }
};

TEST_F(more_than_a_file_contains, is_shown) {
    const std::string all = printed(show);
    EXPECT_EQ(lines_from(all, "7  gate", 4),
              "!      7  gate\\xff  x\\xe4   -       -       -     -     -\n"
              "    debug failed\n"
              "!      7  -         NV12    -       -       -     -     -\n"
              "    debug failed\n");
    EXPECT_EQ(lines_from(all, "k\\xff", 1), "  k\\xff          4\n");
}

TEST_F(more_than_a_file_contains, is_drawn) {
    const std::string all = printed(graph);
    EXPECT_EQ(lines_from(all, "stream_0 [", 2),
              "        stream_0 [label=\"stream 7: x\\\\xe4\"]\n"
              "        stream_1 [label=\"stream 7: NV12\"]\n");
}

TEST_F(more_than_a_file_contains, is_counted) {
    const std::string all = printed(metrics);
    EXPECT_EQ(lines_from(all, "oru_snapshot_recorded", 3),
              "# HELP oru_snapshot_recorded_timestamp_seconds When the answers were recorded, in "
              "seconds since 1970.\n"
              "# TYPE oru_snapshot_recorded_timestamp_seconds gauge\n"
              "oru_snapshot_recorded_timestamp_seconds -62135596800\n");
    EXPECT_EQ(lines_from(all, "oru_streams 2", 1), "oru_streams 2\n");
    EXPECT_EQ(lines_from(all, "oru_streams_without_series 1", 1), "oru_streams_without_series 1\n");
    EXPECT_EQ(lines_from(all, "oru_stream_info{", 1),
              "oru_stream_info{stream=\"7\",identity=\"gate\\\\xff\",format=\"x\\\\xe4\","
              "resolution=\"\",input=\"\"} 1\n");
    EXPECT_EQ(lines_from(all, "oru_identity_streams_started_total{", 1),
              "oru_identity_streams_started_total{identity=\"k\\\\xff\"} 4\n");
}

}  // namespace
