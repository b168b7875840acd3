// The calls of the section on streams.
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "serverreport/stream_lists.h"
#include "support/calls.h"

namespace {

const std::string frame = R"(g_print("----- Snapshot of all running streams -----\n\n")
g_print("\n")
)";

calls calls_of(const std::string& settings, const std::string& info = "{}",
               const std::string& debug = "{}") {
    return report_calls(snapshot_of({{.info = info, .settings = settings, .debug = debug}}),
                        {"--list-streams"});
}

TEST(calls_of_list_streams, of_two_streams) {
    const calls made = report_calls(
        snapshot_of({{.id = "1", .settings = R"({"format": 0})"}, {.id = "26"}}), {"-l"});
    EXPECT_EQ(made.queries, R"(g_option_context_new
oru_stream_get_all(&error) -> stream 1, stream 26
oru_stream_get_id(stream 1) -> 1
oru_stream_get_info(stream 1, NULL) -> stream 1 info
oru_stream_get_debug(stream 1, NULL) -> stream 1 debug
oru_stream_get_settings(stream 1, NULL) -> stream 1 settings
oru_stream_get_id(stream 26) -> 26
oru_stream_get_info(stream 26, NULL) -> stream 26 info
oru_stream_get_debug(stream 26, NULL) -> stream 26 debug
oru_stream_get_settings(stream 26, NULL) -> stream 26 settings
)" + frame + R"(g_list_free_full(list of oru_stream_get_all)
release stream 1
release stream 26
g_option_context_free
never released: stream 1 info
never released: stream 1 debug
never released: stream 1 settings
never released: stream 26 info
never released: stream 26 debug
never released: stream 26 settings
)");
    // A look-up of the format for each of two streams in two arrays.
    std::string four;
    for (int i = 0; i < 4; ++i) {
        four += "g_type_class_ref(OruFormat)\ng_type_class_unref(OruFormat)\n";
    }
    EXPECT_EQ(made.classes, four);
}

// Returns the queries of a run on one stream that is skipped. `queries` are those of the stream.
std::string skipped(const std::string& id, const std::string& queries) {
    return "g_option_context_new\n"
           "oru_stream_get_all(&error) -> stream " +
           id + "\noru_stream_get_id(stream " + id + ") -> " + id + "\n" + queries + frame +
           "g_list_free_full(list of oru_stream_get_all)\nrelease stream " + id +
           "\ng_option_context_free\n";
}

std::string queries_of(const std::string& stream) {
    const calls made = report_calls(R"({"stream": {"all": [)" + stream + "]}}", {"-l"});
    EXPECT_EQ(made.classes, "");
    return made.queries;
}

TEST(calls_of_list_streams, of_streams_that_are_skipped) {
    EXPECT_EQ(queries_of(R"({"id": 0, "info": {}, "settings": {}, "debug": {}})"),
              skipped("0", ""));
    EXPECT_EQ(queries_of(R"({"id": 4, "settings": {}, "debug": {}})"),
              skipped("4", "oru_stream_get_info(stream 4, NULL) -> failed\n"));
    EXPECT_EQ(queries_of(R"({"id": 4, "info": {}, "settings": {}})"),
              skipped("4",
                      "oru_stream_get_info(stream 4, NULL) -> stream 4 info\n"
                      "oru_stream_get_debug(stream 4, NULL) -> failed\n"
                      "release stream 4 info\n"));
    EXPECT_EQ(queries_of(R"({"id": 4, "info": {}, "debug": {}})"),
              skipped("4",
                      "oru_stream_get_info(stream 4, NULL) -> stream 4 info\n"
                      "oru_stream_get_debug(stream 4, NULL) -> stream 4 debug\n"
                      "oru_stream_get_settings(stream 4, NULL) -> failed\n"
                      "release stream 4 debug\n"
                      "release stream 4 info\n"));
    for (const char* settings : {R"({"format": 6})", R"({"subformat": "leanflow"})"}) {
        EXPECT_EQ(queries_of(R"({"id": 4, "info": {}, "debug": {}, "settings": )" +
                             std::string(settings) + "}"),
                  skipped("4",
                          "oru_stream_get_info(stream 4, NULL) -> stream 4 info\n"
                          "oru_stream_get_debug(stream 4, NULL) -> stream 4 debug\n"
                          "oru_stream_get_settings(stream 4, NULL) -> stream 4 settings\n"
                          "release stream 4 settings\n"
                          "release stream 4 debug\n"
                          "release stream 4 info\n"));
    }
}

TEST(calls_of_list_streams, without_streams) {
    EXPECT_EQ(report_calls(R"({"stream": {"all": []}})", {"-l"}).queries,
              "g_option_context_new\n"
              "oru_stream_get_all(&error) -> an empty list\n" +
                  frame + "g_option_context_free\n");
}

TEST(calls_of_list_streams, without_a_list) {
    const calls made = report_calls(R"({"stream": {"all": {"$error": "x"}}})", {"-l"});
    EXPECT_EQ(made.ended.status, 1);
    EXPECT_EQ(made.queries,
              "g_option_context_new\n"
              "oru_stream_get_all(&error) -> failed\n"
              "never released: error of oru_stream_get_all\n");
}

// --- Reads of the maps --------------------------------------------------------------------------

const std::string reads_of_every_stream = R"(
oru_map_get_uint32(stream 1 settings, "format", 4294967295)
oru_map_get_string(stream 1 settings, "subformat", NULL, NULL)
oru_map_native_ref(stream 1 settings)
find(stream 1 settings, "format")
oru_map_get_int64(stream 1 info, "statistics.duration", 0)
oru_map_get_string(stream 1 settings, "identity", NULL, "N/A")
oru_map_get_uint32(stream 1 info, "channel", 0)
oru_map_get_uint32(stream 1 info, "framerate", 0)
oru_map_get_uint32(stream 1 info, "bitrate", 0)
oru_map_get_uint32(stream 1 info, "statistics.frame_count", 0)
oru_map_get_uint32(stream 1 info, "statistics.failed_frames", 0)
oru_map_get_uint32(stream 1 info, "peers", 0)
oru_map_get_string(stream 1 info, "identity[0]", NULL, NULL)
oru_map_get_string(stream 1 info, "identity[1]", NULL, NULL)
oru_map_get_string(stream 1 info, "identity[2]", NULL, NULL)
oru_map_get_string(stream 1 info, "identity[3]", NULL, NULL)
oru_map_get_string(stream 1 info, "identity[4]", NULL, NULL)
oru_map_get_string(stream 1 info, "identity[5]", NULL, NULL)
oru_map_get_string(stream 1 info, "identity[6]", NULL, NULL)
oru_map_get_string(stream 1 info, "identity[7]", NULL, NULL)
oru_map_get_uint32(stream 1 settings, "channel", 0)
oru_map_get_double(stream 1 settings, "framerate", 0)
oru_map_get_uint32(stream 1 info, "rotation", 0)
oru_map_get_uint32(stream 1 info, "statistics.bitrate", 0)
oru_map_get_uint32(stream 1 info, "statistics.framerate", 0)
oru_map_get_uint32(stream 1 info, "statistics.reclaim_count", 0)
oru_map_contains(stream 1 debug, "tlm[0].client_us")
oru_map_get_int64(stream 1 debug, "tlm[0].duration", -1)
oru_map_get_int64(stream 1 debug, "tlm[1].duration", -1)
oru_map_get_int64(stream 1 debug, "tlm[2].duration", -1)
oru_map_get_int64(stream 1 debug, "tlm[3].duration", -1)
oru_map_get_int64(stream 1 debug, "tlm[4].duration", -1)
oru_map_get_int64(stream 1 debug, "tlm[5].duration", -1)
oru_map_get_int64(stream 1 debug, "tlm[6].duration", -1)
oru_map_get_int64(stream 1 debug, "tlm[7].duration", -1)
oru_map_get_string(stream 1 debug, "tlm[0].reclaim_histogram", NULL, NULL)
oru_map_get_string(stream 1 debug, "tlm[1].reclaim_histogram", NULL, NULL)
oru_map_get_string(stream 1 debug, "tlm[2].reclaim_histogram", NULL, NULL)
oru_map_get_string(stream 1 debug, "tlm[3].reclaim_histogram", NULL, NULL)
oru_map_get_string(stream 1 debug, "tlm[4].reclaim_histogram", NULL, NULL)
oru_map_get_string(stream 1 debug, "tlm[5].reclaim_histogram", NULL, NULL)
oru_map_get_string(stream 1 debug, "tlm[6].reclaim_histogram", NULL, NULL)
oru_map_get_string(stream 1 debug, "tlm[7].reclaim_histogram", NULL, NULL)
oru_map_contains(stream 1 info, "input")
)";
// Of a stream whose size is in the settings.
const std::string reads_of_the_size = R"(
oru_map_get_uint32(stream 1 settings, "width", 0)
oru_map_get_uint32(stream 1 settings, "height", 0)
)";
// Of a stream without an input.
const std::string reads_of_other_sources = R"(
oru_map_contains(stream 1 info, "view")
oru_map_contains(stream 1 info, "warp")
)";
// Of a stream that is not raw.
const std::string reads_of_the_picture = R"(
oru_map_get_uint32(stream 1 settings, "compression", 0)
oru_map_get_boolean(stream 1 settings, "horizontal_flip", FALSE)
oru_map_get_uint32(stream 1 info, "monochrome", 0)
)";
// Of a stream that is neither raw nor JPEG.
const std::string reads_of_the_sign = R"(
oru_map_get_boolean(stream 1 settings, "sign", FALSE)
)";
const std::string reads_of_the_encoder = R"(
find(stream 1 settings, "rc.mode")
find(stream 1 settings, "rc.prio")
oru_map_get_uint32(stream 1 settings, "gop_length", 0)
oru_map_get_uint32(stream 1 settings, "bitrate", 0)
oru_map_get_uint32(stream 1 settings, "sqz.strength", 0)
)";

// Expects these reads. A run may also make the `optional` ones, which do not affect the report.
void expect_reads(const calls& made, const std::vector<std::string>& expected,
                  const std::string& optional = "") {
    std::set<std::string> all;
    for (const std::string& group : expected) {
        all.merge(lines_of(group));
    }
    all.erase("");
    std::set<std::string> seen = made.reads;
    for (const std::string& line : lines_of(optional)) {
        if (!all.contains(line)) {
            seen.erase(line);
        }
    }
    EXPECT_EQ(seen, all);
}

TEST(calls_of_list_streams, reads_of_a_raw_stream) {
    // The size in the settings and the strength of the encoder do not affect the report.
    for (const char* settings : {R"({"format": 3})", R"({"format": {"uint16": 3}})"}) {
        expect_reads(calls_of(settings), {reads_of_every_stream, reads_of_other_sources, R"(
oru_map_get_uint32(stream 1 info, "width", 0)
oru_map_get_uint32(stream 1 info, "height", 0)
oru_map_get_string(stream 1 settings, "subformat", NULL, "NV12")
)"},
                     reads_of_the_size + R"(
oru_map_get_uint32(stream 1 settings, "sqz.strength", 0)
)");
    }
}

TEST(calls_of_list_streams, reads_of_pictures) {
    expect_reads(
        calls_of(R"({"format": 2})"),
        {reads_of_every_stream, reads_of_the_size, reads_of_other_sources, reads_of_the_picture},
        R"(oru_map_get_uint32(stream 1 settings, "sqz.strength", 0)
)");
}

TEST(calls_of_list_streams, reads_of_a_stream_whose_encoder_is_not_shown) {
    for (const char* settings : {R"({"format": 4})", R"({"format": 11})", "{}"}) {
        expect_reads(calls_of(settings),
                     {reads_of_every_stream, reads_of_the_size, reads_of_other_sources,
                      reads_of_the_picture, reads_of_the_sign},
                     reads_of_the_encoder + R"(
find(stream 1 settings, "av1.profile")
)");
    }
}

TEST(calls_of_list_streams, reads_of_an_encoded_stream) {
    for (const auto& [format, profile] : {std::pair<std::string, std::string>{"0", "h264.profile"},
                                          {"1", "h265.profile"},
                                          {"10", "av1.profile"}}) {
        expect_reads(calls_of(R"({"format": )" + format + "}"),
                     {reads_of_every_stream, reads_of_the_size, reads_of_other_sources,
                      reads_of_the_picture, reads_of_the_sign, reads_of_the_encoder,
                      "find(stream 1 settings, \"" + profile + "\")\n"});
    }
}

TEST(calls_of_list_streams, reads_of_an_encoder_that_reduces_the_bit_rate) {
    expect_reads(calls_of(R"({"format": 1, "sqz.strength": 3})", R"({"input": 1})"),
                 {reads_of_every_stream, reads_of_the_size, reads_of_the_picture, reads_of_the_sign,
                  reads_of_the_encoder, R"(
find(stream 1 settings, "h265.profile")
oru_map_get_uint32(stream 1 settings, "sqz.gop_mode", 0)
oru_map_get_uint32(stream 1 settings, "sqz.max_gop_length", 0)
oru_map_get_uint32(stream 1 settings, "sqz.skip_mode", 0)
oru_map_get_uint32(stream 1 settings, "sqz.fps_mode", 0)
oru_map_get_uint32(stream 1 settings, "sqz.min_fps_num", 0)
oru_map_get_uint32(stream 1 info, "input", 1)
)"});
}

TEST(calls_of_list_streams, reads_of_a_source) {
    const std::string view = R"(
oru_map_contains(stream 1 info, "view")
oru_map_get_uint32(stream 1 info, "view", 1)
)";
    const std::string warp = reads_of_other_sources + R"(
oru_map_get_uint32(stream 1 info, "warp", 1)
)";
    for (const auto& [info, reads] :
         {std::pair<std::string, std::string>{R"({"view": 2})", view}, {R"({"warp": 3})", warp}}) {
        expect_reads(calls_of(R"({"format": 2})", info),
                     {reads_of_every_stream, reads_of_the_size, reads_of_the_picture, reads},
                     R"(oru_map_get_uint32(stream 1 settings, "sqz.strength", 0)
)");
    }
}

TEST(calls_of_list_streams, reads_of_client_data) {
    expect_reads(
        calls_of(R"({"format": 2})", "{}",
                 R"({"tlm[0].client_us": [1, 2], "tlm[2].reclaim_histogram": "1,2"})"),
        {reads_of_every_stream, reads_of_the_size, reads_of_other_sources, reads_of_the_picture, R"(
oru_map_get_pair32u(stream 1 debug, "tlm[0].client_us", 0)
oru_map_get_uint32(stream 1 debug, "tlm[2].reclaim_count", 0)
)"},
        R"(oru_map_get_uint32(stream 1 settings, "sqz.strength", 0)
)");
}

}  // namespace
