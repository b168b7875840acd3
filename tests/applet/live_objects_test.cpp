// The tools release every object that the video service returns. A preloaded library counts the
// live objects when the process ends, for every switch on many snapshots.
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

using counts = std::map<std::string, std::size_t>;

struct counted {
    result ended;
    counts alive;  // when the process ended, by type
};

counted run_counted(const std::string& tool, const std::string& switch_name,
                    const std::filesystem::path& snapshot) {
    const temp_directory directory;
    const std::string file = directory.path() + "/alive";
    command what{.executable = program(tool),
                 .argv = {tool, switch_name},
                 .environment = etc_oru_in(directory.path())};
    what.environment[0] += ":" ORU_LIVE_OBJECTS;
    what.environment.push_back("ORU_SNAPSHOT=" + snapshot.string());
    what.environment.push_back("ORU_TEST_LIVE_OBJECTS=" + file);
    counted got{.ended = run(what), .alive = {}};
    std::ifstream lines(file);
    EXPECT_TRUE(lines.is_open()) << "no counts were written";
    std::string type;
    std::size_t count = 0;
    while (lines >> type >> count) {
        got.alive[type] = count;
    }
    return got;
}

std::size_t kept_streams(std::string_view report) {
    const std::string_view streams = report.substr(0, report.find("\"streaminfo\""));
    std::size_t count = 0;
    for (std::size_t at = 0; (at = streams.find("\n        { \"id/0x", at)) != streams.npos; ++at) {
        ++count;
    }
    return count;
}

// Returns the objects that remain: the three maps of each kept stream. A fatal failure ends the
// process at once, and the objects of the section remain.
counts expected(const result& ended) {
    if (ended.err.contains(": Failed to get limit: ")) {
        return {{"OruMap", 1}};
    }
    if (ended.err.contains(": Failed to get output: ")) {
        return {{"OruMap", 1}, {"OruSystem", 1}};
    }
    if (ended.err.contains(": Failed to get output settings: ")) {
        return {{"OruMap", 1}, {"OruOutput", 1}, {"OruSystem", 1}};
    }
    if (ended.err.contains(": Failed to get output info: ")) {
        return {{"OruMap", 2}, {"OruOutput", 1}, {"OruSystem", 1}};
    }
    const std::size_t maps = 3 * kept_streams(ended.out);
    return maps == 0 ? counts() : counts{{"OruMap", maps}};
}

const std::vector<tool_and_switch> every_switch =
    every_switch_and({{"oru-tlm-tool", "--foo"},
                      {"oru-tlm-tool", "--help"},
                      {"oru-serverreport-tool", "-lcai"},
                      {"oru-serverreport-tool", "--foo"}});

std::size_t expect_all_released(const std::filesystem::path& snapshot) {
    std::size_t kept = 0;
    for (const auto& [tool, switch_name] : every_switch) {
        SCOPED_TRACE(tool + " " + switch_name + " " + snapshot.filename().string());
        const counted got = run_counted(tool, switch_name, snapshot);
        EXPECT_EQ(got.ended.signal, 0);
        EXPECT_EQ(got.alive, expected(got.ended)) << got.ended;
        kept += kept_streams(got.ended.out);
    }
    return kept;
}

TEST(live_objects, only_the_maps_of_kept_streams_remain) {
    EXPECT_EQ(expect_all_released(ORU_EXAMPLES_DIR "/two-input-encoder.json"), 2 * 5);
    EXPECT_GT(expect_all_released(ORU_EXAMPLES_DIR "/failing-device.json"), 0);
    expect_all_released("/nowhere");
}

// The fuzzers' seeds contain every kind of failure.
TEST(live_objects, only_those_maps_remain_if_queries_fail) {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ORU_FUZZ_SEEDS_DIR)) {
        expect_all_released(entry.path());
        ++files;
    }
    EXPECT_GT(files, 20);
}

TEST(live_objects, what_remains_after_a_fatal_failure) {
    const temp_directory scratch;
    for (const auto& [switch_name, text, remaining] : {
             std::tuple<std::string, std::string, counts>{"-l", "{}", {}},
             {"-q", "{}", {}},
             {"-q", R"({"stream":{"quota":{}}})", {{"OruMap", 1}}},
             {"-o", R"({"system":{"caps":{"output":true}}})", {{"OruMap", 1}, {"OruSystem", 1}}},
             {"-o",
              R"({"system":{"caps":{"output":true}},"output":{"all":[{"id":0,"info":{}}]}})",
              {{"OruMap", 1}, {"OruOutput", 1}, {"OruSystem", 1}}},
             {"-o",
              R"({"system":{"caps":{"output":true}},"output":{"all":[{"id":0,"settings":{}}]}})",
              {{"OruMap", 2}, {"OruOutput", 1}, {"OruSystem", 1}}},
         }) {
        const counted got =
            run_counted("oru-serverreport-tool", switch_name, scratch.write("snapshot.json", text));
        EXPECT_EQ(got.ended.status, 1) << got.ended;
        EXPECT_EQ(got.alive, remaining) << got.ended;
    }
}

}  // namespace
