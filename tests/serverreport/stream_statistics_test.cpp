// The statistics record of a stream.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "serverreport/stream_lists.h"

namespace {

// Returns the line of the only stream.
std::string statistics_of(const std::string& info, const std::string& debug = "{}") {
    return array_of("streamstatistics", snapshot_of({{.info = info, .debug = debug}}));
}

std::string line_of(const std::string& members) {
    return "        { \"id/0x0001\" : {" + members + "} }\n";
}

const std::string zeros =
    R"("actual-framerate":0,"bitrate":0,"failcount":0,"framecount":0,"reclaimcount":0)";

TEST(stream_statistics, five_counters_without_client_data) {
    EXPECT_EQ(statistics_of("{}"), line_of(zeros));
    EXPECT_EQ(statistics_of(R"({"statistics.bitrate": 2000000, "statistics.frame_count": 1500,
        "statistics.framerate": 25, "statistics.failed_frames": 1234,
        "statistics.reclaim_count": 20, "bitrate": 7, "framerate": 7})"),
              line_of(R"("actual-framerate":25,"bitrate":2e+6,"failcount":1234,)"
                      R"("framecount":1.5e+3,"reclaimcount":2e+1)"));
    EXPECT_EQ(statistics_of(R"({"statistics.bitrate": 4294967295,
        "statistics.frame_count": true, "statistics.framerate": 29.97,
        "statistics.failed_frames": -1, "statistics.reclaim_count": "20"})"),
              line_of(R"("actual-framerate":0,"bitrate":4294967295,"failcount":0,)"
                      R"("framecount":0,"reclaimcount":0)"));
}

TEST(stream_statistics, figures_that_widen) {
    EXPECT_EQ(statistics_of(R"({"statistics.frame_count": {"uint16": 10}})",
                            R"({"tlm[0].duration": 59000000, "tlm[1].duration": {"uint16": 5},
        "tlm[0].reclaim_count": {"uint16": 20}, "tlm[0].reclaim_histogram": "1"})"),
              line_of(R"("actual-framerate":0,"bitrate":0,"failcount":0,"framecount":1e+1,)"
                      R"("reclaimcount":0,"tlm[0].duration":"00:00:59",)"
                      R"("tlm[1].duration":"00:00:00","tlm[0].reclaim_count":20,)"
                      R"("tlm[0].reclaim_histogram":[1])"));
}

TEST(stream_statistics, figures_up_to_the_largest) {
    EXPECT_EQ(statistics_of(R"({"statistics.bitrate": 4294967295,
        "statistics.frame_count": 4294967294, "statistics.framerate": 4294967293,
        "statistics.failed_frames": 4294967292, "statistics.reclaim_count": 4294967291})",
                            R"({"tlm[0].client_us": [4294967289, 4294967288],
        "tlm[0].reclaim_count": 4294967287, "tlm[0].reclaim_histogram": "1"})"),
              line_of(R"("actual-framerate":4294967293,"bitrate":4294967295,)"
                      R"("failcount":4294967292,"framecount":4294967294,)"
                      R"("reclaimcount":4294967291,"tlm[0].client_us":[4294967289,4294967288],)"
                      R"("tlm[0].reclaim_count":4294967287,"tlm[0].reclaim_histogram":[1])"));
}

TEST(stream_statistics, client_data_follows_in_its_groups) {
    EXPECT_EQ(
        statistics_of("{}", R"({
        "tlm[0].client_us": [3, 20], "tlm[1].client_us": [9, 9],
        "tlm[0].duration": {"int64": 59000000}, "tlm[3].duration": {"int64": 3600000000},
        "tlm[0].reclaim_count": 20, "tlm[0].reclaim_histogram": "1,2,3",
        "tlm[2].reclaim_count": 1000, "tlm[2].reclaim_histogram": "10, 20"})"),
        line_of(zeros +
                R"(,"tlm[0].client_us":[3,2e+1])"
                R"(,"tlm[0].duration":"00:00:59","tlm[3].duration":"01:00:00")"
                R"(,"tlm[0].reclaim_count":20,"tlm[2].reclaim_count":1000)"
                R"(,"tlm[0].reclaim_histogram":[1,2,3],"tlm[2].reclaim_histogram":[10, 20])"));
}

TEST(stream_statistics, groups_that_are_empty_leave_no_comma) {
    EXPECT_EQ(
        statistics_of("{}", R"({"tlm[1].reclaim_count": 2, "tlm[1].reclaim_histogram": "7"})"),
        line_of(zeros + R"(,"tlm[1].reclaim_count":2,"tlm[1].reclaim_histogram":[7])"));
    EXPECT_EQ(statistics_of("{}", R"({"tlm[0].client_us": [0, 4294967295]})"),
              line_of(zeros + R"(,"tlm[0].client_us":[0,4294967295])"));
    EXPECT_EQ(statistics_of("{}", R"({"tlm[7].duration": {"int64": 1000000}})"),
              line_of(zeros + R"(,"tlm[7].duration":"00:00:01")"));
}

TEST(stream_statistics, client_times_of_another_kind_are_zeros) {
    for (const char* value : {"5", "\"5,6\"", "true", "-1", "1.5"}) {
        EXPECT_EQ(statistics_of("{}", std::string(R"({"tlm[0].client_us": )") + value + "}"),
                  line_of(zeros + R"(,"tlm[0].client_us":[0,0])"))
            << value;
    }
    EXPECT_EQ(statistics_of(R"({"tlm[0].client_us": [1, 2]})"), line_of(zeros));
    EXPECT_EQ(statistics_of("{}", R"({"tlm[1].client_us": [1, 2]})"), line_of(zeros));
}

TEST(stream_statistics, durations) {
    for (const auto& [microseconds, text] : {std::pair<std::string, std::string>{"0", "00:00:00"},
                                             {"999999", "00:00:00"},
                                             {"59000000", "00:00:59"},
                                             {"360000000000", "100:00:00"},
                                             {"9223372036854775807", "2562047788:00:54"}}) {
        EXPECT_EQ(statistics_of("{}", R"({"tlm[0].duration": {"int64": )" + microseconds + "}}"),
                  line_of(zeros + R"(,"tlm[0].duration":")" + text + "\""))
            << microseconds;
    }
    for (const char* left_out : {"-1", "-1000000", "-9223372036854775808", "\"59000000\"",
                                 "59000000.0", "true", "[1, 2]"}) {
        EXPECT_EQ(statistics_of("{}", std::string(R"({"tlm[0].duration": )") + left_out + "}"),
                  line_of(zeros))
            << left_out;
    }
}

TEST(stream_statistics, eight_clients_and_no_more) {
    std::string debug;
    std::string durations;
    std::string counts;
    std::string histograms;
    for (int n = 0; n <= 12; ++n) {
        const std::string key = "\"tlm[" + std::to_string(n) + "].";
        const std::string count = std::to_string((n + 1) * 10);
        debug += (n == 0 ? "" : ", ") + key +
                 "duration\": {\"int64\": " + std::to_string(n * 1000000) + "}, " + key +
                 "reclaim_count\": " + count + ", " + key + "reclaim_histogram\": \"" + count +
                 "\"";
        if (n < 8) {
            durations += "," + key + "duration\":\"00:00:0" + std::to_string(n) + "\"";
            counts += "," + key + "reclaim_count\":" + count;
            histograms += "," + key + "reclaim_histogram\":[" + count + "]";
        }
    }
    EXPECT_EQ(statistics_of("{}", "{" + debug + "}"),
              line_of(zeros + durations + counts + histograms));
}

TEST(stream_statistics, a_histogram_needs_its_count_and_a_count_its_histogram) {
    for (const char* debug :
         {R"({"tlm[0].reclaim_histogram": "1,2"})",
          R"({"tlm[0].reclaim_histogram": "1,2", "tlm[0].reclaim_count": 0})",
          R"({"tlm[0].reclaim_histogram": "1,2", "tlm[0].reclaim_count": -5})",
          R"({"tlm[0].reclaim_histogram": "1,2", "tlm[0].reclaim_count": "5"})",
          R"({"tlm[0].reclaim_histogram": "1,2", "tlm[1].reclaim_count": 5})",
          R"({"tlm[0].reclaim_count": 5})",
          R"({"tlm[0].reclaim_count": 5, "tlm[0].reclaim_histogram": [1, 2]})"}) {
        EXPECT_EQ(statistics_of("{}", debug), line_of(zeros)) << debug;
    }
}

TEST(stream_statistics, a_histogram_is_copied_unchecked) {
    for (const auto& [recorded, written] :
         {std::pair<std::string, std::string>{"oops", "oops"},
          {"", ""},
          {"1,", "1,"},
          {R"([1],{\"a\":2})", R"([1],{"a":2})"},
          {"]}", "]}"},
          {" 1 , 2 ", " 1 , 2 "},
          {R"(1\t2\\)", "1\t2\\"},
          {R"(\u0001 and a good deal more \u001f é)", "\x01 and a good deal more \x1f é"}}) {
        EXPECT_EQ(statistics_of("{}", R"({"tlm[0].reclaim_count": 1,
                                          "tlm[0].reclaim_histogram": ")" +
                                          recorded + "\"}"),
                  line_of(zeros + R"(,"tlm[0].reclaim_count":1,"tlm[0].reclaim_histogram":[)" +
                          written + "]"))
            << recorded;
    }
}

}  // namespace
