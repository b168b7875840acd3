#include "snapshot_tool/exposition.h"

#include <cstddef>
#include <cstdint>
#include <format>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace snapshot_tool;

// Returns a copy that outlives every device.
std::string_view kept(const std::string& text) {
    static snapshot::arena texts;
    return texts.keep(text);
}

// A device that was reached, without any figure.
device reached() {
    device device;
    device.streams = std::unexpected{"no streams"};
    device.service = std::unexpected{"no counters"};
    device.quota = std::unexpected{"no quota"};
    device.stream_limit = std::unexpected{"no limit"};
    device.channels = std::unexpected{"no channels"};
    device.input_channels = std::unexpected{"no channels"};
    device.output = std::unexpected{"no system"};
    device.unanswered = {{.kind = "stream info", .count = 4}, {.kind = "input", .count = 0}};
    return device;
}

constexpr auto head =
    "# HELP oru_up Whether the video service answers.\n"
    "# TYPE oru_up gauge\n"
    "oru_up 1\n"
    "# HELP oru_build_info The program that wrote these figures.\n"
    "# TYPE oru_build_info gauge\n"
    "oru_build_info{version=\"1.1.0\"} 1\n"
    "# HELP oru_unanswered_queries Queries that the service did not answer.\n"
    "# TYPE oru_unanswered_queries gauge\n"
    "oru_unanswered_queries{kind=\"stream info\"} 4\n"
    "oru_unanswered_queries{kind=\"input\"} 0\n";

std::string counts(int streams, int without_series) {
    return std::string(head) +
           "# HELP oru_streams Running streams.\n"
           "# TYPE oru_streams gauge\n"
           "oru_streams " +
           std::to_string(streams) +
           "\n"
           "# HELP oru_streams_without_series Running streams without series: the id of each "
           "is 0 or not unique.\n"
           "# TYPE oru_streams_without_series gauge\n"
           "oru_streams_without_series " +
           std::to_string(without_series) + "\n";
}

// A stream without figures.
stream empty(std::uint32_t id) {
    static const snapshot::stream_record record{.info = snapshot::map_entries{},
                                                .settings = snapshot::map_entries{},
                                                .debug = snapshot::map_entries{}};
    return {.id = id, .info = stream_info{}, .settings = stream_settings{}, .record = &record};
}

stream with_clients(std::uint32_t id, std::uint32_t clients) {
    stream stream = empty(id);
    stream.info->clients = clients;
    return stream;
}

channel channel_with(std::uint32_t id, outcome<bool> can_crop) {
    return {
        .id = id, .can_crop = std::move(can_crop), .crop = {}, .largest_crop = {}, .available = {}};
}

input_state input_with(outcome<resolution> capture) {
    return {.capture = std::move(capture), .can_crop = false, .crop = {}, .largest_crop = {}};
}

TEST(exposition, reports_an_unreachable_service) {
    device device;
    device.reached = std::unexpected{"/run/oru/snapshot.json: No such file or directory"};
    EXPECT_EQ(exposition(device),
              "# HELP oru_up Whether the video service answers.\n"
              "# TYPE oru_up gauge\n"
              "oru_up 0\n"
              "# HELP oru_build_info The program that wrote these figures.\n"
              "# TYPE oru_build_info gauge\n"
              "oru_build_info{version=\"1.1.0\"} 1\n");
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
                  "# HELP oru_stream_info The client, format, resolution and input of a stream.\n"
                  "# TYPE oru_stream_info gauge\n"
                  "oru_stream_info{stream=\"3\",identity=\"\",format=\"\",resolution=\"\","
                  "input=\"\"} 1\n"
                  "oru_stream_info{stream=\"4294967295\",identity=\"\",format=\"\","
                  "resolution=\"\",input=\"\"} 1\n"
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
                  "# HELP oru_stream_info The client, format, resolution and input of a stream.\n"
                  "# TYPE oru_stream_info gauge\n"
                  R"(oru_stream_info{stream="1",identity="a\"b\\c\\nd<e>\\xff\\x1b日本",)"
                  R"(format="Y 8\\t",resolution="",input=""} 1)"
                  "\n");
}

// What is printed of these counters of identities.
std::string identities_text(std::vector<identity> identities) {
    device device = reached();
    device.service = service_counters{};
    device.service->identities = std::move(identities);
    const std::string text = exposition(device);
    EXPECT_TRUE(text.starts_with(head)) << text;
    return text.substr(std::string_view(head).size());
}

std::string identity_counts(std::size_t identities, std::uint64_t starts) {
    return std::format(
        "# HELP oru_identities Identities of clients that started streams.\n"
        "# TYPE oru_identities gauge\n"
        "oru_identities {}\n"
        "# HELP oru_streams_started_total Streams that were started, by all clients.\n"
        "# TYPE oru_streams_started_total counter\n"
        "oru_streams_started_total {}\n",
        identities, starts);
}

constexpr auto identities_head =
    "# HELP oru_identity_streams_started_total Streams that a client started, for the clients with "
    "the most.\n"
    "# TYPE oru_identity_streams_started_total counter\n";

TEST(exposition, adds_identities_with_the_same_printable_text) {
    EXPECT_EQ(identities_text({{.name = "", .starts = 1},
                               {.name = "a", .starts = std::nullopt},
                               {.name = "o\\xff", .starts = 4294967295},
                               {.name = "o\xff", .starts = 4294967295}}),
              identity_counts(4, 8589934591) + identities_head +
                  "oru_identity_streams_started_total{identity=\"\"} 1\n"
                  "oru_identity_streams_started_total{identity=\"o\\\\xff\"} 8589934590\n");
    EXPECT_EQ(identities_text({}), identity_counts(0, 0));
}

TEST(exposition, cuts_labels_between_characters) {
    const std::string a127(127, 'a');
    EXPECT_EQ(identities_text({{.name = a127 + "b", .starts = 1},
                               {.name = a127 + "b" + a127, .starts = 2},
                               {.name = a127 + "\"", .starts = 4},
                               {.name = a127 + "ü", .starts = 8},
                               {.name = a127.substr(2) + "日本", .starts = 16},
                               {.name = a127 + "😀", .starts = 32}}),
              identity_counts(6, 63) + identities_head +
                  "oru_identity_streams_started_total{identity=\"" + a127 + "\"} 40\n" +
                  "oru_identity_streams_started_total{identity=\"" + a127 + "\\\"\"} 4\n" +
                  "oru_identity_streams_started_total{identity=\"" + a127 + "b\"} 3\n" +
                  "oru_identity_streams_started_total{identity=\"" + a127.substr(2) + "日\"} 16\n");
}

TEST(exposition, has_series_of_the_100_identities_with_the_largest_counts) {
    // Two of four with a count of 1 are left out: the last by their names.
    std::vector<identity> identities;
    std::string series;
    for (std::uint32_t number = 0; number < 102; ++number) {
        const std::string name = std::format("{:03}", number);
        const std::uint32_t starts = number >= 10 && number < 14 ? 1 : number + 2;
        identities.push_back({.name = kept(name), .starts = starts});
        if (number != 12 && number != 13) {
            series += std::format("oru_identity_streams_started_total{{identity=\"{}\"}} {}\n",
                                  name, starts);
        }
    }
    // The sum of 2 to 103, less 12 + 13 + 14 + 15, and 4.
    EXPECT_EQ(identities_text(identities), identity_counts(102, 5305) + identities_head + series);
}

// A device as large as the sizes below are stated for.
device encoder(const std::string& identity) {
    constexpr std::uint32_t large = 4294967295;
    static const snapshot::entry size[] = {{"height", 2160U}, {"width", 3840U}};
    static const snapshot::stream_record record{
        .info = snapshot::map_entries{}, .settings = size, .debug = snapshot::map_entries{}};
    device device = reached();
    device.streams = std::vector<stream>{};
    device.service = service_counters{.in_use = {large, 20, 20, 20},
                                      .capacity_peak = large,
                                      .encoded_streams_peak = 20,
                                      .raw_streams_peak = 20,
                                      .identities = {}};
    device.quota = stream_quota{.hard = large, .soft = large, .buffering = large};
    device.stream_limit = 20;
    device.channels = std::vector<channel>{};
    device.input_channels = std::vector<input_channel>{};
    device.output = hdmi_output{.settings = output_settings{}, .info = output_info{}};
    device.recorded = 2000000000;
    device.unanswered.assign(24, {.kind = "channel resolutions", .count = 100});
    for (std::uint32_t number = 1; number <= 4; ++number) {
        device.channels->push_back(channel_with(number, true));
        device.input_channels->push_back({.id = number, .input = number});
        device.inputs.push_back({.id = number, .state = input_with(resolution{3840, 2160})});
    }
    for (std::uint32_t number = 1; number <= 16; ++number) {
        device.service->identities.push_back(
            {.name = kept(identity + std::format("{:x}", number % 16)), .starts = 100000});
        stream stream = empty(10000 + number);
        stream.settings->identity = device.service->identities.back().name;
        stream.settings->format = "h264";
        stream.settings->frame_rate = 29.97;
        stream.info = stream_info{.channel = 4,
                                  .clients = 8,
                                  .bit_rate = 29999999,
                                  .frame_rate = 29,
                                  .frames = 99999999,
                                  .failed_frames = 99999,
                                  .reclaims = 9999999,
                                  .run_time = 9999999999999};
        stream.record = &record;
        device.streams->push_back(stream);
    }
    return device;
}

TEST(exposition, fits_16_streams_into_16_KiB) {
    const std::string text = exposition(encoder(std::string(31, 'x')));
    EXPECT_LT(text.size(), 16U << 10U);
    EXPECT_NE(text.find(std::string(31, 'x') + "f\"} 100000\n"), std::string::npos);
}

TEST(exposition, fits_10000_hostile_identities_into_64_KiB) {
    // Each character takes two bytes in a label.
    device device = encoder(std::string(200, '"'));
    for (std::uint32_t number = 0; number < 10000; ++number) {
        device.service->identities.push_back(
            {.name = kept(std::format("{}{}", number, std::string(200, '\\'))),
             .starts = 4294967295 - number});
    }
    const std::string text = exposition(device);
    EXPECT_LT(text.size(), 64U << 10U);
    EXPECT_NE(text.find("\noru_identities 10016\n"), std::string::npos);
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

TEST(exposition, counts_a_channel_with_two_answers_once) {
    device device = reached();
    device.channels = {channel_with(5, true), channel_with(2, std::unexpected{"no info"}),
                       channel_with(2, false)};
    EXPECT_EQ(exposition(device),
              std::string(head) +
                  "# HELP oru_channel_up Whether the service answers for the channel.\n"
                  "# TYPE oru_channel_up gauge\n"
                  "oru_channel_up{channel=\"2\"} 0\n"
                  "oru_channel_up{channel=\"5\"} 1\n");
}

TEST(exposition, has_no_size_of_an_input_that_does_not_answer) {
    device device = reached();
    device.inputs = {{.id = 1, .state = std::unexpected{"no input"}},
                     {.id = 2, .state = input_with(std::unexpected{"no size"})}};
    EXPECT_EQ(exposition(device), std::string(head) +
                                      "# HELP oru_input_up Whether the input has a signal.\n"
                                      "# TYPE oru_input_up gauge\n"
                                      "oru_input_up{input=\"1\"} 0\n"
                                      "oru_input_up{input=\"2\"} 0\n");
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
