#include <string>

#include <gtest/gtest.h>

#include "snapshot_tool/oru_snapshot.h"

namespace {

constexpr auto head = R"(digraph device {
    graph [rankdir=LR, bgcolor=white, pad=0.3, nodesep=0.25, ranksep=0.9]
    node [fontname="Helvetica,Arial,sans-serif", fontsize=12]
    edge [color="#6b7280", arrowsize=0.7]

    node [shape=plaintext, fontcolor="#4b5563"]
    inputs [label="INPUTS"]
    channels [label="CHANNELS"]
    streams [label="STREAMS"]
    clients [label="CLIENTS"]
    inputs -> channels -> streams -> clients [style=invis, weight=1000]

    node [shape=box, style="rounded,filled", margin="0.16,0.08", fontcolor="#1f2937"]
    graph [label="TITLE", labelloc=t, fontname="Helvetica,Arial,sans-serif"]
)";

constexpr auto failed =
    R"(, style="rounded,filled,dashed", penwidth=2.5, color="#b91c1c", fillcolor="#fee2e2")";

// Returns a column of the drawing.
std::string column(const std::string& colours, const std::string& boxes) {
    return "\n    {\n        rank=same\n        node [" + colours + "]\n" + boxes + "    }\n";
}

struct picture {
    std::string inputs = "        inputs [style=invis]\n";
    std::string channels = "        channels [style=invis]\n";
    std::string streams = "        streams [style=invis]\n";
    std::string clients = "        clients [style=invis]\n";
    std::string arrows = "";
};

result drawing(const picture& picture) {
    return ended(0, head + column(R"(color="#15803d", fillcolor="#dcfce7")", picture.inputs) +
                        column(R"(color="#0e7490", fillcolor="#cffafe")", picture.channels) +
                        column(R"(color="#1d4ed8", fillcolor="#dbeafe")", picture.streams) +
                        column(R"(color="#6d28d9", fillcolor="#ede9fe")", picture.clients) + "\n" +
                        picture.arrows + "}\n");
}

// Returns the output with "TITLE" for the title, which says where the answers come from: with our
// client library from the snapshot.
result drawn(std::string_view snapshot) {
    result got = oru_snapshot_beside(snapshot, {"graph"});
    constexpr std::string_view before = "    graph [label=\"";
    constexpr std::string_view after = "\", labelloc=t, fontname=\"Helvetica,Arial,sans-serif\"]\n";
    const std::size_t begin = got.out.find(before) + before.size();
    const std::size_t end = got.out.find(after, begin);
    const std::string title = got.out.substr(begin, end - begin);
    EXPECT_TRUE(title.ends_with("…") || title.ends_with("/snapshot.json") ||
                title == "video service")
        << title;
    got.out.replace(begin, end - begin, "TITLE");
    return got;
}

TEST(graph, draws_an_empty_device) {
    EXPECT_EQ(drawn(R"({"system": {"caps": {}}, "stream": {"debug": {}, "all": []},
                                      "channel": {"info": {"input.count": 0}, "all": []}})"),
              drawing({}));
}

TEST(graph, quotes_hostile_texts) {
    EXPECT_EQ(
        drawn(R"({"system": {"caps": {}}, "stream": {"debug": {}, "all": [
            {"id": 0, "settings": {"format": 3, "subformat": "a\"b\\c\\N\nd<e>&amp;\u0001"},
             "info": {"channel": 1, "identity[0]": "\\", "identity[1]": "<b>x</b>",
                      "identity[2]": "", "identity[7]": "\\"}},
            {"id": 0, "settings": {}, "info": {"channel": 1, "identity[5]": "\"]; evil [\""}}]},
        "channel": {"info": {"input.count": 0}, "all": []}})"),
        drawing(
            {.channels =
                 R"(        channel_1 [label="channel 1\nnot in the list", style="rounded,dashed"]
        channels -> channel_1 [style=invis]
)",
             .streams = R"(        stream_0 [label="stream 0: a\"b\\c\\N\\nd<e>&amp;amp;\\x01"]
        stream_1 [label="stream 0"]
        streams -> stream_0 -> stream_1 [style=invis]
)",
             .clients = R"(        client_0 [label="\\"]
        client_1 [label="<b>x</b>"]
        client_2 [label="\"\""]
        client_3 [label="\"]; evil [\""]
        clients -> client_0 -> client_1 -> client_2 -> client_3 [style=invis]
)",
             .arrows = R"(    channel_1 -> stream_0
    stream_0 -> client_0
    stream_0 -> client_1
    stream_0 -> client_2
    stream_0 -> client_0
    channel_1 -> stream_1
    stream_1 -> client_3
)"}));
}

TEST(graph, connects_inputs_channels_streams_and_clients) {
    EXPECT_EQ(drawn(R"({
        "system": {"caps": {"output": true}},
        "output": {"all": [{"id": 0, "settings": {"enabled": true},
                            "info": {"running": true, "width": 1920, "height": 1080,
                                     "framerate": 59.94}}]},
        "stream": {"debug": {"identity.recorder": 1, "identity.wall": 2}, "all": [
            {"id": 5, "settings": {}, "info": {}},
            {"id": 6, "settings": {"format": 0, "width": 640, "height": 360, "framerate": 25.0},
             "info": {"channel": 9, "statistics.framerate": 24, "statistics.bitrate": 1500000,
                      "statistics.failed_frames": 7, "identity[0]": "wall"}},
            {"id": 7, "settings": {"format": 3, "framerate": 25.0},
             "info": {"channel": 2, "statistics.framerate": 25, "width": 4, "height": 3,
                      "identity[0]": "recorder", "identity[1]": "visitor"}},
            {"id": 8, "settings": {}, "info": {"channel": 2, "statistics.framerate": 3}}]},
        "channel": {"info": {"input.count": 1}, "all": [
            {"id": 9, "properties": {"key": "view"}, "info": {},
             "resolutions": {"available": [[1, 2]]}},
            {"id": 2, "properties": {"key": "input"},
             "info": {"crop.possible": true, "type.id": 4}, "crop": [1, 2, 3, 4],
             "crop_max": [5, 6], "resolutions": {"available": []}}]},
        "input": {"all": [
            {"id": 1, "info": {}, "resolution_unrotated": {"capture": [1920, 1080]}},
            {"id": 4, "info": {}, "resolution_unrotated": {"capture": [640, 480]}}]}})"),
              drawing({.inputs = R"(        input_1 [label="input 1\n1920x1080"]
        input_4 [label="input 4\n640x480"]
        inputs -> input_1 -> input_4 [style=invis]
)",
                       .channels =
                           R"(        channel_2 [label="channel 2\ncrop 3x4 at 1,2\n0 resolutions"]
        channel_9 [label="channel 9\n1 resolution"]
        channels -> channel_2 -> channel_9 [style=invis]
)",
                       .streams = R"(        stream_0 [label="stream 7: NV12\n4x3, 25 fps"]
        stream_1 [label="stream 8\n3 fps"]
        stream_2 [label="stream 6: h264\n640x360, 24 of 25 fps\n1.50 Mbit/s\n7 failed frames", penwidth=2.5, color="#b91c1c"]
        stream_3 [label="stream 5"]
        streams -> stream_0 -> stream_1 -> stream_2 -> stream_3 [style=invis]
)",
                       .clients = R"(        client_0 [label="recorder\n1 stream started"]
        client_1 [label="visitor"]
        client_2 [label="wall\n2 streams started"]
        output [label="HDMI output\n1920x1080, 59.94 fps", color="#a16207", fillcolor="#fef9c3"]
        clients -> client_0 -> client_1 -> client_2 -> output [style=invis]
)",
                       .arrows = R"(    input_4 -> channel_2
    channel_2 -> stream_0
    stream_0 -> client_0
    stream_0 -> client_1
    channel_2 -> stream_1
    channel_9 -> stream_2
    stream_2 -> client_2
)"}));
}

TEST(graph, draws_failures_in_their_own_style) {
    EXPECT_EQ(
        drawn(R"({
        "system": {"caps": {"output": true}},
        "output": {"all": [{"id": 0, "settings": {"enabled": false}, "info": {"$error": "off"}}]},
        "stream": {"debug": {"$error": "closed"}, "all": {"$error": "busy"}},
        "channel": {"info": {"$error": "lost"}, "all": {"$error": "gone"},
                    "filtered": {"$error": "gone \"too\""}}})"),
        drawing(
            {.inputs = std::string(R"(        input_count [label="count of inputs failed: lost")") +
                       failed + R"(]
        input_channels [label="channels of inputs failed: gone \"too\"")" +
                       failed + R"(]
        inputs -> input_count -> input_channels [style=invis]
)",
             .channels = std::string(R"(        channel_list [label="channels failed: gone")") +
                         failed + R"(]
        channels -> channel_list [style=invis]
)",
             .streams =
                 std::string(R"(        stream_list [label="streams failed: busy")") + failed + R"(]
        streams -> stream_list [style=invis]
)",
             .clients = std::string(R"(        counters [label="counters failed: closed")") +
                        failed + R"(]
        output [label="HDMI output\ndisabled\ninfo failed: off")" +
                        failed + R"(]
        clients -> counters -> output [style=invis]
)"}));
    EXPECT_EQ(
        drawn(R"({
        "system": {"$error": "no system"},
        "stream": {"debug": {}, "all": [{"id": 1, "info": {"$error": ""},
                                         "settings": {"$error": "busy"}}]},
        "channel": {"info": {"input.count": 2}, "all": [
            {"id": 3, "properties": {"key": "input"}, "info": {"crop.possible": true},
             "crop": {"$error": "no crop"}, "resolutions": {"available": {"$error": "none"}}}]},
        "input": {"all": [{"id": 1, "info": {"$error": "unplugged"},
                           "resolution_unrotated": {"capture": {"$error": "no signal"}}},
                          {"id": 2, "$error": "a reason that is so long that there is no place"}]}})"),
        drawing(
            {.inputs =
                 std::string(
                     R"(        input_1 [label="input 1\ncapture resolution failed: no signal\ninfo failed: unplugged")") +
                 failed + R"(]
        input_2 [label="input 2\ninput failed: a reason that is so long that there is no pla…")" +
                 failed + R"(]
        inputs -> input_1 -> input_2 [style=invis]
)",
             .channels =
                 std::string(
                     R"(        channel_3 [label="channel 3\ncrop failed: no crop\nresolutions failed: none")") +
                 failed + R"(]
        channels -> channel_3 [style=invis]
)",
             .streams =
                 std::string(
                     R"(        stream_0 [label="stream 1\nsettings failed: busy\ninfo failed")") +
                 failed + R"(]
        streams -> stream_0 [style=invis]
)",
             .clients = std::string(R"(        output [label="HDMI output failed: no system")") +
                        failed + R"(]
        clients -> output [style=invis]
)",
             .arrows = "    input_1 -> channel_3\n"}));
}

TEST(graph, has_a_title) {
    const temp_directory scratch;
    const auto title_of = [&](const std::string& members) {
        const std::string file = scratch.write("s", "{" + members + R"("mode": {"info": {}}})");
        const std::string drawn = oru_snapshot({"graph", "-"}, {.stdin_from = file}).out;
        const std::size_t begin = drawn.find("    graph [label=");
        return drawn.substr(begin, drawn.find(", labelloc", begin) - begin);
    };
    EXPECT_EQ(title_of(""), "    graph [label=\"/dev/stdin\"");
    EXPECT_EQ(title_of(R"("about": "gate \"4\"\n", "recorded": "2026-11-22T07:14:32Z", )"),
              R"(    graph [label="gate \"4\"\\n\nrecorded 2026-11-22T07:14:32Z")");
}

TEST(graph, draws_who_requested_a_stream_even_without_a_client) {
    const std::string drawn_arrows = [&] {
        const std::string text = drawn(R"({"stream": {"debug": {"identity.owner": 2}, "all": [
                       {"id": 1, "settings": {"identity": "owner"}, "info": {"identity[0]": "guest"}},
                       {"id": 2, "settings": {"identity": "guest"}, "info": {"identity[0]": "guest"}},
                       {"id": 3, "settings": {"identity": "owner"}, "info": {"$error": "gone"}}]}})")
                                     .out;
        return text.substr(text.find("client_0 [label"));
    }();
    EXPECT_TRUE(
        drawn_arrows.starts_with("client_0 [label=\"guest\"]\n"
                                 "        client_1 [label=\"owner\\n2 streams started\"]\n"))
        << drawn_arrows;
    EXPECT_TRUE(
        drawn_arrows.ends_with("\n    stream_0 -> client_0\n"
                               "    stream_0 -> client_1 [style=dashed]\n"
                               "    stream_1 -> client_0\n"
                               "    stream_2 -> client_1 [style=dashed]\n}\n"))
        << drawn_arrows;
}

TEST(graph, fails_with_the_reason_if_no_query_is_answered) {
    EXPECT_EQ(oru_snapshot({"graph"}, {.environment = {"ORU_SNAPSHOT=/nowhere"}}),
              ended(1, "", "oru-snapshot: /nowhere: No such file or directory\n"));
}

TEST(graph, fails_if_its_output_is_lost) {
    EXPECT_EQ(
        oru_snapshot_beside(R"({"stream": {"all": []}})", {"graph"}, {.stdout_to = "/dev/full"}),
        ended(1, "", "oru-snapshot: cannot write to standard output: No space left on device\n"));
}

}  // namespace
