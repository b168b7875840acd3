#include <sys/stat.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "snapshot_tool/oru_snapshot.h"
#include "support/file_size_limit.h"
#include "support/temp_directory.h"

namespace {

using namespace std::string_literals;

// A minimal snapshot, and its recording.
constexpr auto smallest = R"({ "stream": { "all": [ ] }, "formats": { } })";
constexpr auto smallest_recorded = R"({
    "version": 1,
    "recorded": "2026-11-22T07:14:32Z",
    "system": { "$error": "system not recorded" },
    "mode": { "$error": "mode not recorded" },
    "stream": {
        "debug": { "$error": "stream debug not recorded" },
        "quota": { "$error": "stream quota not recorded" },
        "limit": { "$error": "stream limit not recorded" },
        "all": []
    },
    "channel": {
        "info": { "$error": "channel info not recorded" },
        "all": { "$error": "channels not recorded" },
        "filtered": { "$error": "channels not recorded" }
    },
    "input": {
        "all": []
    },
    "output": {
        "all": [
            {
                "id": 0,
                "$error": "output 0 not recorded"
            }
        ]
    },
    "formats": {}
}
)";

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class record : public testing::Test {
  protected:
    // Runs `oru-snapshot record` on a service that answers from this snapshot.
    result recording_of(std::string_view snapshot, const std::vector<std::string>& arguments = {},
                        command streams = {}) {
        streams.environment.push_back("ORU_SNAPSHOT=" + service_.write("service.json", snapshot));
        streams.environment.emplace_back("SOURCE_DATE_EPOCH=1795331672");
        std::vector<std::string> all{"record"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return oru_snapshot(all, streams);
    }

    std::string unreachable() const {
        return "oru-snapshot: " + service_.path() + "/service.json: the file is empty\n";
    }

    std::string scratch(const std::string& name) const { return scratch_.path() + '/' + name; }

    std::size_t files() const {
        const std::filesystem::directory_iterator all(scratch_.path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    temp_directory service_;
    temp_directory scratch_;
};

TEST_F(record, writes_every_answer_in_its_form) {
    EXPECT_EQ(recording_of(R"({
  "formats": {"raw": 3, "odd \"name\"": 4294967295, "h264": 0},
  "output": {"all": [{"id": 1}, {"id": 0, "settings": {"$error": "no settings"}, "info": {"running": true}}]},
  "input": {"all": [{"id": 2, "info": {"crop.max": [1, 2]}, "crop": [0, 0, 640, 480],
      "resolution_unrotated": {"capture": [1920, 1080], "other": [1, 1]}}, {"id": 1, "$error": "closed"}]},
  "channel": {"info": {"input.count": 2, "z": 1.0, "a": -0.0}, "all": [
      {"id": 7, "properties": {"key": "input", "more": 1}, "info": {"type.id": 2}, "crop": [1, 2, 3, 4],
       "crop_max": [5, 6], "resolutions": {"available": [[1920, 1080], [640, 480]], "other": []}},
      {"id": 3, "properties": {"key": "view"}, "info": {}, "crop": {"$error": "no crop"},
       "crop_max": [0, 0], "resolutions": {"available": []}}]},
  "stream": {"limit": {}, "quota": {"b": {"double": "-inf"}, "a": {"uint32": 5}},
      "debug": {"identity.a": {"uint16": 1}, "d": 1E2, "w": {"int64": 3}, "n": -3, "t": "caf\u00e9 \n"},
      "all": [{"info": {}, "settings": {}, "debug": {}},
              {"id": 6699, "info": {"p": [4294967295, 0]}, "settings": {"$error": "busy"},
               "debug": {"e": {"double": 7}, "f": false}}]},
  "mode": {"info": {}}, "system": {"caps": {"output": true}}
})"),
              ended(0, R"({
    "version": 1,
    "recorded": "2026-11-22T07:14:32Z",
    "system": {
        "caps": {
            "output": true
        }
    },
    "mode": {
        "info": {}
    },
    "stream": {
        "debug": {
            "d": 100.0,
            "identity.a": { "uint16": 1 },
            "n": -3,
            "t": "café \n",
            "w": { "int64": 3 }
        },
        "quota": {
            "a": 5,
            "b": { "double": "-inf" }
        },
        "limit": {},
        "all": [
            {
                "id": 0,
                "info": {},
                "settings": {},
                "debug": {}
            },
            {
                "id": 6699,
                "info": {
                    "p": [4294967295, 0]
                },
                "settings": { "$error": "busy" },
                "debug": {
                    "e": 7.0,
                    "f": false
                }
            }
        ]
    },
    "channel": {
        "info": {
            "a": -0.0,
            "input.count": 2,
            "z": 1.0
        },
        "all": [
            {
                "id": 7,
                "properties": {
                    "key": "input"
                },
                "info": {
                    "type.id": 2
                },
                "crop": [1, 2, 3, 4],
                "crop_max": [5, 6],
                "resolutions": {
                    "available": [[1920, 1080], [640, 480]]
                }
            },
            {
                "id": 3,
                "info": {},
                "crop": { "$error": "no crop" },
                "crop_max": [0, 0],
                "resolutions": {
                    "available": []
                }
            }
        ]
    },
    "input": {
        "all": [
            {
                "id": 2,
                "info": {
                    "crop.max": [1, 2]
                },
                "crop": [0, 0, 640, 480],
                "resolution_unrotated": {
                    "capture": [1920, 1080]
                }
            }
        ]
    },
    "output": {
        "all": [
            {
                "id": 0,
                "info": {
                    "running": true
                },
                "settings": { "$error": "no settings" }
            }
        ]
    },
    "formats": {
        "h264": 0,
        "raw": 3,
        "odd \"name\"": 4294967295
    }
}
)"));
}

TEST_F(record, keeps_kinds_that_have_no_plain_form) {
    const result got = recording_of(R"({"mode": {"info": {
        "json": {"other": [1, /* one */ {"a" : "b c", "a": 1.50E+03}]}, "text": {"bytes": "6fff"},
        "plain": {"bytes": "6f6b"}, "nan": {"double": "-nan"}, "null": {"other": null}}},
        "stream": {"all": [{"id": 9, "settings": {"key": {"other": {}}}}]}})");
    const std::string mode = R"({
    "version": 1,
    "recorded": "2026-11-22T07:14:32Z",
    "system": { "$error": "system not recorded" },
    "mode": {
        "info": {
            "json": { "other": [1,{"a":"b c","a":1.50E+03}] },
            "nan": { "double": "-nan" },
            "null": { "other": null },
            "plain": "ok",
            "text": { "bytes": "6fff" }
        }
    },
)";
    EXPECT_EQ(got.out.substr(0, mode.size()), mode);
    EXPECT_EQ(got.err,
              "oru-snapshot: mode info: 'json' is of an unknown kind: recorded as JSON\n"
              "oru-snapshot: mode info: 'null' is of an unknown kind: recorded as JSON\n"
              "oru-snapshot: stream 9: settings: 'key' is of an unknown kind: recorded as JSON\n");
    EXPECT_EQ(got.status, 0);
    EXPECT_EQ(recording_of(got.out), got);
}

TEST_F(record, lists_the_channels_of_inputs_if_no_property_can_mark_them) {
    const result got = recording_of(R"({"channel": {
        "all": [{"id": 1, "info": {}}, {"id": 2, "info": {"type.id": 2}}],
        "filtered": [{"id": 2, "info": {"type.id": 2}, "crop": [1, 2, 3, 4]}]}})");
    EXPECT_EQ(got.status, 0) << got;
    const std::string filtered = R"(        ],
        "filtered": [
            {
                "id": 2,
                "info": {
                    "type.id": 2
                },
                "crop": [1, 2, 3, 4],
                "crop_max": { "$error": "channel 2: crop_max not recorded" },
                "resolutions": {
                    "available": { "$error": "channel 2: resolutions not recorded" }
                }
            }
        ]
    },
    "input": {
        "all": [
            {
                "id": 2,
                "$error": "input 2 not recorded"
            }
        ]
    },
)";
    EXPECT_TRUE(got.out.contains(filtered)) << got;
    EXPECT_FALSE(got.out.contains("properties")) << got;
    EXPECT_EQ(recording_of(got.out), got);
}

TEST_F(record, fails_if_no_query_is_answered) {
    EXPECT_EQ(recording_of(""), ended(1, "", unreachable()));
    EXPECT_EQ(recording_of("", {"-o", scratch("file")}), ended(1, "", unreachable()));
    EXPECT_EQ(recording_of("", {"--redact", "--about", "x"}), ended(1, "", unreachable()));
    EXPECT_EQ(recording_of("{}"), ended(1, "", "oru-snapshot: system not recorded\n"));
    EXPECT_EQ(recording_of(R"({"system": {"$error": "two\nlines"}})"),
              ended(1, "", "oru-snapshot: two\\nlines\n"));
    EXPECT_EQ(recording_of(R"({"formats": {"a": 1}})"),
              ended(1, "", "oru-snapshot: system not recorded\n"));
    EXPECT_EQ(files(), 0U);
}

TEST_F(record, prints_to_standard_output_or_into_a_file) {
    const std::string file = scratch("recorded.json");
    EXPECT_EQ(recording_of(smallest), ended(0, smallest_recorded));
    EXPECT_EQ(recording_of(smallest, {"-o", "-"}), ended(0, smallest_recorded));
    EXPECT_EQ(recording_of(smallest, {"-o", file}), ended(0, ""));
    EXPECT_EQ(content(file), smallest_recorded);
    struct stat status;
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(files(), 1U);

    EXPECT_EQ(recording_of(smallest, {"-o", scratch_.path()}),
              ended(1, "", "oru-snapshot: " + scratch_.path() + ": is not a regular file\n"));
    EXPECT_EQ(recording_of(smallest, {"-o", "/nowhere/x"}),
              ended(1, "", "oru-snapshot: /nowhere/x: No such file or directory\n"));
}

TEST_F(record, accepts_a_text_for_people) {
    const std::string version = "{\n    \"version\": 1,\n";
    const std::string about = "    \"about\": \"gate \\\"north\\\", caf\u00e9\",\n";
    const result got = recording_of(smallest, {"--about", "gate \"north\", caf\u00e9"});
    EXPECT_EQ(got,
              ended(0, version + about + std::string(smallest_recorded).substr(version.size())));
    EXPECT_EQ(recording_of(smallest, {"--about=gate \"north\", caf\u00e9"}), got);
    // It is not an answer of the service: the recording of a recording does not contain it.
    EXPECT_EQ(recording_of(got.out), ended(0, smallest_recorded));
    EXPECT_EQ(recording_of(smallest, {"--about", "\xff"}),
              ended(1, "", "oru-snapshot: --about: the text is not valid UTF-8\n"));
}

TEST_F(record, keeps_the_old_file_if_the_new_one_cannot_be_written) {
    const std::string file = scratch_.write("recorded.json", "old");
    {
        const file_size_limit full(100);
        EXPECT_EQ(recording_of(smallest, {"-o", file}),
                  ended(1, "", "oru-snapshot: " + file + ": File too large\n"));
    }
    EXPECT_EQ(content(file), "old");
    EXPECT_EQ(files(), 1U);
}

TEST_F(record, fails_if_its_output_is_lost) {
    const std::string lost = "oru-snapshot: cannot write to standard output: ";
    EXPECT_EQ(recording_of(smallest, {}, {.stdout_to = "/dev/full"}),
              ended(1, "", lost + "No space left on device\n"));
    EXPECT_EQ(recording_of(smallest, {}, {.stdout_to = closed_stream}),
              ended(1, "", lost + "Bad file descriptor\n"));
    // Without output nothing can be lost.
    EXPECT_EQ(recording_of(smallest, {"-o", scratch("file")}, {.stdout_to = "/dev/full"}),
              ended(0, ""));
}

// An answer of every kind to every query that redaction changes, with unique texts.
TEST_F(record, redacts_every_identity_and_message) {
    const std::vector<std::string> texts = {"anton", "berta",  "caesar",   "dora", "emil",
                                            "fritz", "gustav", "heinrich", "ida"};
    const std::string snapshot = R"({
        "system": {"$error": "fritz"},
        "mode": {"info": {"identity": "berta", "identity.anton": 4}},
        "stream": {"debug": {"identity.anton": 1, "identity.caesar": 2},
            "quota": {"$error": "emil"}, "limit": {},
            "all": [{"id": 1, "info": {"identity[0]": "anton", "identity[1]": "dora", "note": "kept"},
                     "settings": {"identity": "caesar"}, "debug": {"$error": "gustav"}}]},
        "channel": {"info": {}, "all": [{"id": 1, "properties": {"key": "input"}, "info": {"identity": "dora"},
            "crop": {"$error": "heinrich"}}]},
        "input": {"all": [{"id": 1, "$error": "ida"}]}})";
    const result got = recording_of(snapshot, {"--redact", "--about", "kept too"});
    EXPECT_EQ(got.status, 0) << got;
    for (const std::string& text : texts) {
        EXPECT_FALSE(got.out.contains(text)) << text << '\n' << got;
        EXPECT_TRUE(recording_of(snapshot).out.contains(text)) << text;
    }
    EXPECT_TRUE(got.out.contains("\"about\": \"kept too\""));
    EXPECT_TRUE(got.out.contains("\"note\": \"kept\""));

    // The reports differ in those texts alone.
    EXPECT_EQ(
        tlm(snapshot, {"-i"}),
        ended(
            0,
            "{\n    \"identities\": {\n        \"anton\": 1,\n        \"caesar\": 2\n    }\n}\n"));
    EXPECT_EQ(tlm(got.out, {"-i"}), ended(0,
                                          "{\n    \"identities\": {\n        \"client-2\": 1,\n    "
                                          "    \"client-3\": 2\n    }\n}\n"));
    EXPECT_EQ(report(snapshot, {"-q"}),
              ended(1, "", "oru-serverreport-tool: Failed to get quota: emil\n"));
    EXPECT_EQ(report(got.out, {"-q"}),
              ended(1, "", "oru-serverreport-tool: Failed to get quota: redacted\n"));
}

// --- A FILE -------------------------------------------------------------------------------------

TEST_F(record, writes_everything_in_a_file) {
    const std::string file = scratch_.write("file.json", R"({ // by hand
  "formats": {"second": 3, "last": 9, "first": 3}, "about": "gate 4", "recorded": "2001-02-03T04:05:06Z",
  "output": {"all": [{"id": 3, "settings": {"$error": "x"}}, {"id": 0, "$error": "y"}]},
  "input": {"all": [{"id": 9, "crop": [1, 2, 3, 4], "resolution_unrotated": {"z": [1, 2], "other": {"$error": ""}}},
                    {"id": 2, "$error": "z"}, {"id": 5}]},
  "channel": {"filtered": [{"id": 7}], "all": [
      {"id": 4, "properties": {"more": {"uint16": 1}, "key": "view"}, "crop_max": [5, 6],
       "resolutions": {"other": [], "available": [[7, 8], [9, 10]]}}, {}]},
  "stream": {"quota": {"b": {"other": [ 1 ]}, "a": 5.0}}, "mode": {}})");
    const std::string recorded = R"({
    "version": 1,
    "about": "gate 4",
    "recorded": "2001-02-03T04:05:06Z",
    "mode": {},
    "stream": {
        "quota": {
            "a": 5.0,
            "b": { "other": [1] }
        }
    },
    "channel": {
        "all": [
            {
                "id": 4,
                "properties": {
                    "key": "view",
                    "more": { "uint16": 1 }
                },
                "crop_max": [5, 6],
                "resolutions": {
                    "available": [[7, 8], [9, 10]],
                    "other": []
                }
            },
            {
                "id": 0
            }
        ],
        "filtered": [
            {
                "id": 7
            }
        ]
    },
    "input": {
        "all": [
            {
                "id": 9,
                "crop": [1, 2, 3, 4],
                "resolution_unrotated": {
                    "other": { "$error": "" },
                    "z": [1, 2]
                }
            },
            {
                "id": 2,
                "$error": "z"
            },
            {
                "id": 5
            }
        ]
    },
    "output": {
        "all": [
            {
                "id": 3,
                "settings": { "$error": "x" }
            },
            {
                "id": 0,
                "$error": "y"
            }
        ]
    },
    "formats": {
        "second": 3,
        "first": 3,
        "last": 9
    }
}
)";
    EXPECT_EQ(oru_snapshot({"record", file}), ended(0, recorded));
    EXPECT_EQ(oru_snapshot({"record", "-"}, {.stdin_from = scratch_.write("again", recorded)}),
              ended(0, recorded));
    EXPECT_EQ(oru_snapshot({"record", file, "--about", "x", "-o", file}), ended(0, ""));
    const std::string other_about = "    \"about\": \"x\",\n";
    EXPECT_EQ(content(file), std::string(recorded).replace(
                                 recorded.find("    \"about\""),
                                 std::strlen("    \"about\": \"gate 4\",\n"), other_about));
}

TEST_F(record, takes_a_file_that_answers_nothing) {
    EXPECT_EQ(oru_snapshot({"record", scratch_.write("file", "{}")}),
              ended(0, "{\n    \"version\": 1\n}\n"));
    const std::string wrong = scratch_.write("file", "[");
    EXPECT_EQ(
        oru_snapshot({"record", wrong, "-o", scratch("out")}),
        ended(1, "",
              "oru-snapshot: " + wrong + ":1:1: expected a snapshot (an object), found '['\n"));
    EXPECT_EQ(files(), 1U);
}

// In the order of the file's lists, which is not that of the ids.
TEST_F(record, numbers_the_clients_in_a_file) {
    const result got =
        oru_snapshot({"record", "--redact", scratch_.write("file", R"({"input": {"all": [
        {"id": 9, "info": {"identity": "b", "text": "kept"}}, {"id": 2, "info": {"identity": "a"}}]}})")});
    EXPECT_EQ(got.status, 0);
    EXPECT_TRUE(got.out.contains(R"("identity": "client-1",
                    "text": "kept")"))
        << got;
    EXPECT_TRUE(got.out.contains(R"("identity": "client-2")")) << got;
}

// --- A key --------------------------------------------------------------------------------------

class redaction_key : public record {
  protected:
    result redacted(const std::string& key, std::string_view snapshot) {
        key_file_ = scratch_.write("key\xff", key);
        return oru_snapshot(
            {"record", "--redact-key=" + key_file_, scratch_.write("file.json", snapshot)});
    }

    std::string key_file_;
};

// The names are the first digits of HMAC-SHA256, computed with `openssl dgst -sha256 -mac HMAC`.
TEST_F(redaction_key, gives_each_client_a_name_that_depends_on_nothing_else) {
    const std::string snapshot =
        R"({"stream": {"debug": {"identity.anton": 1, "$error": 5}, "quota": {"$error": "by anton"},
            "all": [{"info": {"identity[0]": "berta", "identity[1]": {"bytes": "ff"}}}]}})";
    const std::string expected = R"({
    "version": 1,
    "stream": {
        "debug": {
            "$error": 5,
            "identity.client-3688c3d573cb": 1
        },
        "quota": { "$error": "redacted" },
        "all": [
            {
                "id": 0,
                "info": {
                    "identity[0]": "client-bae6242be7df",
                    "identity[1]": "client-fa510ee1b98d"
                }
            }
        ]
    }
}
)";
    EXPECT_EQ(redacted("0123456789abcdef", snapshot), ended(0, expected));
    EXPECT_EQ(oru_snapshot({"record", "--redact", "--redact-key", key_file_, scratch("file.json")}),
              ended(0, expected));
    EXPECT_TRUE(
        recording_of(snapshot, {"--redact-key", key_file_}).out.contains("client-3688c3d573cb"));
    const result other = redacted("0123456789abcdeF", snapshot);
    EXPECT_EQ(other.status, 0);
    EXPECT_FALSE(other.out.contains("client-3688c3d573cb"));
}

TEST_F(redaction_key, has_16_to_4096_bytes_of_a_regular_file) {
    const std::string snapshot = R"({"mode": {}})";
    const auto refused = [&](const std::string& reason) {
        return ended(1, "", "oru-snapshot: " + scratch_.path() + "/key\\xff: " + reason + "\n");
    };
    EXPECT_EQ(redacted(std::string(16, '\0'), snapshot).status, 0);
    EXPECT_EQ(redacted(std::string(4096, 'k'), snapshot).status, 0);
    EXPECT_EQ(redacted("", snapshot), refused("has 0 bytes, but a key must have 16 to 4096"));
    EXPECT_EQ(redacted(std::string(15, 'k'), snapshot),
              refused("has 15 bytes, but a key must have 16 to 4096"));
    EXPECT_EQ(redacted(std::string(4097, 'k'), snapshot),
              refused("has more than 4096 bytes, but a key must have 16 to 4096"));
    const std::string out = scratch("out");
    for (const auto& [key, reason] : {std::pair("/dev/zero"s, "is not a regular file"s),
                                      {"/dev/fd/0"s, "is not a regular file"s},
                                      {scratch_.path(), "is not a regular file"s},
                                      {"/nowhere"s, "No such file or directory"s}}) {
        EXPECT_EQ(recording_of(smallest, {"--redact-key", key, "-o", out}),
                  ended(1, "", "oru-snapshot: " + key + ": " + reason + "\n"));
    }
    EXPECT_EQ(recording_of(smallest, {"--redact-key", "-"}),
              ended(2, "",
                    "oru-snapshot record: KEYFILE cannot be standard input\n"
                    "Try 'oru-snapshot record --help'.\n"));
    EXPECT_FALSE(std::filesystem::exists(out));
}

// Two names of 48 bits that were searched for.
TEST_F(redaction_key, must_distinguish_all_clients) {
    EXPECT_EQ(
        redacted(
            "0123456789abcdef",
            R"({"mode": {"info": {"identity": "client 4621010", "identity[1]": "client 34932799"}}})"),
        ended(
            1, "",
            "oru-snapshot: with this key, two clients get the same name, client-23997f15330e: use "
            "another key\n"));
}

TEST_F(record, reproduces_an_example) {
    EXPECT_EQ(recording_of(content(ORU_EXAMPLES_DIR "/two-input-encoder.json")),
              ended(0, content(ORU_EXAMPLES_DIR "/recorded-encoder.json")));
}

}  // namespace
