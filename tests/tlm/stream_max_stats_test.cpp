// The peak stream figures as key=value lines.
#include <string>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

std::string figures_of(const std::string& debug) {
    const result got = tlm(R"({"stream": {"debug": )" + debug + "}}", {"--stream-max-stats"});
    EXPECT_EQ(got.status, 0) << got;
    EXPECT_EQ(got.err, "");
    return got.out;
}

TEST(stream_max_stats, four_lines_with_the_peaks) {
    EXPECT_EQ(figures_of(R"({"global.capacity.peak": 1048576, "global.encoded.peers.peak": 3,
                             "global.raw.peers.peak": 1, "global.capacity": 7})"),
              "MaxBufferBytes=1048576\n"
              "MaxEncodeStreams=3\n"
              "MaxRawStreams=1\n"
              "Version=1\n");
}

TEST(stream_max_stats, no_debug_map_gives_minus_ones_and_no_error) {
    for (const char* snapshot :
         {"{}", R"({"stream": {}})", R"({"stream": {"debug": {"$error": "no counters"}}})"}) {
        EXPECT_EQ(tlm(snapshot, {"-q"}), ended(0,
                                               "MaxBufferBytes=-1\n"
                                               "MaxEncodeStreams=-1\n"
                                               "MaxRawStreams=-1\n"
                                               "Version=1\n"))
            << snapshot;
    }
}

TEST(stream_max_stats, absent_keys_are_0) {
    EXPECT_EQ(figures_of("{}"),
              "MaxBufferBytes=0\nMaxEncodeStreams=0\nMaxRawStreams=0\nVersion=1\n");
    EXPECT_EQ(figures_of(R"({"global.encoded.peers.peak": 2})"),
              "MaxBufferBytes=0\nMaxEncodeStreams=2\nMaxRawStreams=0\nVersion=1\n");
}

TEST(stream_max_stats, the_largest_value_stays_unsigned) {
    EXPECT_EQ(figures_of(R"({"global.capacity.peak": 4294967295,
                       "global.encoded.peers.peak": 4294967295,
                       "global.raw.peers.peak": 4294967295})"),
              "MaxBufferBytes=4294967295\n"
              "MaxEncodeStreams=4294967295\n"
              "MaxRawStreams=4294967295\n"
              "Version=1\n");
}

TEST(stream_max_stats, round_numbers_are_plain) {
    EXPECT_EQ(figures_of(R"({"global.capacity.peak": 1000, "global.encoded.peers.peak": 10,
                             "global.raw.peers.peak": 120})"),
              "MaxBufferBytes=1000\nMaxEncodeStreams=10\nMaxRawStreams=120\nVersion=1\n");
}

TEST(stream_max_stats, a_value_of_another_kind_counts_as_absent) {
    EXPECT_EQ(figures_of(R"({"global.capacity.peak": "12", "global.encoded.peers.peak": -1,
                             "global.raw.peers.peak": {"int64": 65535}})"),
              "MaxBufferBytes=0\nMaxEncodeStreams=0\nMaxRawStreams=0\nVersion=1\n");
    EXPECT_EQ(figures_of(R"({"global.capacity.peak": 4294967296, "global.encoded.peers.peak": 1.0,
                             "global.raw.peers.peak": true})"),
              "MaxBufferBytes=0\nMaxEncodeStreams=0\nMaxRawStreams=0\nVersion=1\n");
}

TEST(stream_max_stats, a_value_that_widens) {
    EXPECT_EQ(figures_of(R"({"global.raw.peers.peak": {"uint16": 65535}})"),
              "MaxBufferBytes=0\nMaxEncodeStreams=0\nMaxRawStreams=65535\nVersion=1\n");
}

}  // namespace
