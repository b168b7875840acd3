#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "snapshot_tool/oru_snapshot.h"

namespace {

constexpr auto down =
    "# HELP oru_up Whether the video service answers.\n"
    "# TYPE oru_up gauge\n"
    "oru_up 0\n"
    "# HELP oru_build_info The program that wrote these figures.\n"
    "# TYPE oru_build_info gauge\n"
    "oru_build_info{version=\"1.1.0\"} 1\n";
constexpr auto up =
    "# HELP oru_up Whether the video service answers.\n"
    "# TYPE oru_up gauge\n"
    "oru_up 1\n"
    "# HELP oru_build_info The program that wrote these figures.\n"
    "# TYPE oru_build_info gauge\n"
    "oru_build_info{version=\"1.1.0\"} 1\n";

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(metrics, contain_every_figure) {
    EXPECT_EQ(oru_snapshot_beside(R"({
        "stream": {
            "debug": {"global.capacity": 1, "global.capacity.peak": 2, "global.encoded.peers": 3,
                      "global.encoded.peers.peak": 4, "global.encoded.jpeg.peers": 5,
                      "global.raw.peers": 6, "global.raw.peers.peak": 7, "identity.a": 8},
            "quota": {"global.hard.limit": 9, "global.soft.limit": 10, "global.buffering.limit": 11},
            "limit": {"global.max.streams.limit.encoded": 12},
            "all": [{"id": 13, "debug": {},
                     "settings": {"identity": "a", "format": 0, "width": 640, "height": 360,
                                  "framerate": 14.5},
                     "info": {"channel": 0, "statistics.framerate": 15, "statistics.bitrate": 16,
                              "statistics.duration": 17000000, "statistics.frame_count": 18,
                              "statistics.failed_frames": 19, "statistics.reclaim_count": 20,
                              "peers": 21}}]},
        "channel": {"info": {"input.count": 1},
                    "all": [{"id": 0, "properties": {"key": "input"}, "info": {"type.id": 22},
                             "resolutions": {"available": []}}]},
        "input": {"all": [
            {"id": 1, "info": {}, "resolution_unrotated": {"capture": [23, 24]}},
            {"id": 22, "info": {}, "resolution_unrotated": {"capture": [0, 0]}}]},
        "output": {"all": [{"id": 0, "settings": {"enabled": true}, "info": {"running": false}}]},
        "system": {"caps": {"output": true}}})",
                                  {"metrics"}),
              ended(0, std::string(up) +
                           R"(# HELP oru_unanswered_queries Queries that the service did not answer.
# TYPE oru_unanswered_queries gauge
oru_unanswered_queries{kind="streams"} 0
oru_unanswered_queries{kind="stream info"} 0
oru_unanswered_queries{kind="stream settings"} 0
oru_unanswered_queries{kind="stream debug"} 0
oru_unanswered_queries{kind="service counters"} 0
oru_unanswered_queries{kind="service quota"} 0
oru_unanswered_queries{kind="service limit"} 0
oru_unanswered_queries{kind="channels"} 0
oru_unanswered_queries{kind="channel info"} 0
oru_unanswered_queries{kind="channel crop"} 0
oru_unanswered_queries{kind="channel largest crop"} 0
oru_unanswered_queries{kind="channel resolutions"} 0
oru_unanswered_queries{kind="input count"} 0
oru_unanswered_queries{kind="input"} 0
oru_unanswered_queries{kind="input info"} 0
oru_unanswered_queries{kind="input crop"} 0
oru_unanswered_queries{kind="input capture"} 0
oru_unanswered_queries{kind="system"} 0
oru_unanswered_queries{kind="system caps"} 0
oru_unanswered_queries{kind="output"} 0
oru_unanswered_queries{kind="output settings"} 0
oru_unanswered_queries{kind="output info"} 0
oru_unanswered_queries{kind="mode"} 0
oru_unanswered_queries{kind="mode info"} 0
# HELP oru_streams Running streams.
# TYPE oru_streams gauge
oru_streams 1
# HELP oru_streams_without_series Running streams without series: the id of each is 0 or not unique.
# TYPE oru_streams_without_series gauge
oru_streams_without_series 0
# HELP oru_stream_info The client, format, resolution and input of a stream.
# TYPE oru_stream_info gauge
oru_stream_info{stream="13",identity="a",format="h264",resolution="640x360",input="22"} 1
# HELP oru_stream_requested_frames_per_second Requested frame rate.
# TYPE oru_stream_requested_frames_per_second gauge
oru_stream_requested_frames_per_second{stream="13"} 14.5
# HELP oru_stream_frames_per_second Frame rate that is reached.
# TYPE oru_stream_frames_per_second gauge
oru_stream_frames_per_second{stream="13"} 15
# HELP oru_stream_bytes_per_second Bit rate, in bytes.
# TYPE oru_stream_bytes_per_second gauge
oru_stream_bytes_per_second{stream="13"} 2
# HELP oru_stream_run_seconds How long the stream has been running.
# TYPE oru_stream_run_seconds gauge
oru_stream_run_seconds{stream="13"} 17
# HELP oru_stream_frames_total Frames of the stream.
# TYPE oru_stream_frames_total counter
oru_stream_frames_total{stream="13"} 18
# HELP oru_stream_failed_frames_total Frames that failed.
# TYPE oru_stream_failed_frames_total counter
oru_stream_failed_frames_total{stream="13"} 19
# HELP oru_stream_reclaims_total Reclaims, as the service counts them.
# TYPE oru_stream_reclaims_total counter
oru_stream_reclaims_total{stream="13"} 20
# HELP oru_stream_clients Clients of the stream.
# TYPE oru_stream_clients gauge
oru_stream_clients{stream="13"} 21
# HELP oru_buffer_used_bytes Buffers in use.
# TYPE oru_buffer_used_bytes gauge
oru_buffer_used_bytes 1
# HELP oru_buffer_used_peak_bytes Most buffers that were in use.
# TYPE oru_buffer_used_peak_bytes gauge
oru_buffer_used_peak_bytes 2
# HELP oru_buffer_hard_quota_bytes Hard limit of the buffers in use.
# TYPE oru_buffer_hard_quota_bytes gauge
oru_buffer_hard_quota_bytes 9
# HELP oru_buffer_soft_quota_bytes Soft limit of the buffers in use.
# TYPE oru_buffer_soft_quota_bytes gauge
oru_buffer_soft_quota_bytes 10
# HELP oru_buffering_quota Limit of buffering, as the service gives it.
# TYPE oru_buffering_quota gauge
oru_buffering_quota 11
# HELP oru_encoded_streams Encoded streams in use.
# TYPE oru_encoded_streams gauge
oru_encoded_streams 3
# HELP oru_encoded_streams_peak Most encoded streams that were in use.
# TYPE oru_encoded_streams_peak gauge
oru_encoded_streams_peak 4
# HELP oru_encoded_streams_limit Limit of encoded streams.
# TYPE oru_encoded_streams_limit gauge
oru_encoded_streams_limit 12
# HELP oru_jpeg_streams JPEG streams in use.
# TYPE oru_jpeg_streams gauge
oru_jpeg_streams 5
# HELP oru_raw_streams Raw streams in use.
# TYPE oru_raw_streams gauge
oru_raw_streams 6
# HELP oru_raw_streams_peak Most raw streams that were in use.
# TYPE oru_raw_streams_peak gauge
oru_raw_streams_peak 7
# HELP oru_identities Identities of clients that started streams.
# TYPE oru_identities gauge
oru_identities 1
# HELP oru_streams_started_total Streams that were started, by all clients.
# TYPE oru_streams_started_total counter
oru_streams_started_total 8
# HELP oru_identity_streams_started_total Streams that a client started, for the clients with the most.
# TYPE oru_identity_streams_started_total counter
oru_identity_streams_started_total{identity="a"} 8
# HELP oru_input_up Whether the input has a signal.
# TYPE oru_input_up gauge
oru_input_up{input="1"} 1
oru_input_up{input="22"} 0
# HELP oru_input_capture_width_pixels Width of the pictures that are captured.
# TYPE oru_input_capture_width_pixels gauge
oru_input_capture_width_pixels{input="1"} 23
oru_input_capture_width_pixels{input="22"} 0
# HELP oru_input_capture_height_pixels Height of the pictures that are captured.
# TYPE oru_input_capture_height_pixels gauge
oru_input_capture_height_pixels{input="1"} 24
oru_input_capture_height_pixels{input="22"} 0
# HELP oru_channel_up Whether the service answers for the channel.
# TYPE oru_channel_up gauge
oru_channel_up{channel="0"} 1
# HELP oru_output_enabled Whether the HDMI output is switched on.
# TYPE oru_output_enabled gauge
oru_output_enabled 1
# HELP oru_output_running Whether the HDMI output sends pictures.
# TYPE oru_output_running gauge
oru_output_running 0
)"));
}

TEST(metrics, report_that_no_query_is_answered) {
    EXPECT_EQ(oru_snapshot({"metrics"}, {.environment = {"ORU_SNAPSHOT=/no\nwhere"}}),
              ended(0, down, "oru-snapshot: /no\\nwhere: No such file or directory\n"));
    // A service that only fails counts as none.
    EXPECT_EQ(oru_snapshot_beside(R"({"stream": {"all": {"$error": "first"}}})", {"metrics"}),
              ended(0, down, "oru-snapshot: first\n"));
    // Neither is a figure, but a service that answers one of them was reached.
    for (const char* reached :
         {R"({"mode": {}})", R"({"mode": {"info": {}}})", R"({"output": {"all": [{"id": 0}]}})"}) {
        EXPECT_TRUE(oru_snapshot_beside(reached, {"metrics"}).out.starts_with(up)) << reached;
    }
}

// Returns the kinds of queries that a service of this snapshot does not answer, each with its
// number.
std::string unanswered(const std::string& snapshot) {
    const std::string name = "oru_unanswered_queries{kind=\"";
    std::istringstream lines(oru_snapshot_beside(snapshot, {"metrics"}).out);
    std::string kinds;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name) && !line.ends_with(" 0")) {
            line.erase(line.rfind('"'), 2);
            kinds += line.substr(name.size()) + "\n";
        }
    }
    return kinds;
}

TEST(metrics, count_unanswered_queries_by_kind) {
    EXPECT_EQ(unanswered(R"({
        "system": {},
        "stream": {"all": [{"id": 1}, {"id": 2, "settings": {}}]},
        "channel": {"info": {"input.count": 2},
                    "all": [{"id": 1, "properties": {"key": "input"},
                             "info": {"crop.possible": true}},
                            {"id": 2}]},
        "input": {"all": [{"id": 1}]}})"),
              "stream info 2\n"
              "stream settings 1\n"
              "stream debug 2\n"
              "service counters 1\n"
              "service quota 1\n"
              "service limit 1\n"
              "channel info 1\n"
              "channel crop 1\n"
              "channel largest crop 1\n"
              "channel resolutions 2\n"
              "input 1\n"
              "input info 1\n"
              "input capture 1\n"
              "system caps 1\n");
    // The channels of inputs are a list of their own.
    EXPECT_EQ(unanswered(R"({
        "system": {"caps": {"output": true}},
        "stream": {"debug": {}, "quota": {}, "limit": {}},
        "channel": {"info": {}},
        "input": {"all": [{"id": 1, "info": {"crop.possible": true}}]},
        "output": {"all": [{"id": 0}]}})"),
              "streams 1\n"
              "channels 2\n"
              "input crop 1\n"
              "input capture 1\n"
              "output settings 1\n"
              "output info 1\n");
    // The mode is asked for only if nothing else answers.
    const std::string nothing =
        "streams 1\n"
        "service counters 1\n"
        "service quota 1\n"
        "service limit 1\n"
        "channels 2\n"
        "input count 1\n"
        "system 1\n";
    EXPECT_EQ(unanswered(R"({"mode": {}})"), nothing + "output 1\nmode info 1\n");
    EXPECT_EQ(unanswered(R"({"output": {"all": [{"id": 0}]}})"), nothing + "mode 1\n");
}

TEST(metrics, fail_if_their_output_is_lost) {
    for (const char* snapshot : {"{}", R"({"stream": {"all": []}})"}) {
        const result got = oru_snapshot_beside(snapshot, {"metrics"}, {.stdout_to = "/dev/full"});
        EXPECT_EQ(got.status, 1);
        EXPECT_TRUE(
            got.err.ends_with("oru-snapshot: cannot write to standard output: "
                              "No space left on device\n"))
            << got;
    }
    const temp_directory scratch;
    EXPECT_EQ(oru_snapshot({"metrics", "-o", scratch.path() + "/no/oru.prom"},
                           {.environment = {"ORU_SNAPSHOT=/nowhere"}}),
              ended(1, "",
                    "oru-snapshot: /nowhere: No such file or directory\n"
                    "oru-snapshot: " +
                        scratch.path() + "/no/oru.prom: No such file or directory\n"));
}

TEST(metrics, replace_a_file) {
    const temp_directory scratch;
    const std::string path = scratch.write("oru.prom", "old");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    EXPECT_EQ(oru_snapshot({"metrics", "-o", path}, {.environment = {"ORU_SNAPSHOT=/nowhere"}}),
              ended(0, "", "oru-snapshot: /nowhere: No such file or directory\n"));
    EXPECT_EQ(content(path), down);
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0644U);
    // The folder contains no other file.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch.path()), {}), 1);
}

TEST(metrics, replace_regular_files_only) {
    const temp_directory scratch;
    for (const std::string& path : {std::string("/dev/null"), scratch.path()}) {
        EXPECT_EQ(oru_snapshot({"metrics", "-o", path}, {.environment = {"ORU_SNAPSHOT=/nowhere"}}),
                  ended(1, "",
                        "oru-snapshot: /nowhere: No such file or directory\n"
                        "oru-snapshot: " +
                            path + ": is not a regular file\n"));
    }
}

TEST(metrics, write_to_standard_output_as_a_hyphen) {
    EXPECT_EQ(oru_snapshot({"metrics", "-o", "-"}, {.environment = {"ORU_SNAPSHOT=/nowhere"}}).out,
              down);
}

}  // namespace
