#include "snapshot_tool/exposition.h"

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace snapshot_tool;

// A device that was reached, without any figure.
device reached() {
    device device;
    device.streams = std::unexpected{"no streams"};
    device.service = std::unexpected{"no counters"};
    device.quota = std::unexpected{"no quota"};
    device.stream_limit = std::unexpected{"no limit"};
    device.failures = 4;
    return device;
}

constexpr auto head =
    "# HELP oru_up Whether the video service answers.\n"
    "# TYPE oru_up gauge\n"
    "oru_up 1\n"
    "# HELP oru_unanswered_questions Questions that the service did not answer.\n"
    "# TYPE oru_unanswered_questions gauge\n"
    "oru_unanswered_questions 4\n";

std::string counts(int streams, int without_series) {
    return std::string(head) +
           "# HELP oru_streams Running streams.\n"
           "# TYPE oru_streams gauge\n"
           "oru_streams " +
           std::to_string(streams) +
           "\n"
           "# HELP oru_streams_without_series Running streams that nothing else is told of: "
           "their id is 0 or another's.\n"
           "# TYPE oru_streams_without_series gauge\n"
           "oru_streams_without_series " +
           std::to_string(without_series) + "\n";
}

// A stream without figures.
stream empty(std::uint32_t id) {
    return {.id = id, .info = stream_info{}, .settings = stream_settings{}, .in_use = usage{}};
}

stream with_clients(std::uint32_t id, std::uint32_t clients) {
    stream stream = empty(id);
    stream.info->clients = clients;
    return stream;
}

TEST(exposition, reports_an_unreachable_service) {
    device device;
    device.reached = std::unexpected{"/run/oru/snapshot.json: No such file or directory"};
    EXPECT_EQ(exposition(device),
              "# HELP oru_up Whether the video service answers.\n"
              "# TYPE oru_up gauge\n"
              "oru_up 0\n");
}

TEST(exposition, omits_figures_that_are_not_answered) {
    EXPECT_EQ(exposition(reached()), head);
}

TEST(exposition, counts_no_streams) {
    device device = reached();
    device.streams = std::vector<stream>{};
    EXPECT_EQ(exposition(device), counts(0, 0));
}

TEST(exposition, omits_series_of_streams_with_duplicate_ids) {
    device device = reached();
    device.streams = std::vector{with_clients(3, 1), with_clients(0, 2), with_clients(3, 3),
                                 with_clients(0, 4), with_clients(4294967295, 5)};
    EXPECT_EQ(exposition(device),
              counts(5, 3) +
                  "# HELP oru_stream_info A stream: who asked for it, and what it is.\n"
                  "# TYPE oru_stream_info gauge\n"
                  "oru_stream_info{stream=\"3\",identity=\"\",format=\"\",resolution=\"\"} 1\n"
                  "oru_stream_info{stream=\"4294967295\",identity=\"\",format=\"\","
                  "resolution=\"\"} 1\n"
                  "# HELP oru_stream_clients Clients of the stream.\n"
                  "# TYPE oru_stream_clients gauge\n"
                  "oru_stream_clients{stream=\"3\"} 1\n"
                  "oru_stream_clients{stream=\"4294967295\"} 5\n");
}

TEST(exposition, quotes_texts) {
    device device = reached();
    device.streams = std::vector{empty(1)};
    device.streams->front().settings->identity = "a\"b\\c\nd<e>\xff\033日本";
    device.streams->front().settings->format = "Y 8\t";
    EXPECT_EQ(exposition(device),
              counts(1, 0) +
                  "# HELP oru_stream_info A stream: who asked for it, and what it is.\n"
                  "# TYPE oru_stream_info gauge\n"
                  R"(oru_stream_info{stream="1",identity="a\"b\\c\\nd<e>\\xff\\x1b日本",)"
                  R"(format="Y 8\\t",resolution=""} 1)"
                  "\n");
}

TEST(exposition, adds_identities_with_the_same_printable_text) {
    device device = reached();
    device.service = service_counters{};
    device.service->identities = {{.name = "", .starts = 1},
                                  {.name = "a", .starts = std::nullopt},
                                  {.name = "o\\xff", .starts = 4294967295},
                                  {.name = "o\xff", .starts = 4294967295}};
    EXPECT_EQ(exposition(device),
              std::string(head) +
                  "# HELP oru_identity_streams_started_total Streams that a client started.\n"
                  "# TYPE oru_identity_streams_started_total counter\n"
                  "oru_identity_streams_started_total{identity=\"\"} 1\n"
                  "oru_identity_streams_started_total{identity=\"o\\\\xff\"} 8589934590\n");
}

TEST(exposition, writes_every_double) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::vector<std::pair<double, std::string>> rates{
        {0, "0"},
        {-0.0, "-0"},
        {29.97, "29.97"},
        {0.1 + 0.2, "0.30000000000000004"},
        {1e5, "100000"},
        {1e22, "10000000000000000000000"},
        {-1.5, "-1.5"},
        {5e-324, "0." + std::string(323, '0') + "5"},
        {-2.2250738585072014e-308, "-0." + std::string(307, '0') + "22250738585072014"},
        {std::numeric_limits<double>::quiet_NaN(), "NaN"},
        {infinity, "+Inf"},
        {-infinity, "-Inf"}};
    for (const auto& [rate, written] : rates) {
        device device = reached();
        device.streams = std::vector{empty(7)};
        device.streams->front().settings->frame_rate = rate;
        const std::string text = exposition(device);
        const std::string last = "oru_stream_requested_frames_per_second{stream=\"7\"} ";
        EXPECT_TRUE(text.ends_with("\n" + last + written + "\n")) << text;
    }
}

TEST(exposition, uses_base_units) {
    device device = reached();
    device.streams = std::vector{empty(7), empty(8), empty(9)};
    device.streams->at(0).info->bit_rate = 1790321;
    device.streams->at(0).info->run_time = 59'500'000;
    device.streams->at(1).info->bit_rate = 8;
    device.streams->at(1).info->run_time = -1;
    device.streams->at(2).info->run_time = std::numeric_limits<std::int64_t>::max();
    const std::string text = exposition(device);
    EXPECT_TRUE(
        text.ends_with("\n"
                       "oru_stream_bytes_per_second{stream=\"7\"} 223790.125\n"
                       "oru_stream_bytes_per_second{stream=\"8\"} 1\n"
                       "# HELP oru_stream_run_seconds How long the stream has been "
                       "running.\n"
                       "# TYPE oru_stream_run_seconds gauge\n"
                       "oru_stream_run_seconds{stream=\"7\"} 59.5\n"
                       "oru_stream_run_seconds{stream=\"8\"} -0.000001\n"
                       "oru_stream_run_seconds{stream=\"9\"} 9223372036854.775\n"))
        << text;
}

}  // namespace
