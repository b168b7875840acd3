#include <fcntl.h>
#include <unistd.h>

#include <string>

#include <gtest/gtest.h>
#include <stdlib.h>

#include "snapshot_tool/oru_snapshot.h"

namespace {

// The tables of an empty device.
constexpr auto no_streams =
    R"(STREAM  IDENTITY  FORMAT  RESOLUTION  ASKED FPS  FPS  BIT RATE  RUN TIME  FRAMES  FAILED  CLIENTS
    none
)";
constexpr auto no_quotas = R"(
QUOTA OR LIMIT       IN USE  ALLOWED  USED  PEAK
buffers, hard quota       -        -     -     -
buffers, soft quota       -        -     -     -
buffering quota           -        -     -     -
encoded streams           -        -     -     -
JPEG streams              -        -     -     -
raw streams               -        -     -     -
)";
constexpr auto no_channels = R"(
CHANNEL  INPUT  CROP  LARGEST CROP  RESOLUTIONS
    none
)";
constexpr auto no_inputs = R"(
INPUT  CAPTURE  CROP  LARGEST CROP
    none
)";
constexpr auto no_output = R"(
HDMI OUTPUT  RESOLUTION  FPS  ASPECT RATIO  VIC  SIGNAL
    none
)";
constexpr auto no_identities = R"(
IDENTITY  STREAMS STARTED
    none
)";

// Members of a snapshot, by default those of an empty device.
struct members {
    std::string streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [])";
    std::string channels = R"("info": {"input.count": 0}, "all": [])";
    std::string more = R"("system": {"caps": {}})";
};

std::string snapshot_of(const members& members) {
    return R"({"stream": {)" + members.streams + R"(}, "channel": {)" + members.channels + "}, " +
           members.more + "}";
}

struct sections {
    std::string streams = no_streams;
    std::string quotas = no_quotas;
    std::string channels = no_channels;
    std::string inputs = no_inputs;
    std::string output = no_output;
    std::string identities = no_identities;
};

result showing(const sections& sections) {
    return ended(0, sections.streams + sections.quotas + sections.channels + sections.inputs +
                        sections.output + sections.identities);
}

result show(const members& members, const std::vector<std::string>& environment = {}) {
    return oru_snapshot_beside(snapshot_of(members), {"show"}, {.environment = environment});
}

TEST(show, shows_an_empty_device) {
    EXPECT_EQ(show({}), showing({}));
}

TEST(show, aligns_hostile_texts) {
    EXPECT_EQ(
        show({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [
                        {"id": 0, "info": {}, "settings": {}, "debug": {}},
                        {"id": 0, "info": {}, "debug": {},
                         "settings": {"identity": "日本の客", "format": 3}},
                        {"id": 12, "info": {}, "debug": {},
                         "settings": {"identity": "", "format": 3, "subformat": "longer than it fits"}},
                        {"id": 13, "info": {}, "debug": {},
                         "settings": {"identity": "a\nb\u001b[2J\"<\\>\u202e", "format": 4}}])"}),
        showing(
            {.streams =
                 R"(STREAM  IDENTITY               FORMAT            RESOLUTION  ASKED FPS  FPS  BIT RATE  RUN TIME  FRAMES  FAILED  CLIENTS
     0  -                      -                 -                   -    -         -         -       -       -        -
     0  日本の客               NV12              -                   -    -         -         -       -       -        -
    12  ""                     longer than it …  -                   -    -         -         -       -       -        -
    13  a\nb\x1b[2J"<\>\u202e  code 4            -                   -    -         -         -       -       -        -
)"}));
}

TEST(show, shows_the_largest_figures) {
    EXPECT_EQ(
        show({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [
            {"id": 4294967295,
             "info": {"peers": 4294967295, "statistics.failed_frames": 4294967295,
                      "statistics.frame_count": 4294967295, "statistics.framerate": 4294967295,
                      "statistics.bitrate": 4294967295,
                      "statistics.duration": { "int64": 9223372036854775807 }},
             "settings": {"identity": "a client with a long name", "format": 4294967294,
                          "framerate": 1e300, "width": 4294967295, "height": 4294967295},
             "debug": {}},
            {"id": 1, "info": {"statistics.duration": { "int64": -9223372036854775808 }},
             "settings": {}, "debug": {}}])"}),
        showing(
            {.streams =
                 R"(    STREAM  IDENTITY                  FORMAT           RESOLUTION             ASKED FPS         FPS        BIT RATE           RUN TIME      FRAMES      FAILED     CLIENTS
4294967295  a client with a long na…  code 4294967294  4294967295x4294967295     1e+300  4294967295  4294.97 Mbit/s   2562047788:00:54  4294967295  4294967295  4294967295
         1  -                         -                -                              -           -               -  -2562047788:00:54           -           -           -
)"}));
}

TEST(show, shows_failures_in_place) {
    EXPECT_EQ(
        show({.streams = R"("debug": {"$error": "no\ncounters"}, "quota": {"$error": "no quota"},
                            "limit": {"$error": ""}, "all": [
                  {"id": 1, "info": {"$error": "ended"}, "debug": {},
                   "settings": {"format": 0, "width": 640, "height": 360}},
                  {"id": 2, "info": {"width": 1280, "height": 720, "peers": 1},
                   "settings": {"$error": "busy"}, "debug": {"$error": "secret"}},
                  {"id": 3, "info": {"$error": "ended"}, "debug": {}, "settings": {"format": 3}}])",
              .channels = R"("info": {"$error": "no count"}, "filtered": {"$error": "no filter"},
                             "all": [
                  {"id": 7, "info": {"$error": "gone"}, "resolutions": {"available": []}},
                  {"id": 8, "info": {"crop.possible": true}, "crop": [1, 2, 3, 4],
                   "crop_max": {"$error": "no most"},
                   "resolutions": {"available": {"$error": "none"}}}])",
              .more = R"("system": {"caps": {"$error": "no caps"}})"}),
        showing(
            {.streams =
                 R"(STREAM  IDENTITY  FORMAT  RESOLUTION  ASKED FPS  FPS  BIT RATE  RUN TIME  FRAMES  FAILED  CLIENTS
     1  -         h264    640x360             -    ?         ?         ?       ?       ?        ?
    info failed: ended
     2  ?         ?       ?                   ?    -         -         -       -       -        1
    settings failed: busy
    debug failed: secret
     3  -         NV12    ?                   -    ?         ?         ?       ?       ?        ?
    info failed: ended
)",
             .quotas = R"(
QUOTA OR LIMIT       IN USE  ALLOWED  USED  PEAK
buffers, hard quota       ?        ?     -     ?
buffers, soft quota       ?        ?     -     ?
buffering quota           -        ?     -     -
encoded streams           ?        ?     -     ?
JPEG streams              ?        -     -     -
raw streams               ?        ?     -     ?
    quota failed: no quota
    limit failed
    counters failed: no\ncounters
)",
             .channels = R"(
CHANNEL  INPUT  CROP        LARGEST CROP  RESOLUTIONS
      7      ?  ?           ?             none
    info failed: gone
      8      ?  3x4 at 1,2  ?             ?
    largest crop failed: no most
    resolutions failed: none
)",
             .inputs = R"(
INPUT  CAPTURE  CROP  LARGEST CROP
    count of inputs failed: no count
    channels of inputs failed: no filter
)",
             .output = R"(
HDMI OUTPUT  RESOLUTION  FPS  ASPECT RATIO  VIC  SIGNAL
    output failed: no caps
)",
             .identities = R"(
IDENTITY  STREAMS STARTED
    counters failed: no\ncounters
)"}));
}

TEST(show, shows_failures_of_lists) {
    EXPECT_EQ(
        show({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": {"$error": "busy"})",
              .channels = R"("info": {"input.count": 0}, "all": {"$error": "gone"},
                                   "filtered": {"$error": "gone too"})"}),
        showing(
            {.streams =
                 R"(STREAM  IDENTITY  FORMAT  RESOLUTION  ASKED FPS  FPS  BIT RATE  RUN TIME  FRAMES  FAILED  CLIENTS
    streams failed: busy
)",
             .channels = R"(
CHANNEL  INPUT  CROP  LARGEST CROP  RESOLUTIONS
    channels failed: gone
)",
             .inputs = R"(
INPUT  CAPTURE  CROP  LARGEST CROP
    channels of inputs failed: gone too
)"}));
}

TEST(show, takes_usage_from_the_first_stream_that_reports_it) {
    EXPECT_EQ(
        show({.streams = R"("debug": {"global.capacity": 1, "global.raw.peers": 7,
                                      "global.capacity.peak": 524288,
                                      "global.encoded.peers.peak": 11, "global.raw.peers.peak": 8},
                            "quota": {"global.hard.limit": 2097152, "global.soft.limit": 0,
                                      "global.buffering.limit": 1000},
                            "limit": {"global.max.streams.limit.encoded": 12},
                            "all": [{"id": 1, "info": {}, "settings": {}, "debug": {}},
                                    {"id": 2, "info": {}, "settings": {},
                                     "debug": {"global.capacity": 1048576,
                                               "global.encoded.peers": 10}},
                                    {"id": 3, "info": {}, "settings": {},
                                     "debug": {"global.capacity": 2, "global.encoded.peers": 2,
                                               "global.encoded.jpeg.peers": 3}}])"}),
        showing(
            {.streams =
                 R"(STREAM  IDENTITY  FORMAT  RESOLUTION  ASKED FPS  FPS  BIT RATE  RUN TIME  FRAMES  FAILED  CLIENTS
     1  -         -       -                   -    -         -         -       -       -        -
     2  -         -       -                   -    -         -         -       -       -        -
     3  -         -       -                   -    -         -         -       -       -        -
)",
             .quotas = R"(
QUOTA OR LIMIT        IN USE  ALLOWED  USED       PEAK
buffers, hard quota  1.0 MiB  2.0 MiB  50 %  512.0 KiB
buffers, soft quota  1.0 MiB  0.0 KiB     -  512.0 KiB
buffering quota            -     1000     -          -
encoded streams           10       12  83 %         11
JPEG streams               3        -     -          -
raw streams                7       12  58 %          8
)"}));
}

TEST(show, names_the_inputs_of_channels) {
    EXPECT_EQ(show({.channels = R"("info": {"input.count": 1}, "all": [
                  {"id": 5, "properties": {"key": "input"}, "info": {},
                   "resolutions": {"available": [[1, 2], [3, 4]]}},
                  {"id": 6, "properties": {"key": "input"}, "info": {"type.id": 9},
                   "resolutions": {"available": [[1111111111, 1111111111], [2222222222, 2222222222],
                                                 [333333333, 33333], [4, 4], [5, 5]]}},
                  {"id": 7, "properties": {"key": "input"}, "info": {"$error": "gone"},
                   "resolutions": {"available": []}}])",
                    .more = R"("system": {"caps": {}}, "input": {"all": [
                  {"id": 1, "info": {"crop.possible": true, "crop.max": [7, 8]},
                   "crop": [1, 2, 3, 4], "resolution_unrotated": {"capture": [640, 360]}},
                  {"id": 9, "$error": "not connected"}]})"}),
              showing({.channels = R"(
CHANNEL  INPUT  CROP  LARGEST CROP  RESOLUTIONS
      5      1  no    -             1x2, 3x4
      6      9  no    -             1111111111x1111111111, 2222222222x2222222222 and 3 more
      7      ?  ?     ?             none
    info failed: gone
)",
                       .inputs = R"(
INPUT  CAPTURE  CROP        LARGEST CROP
    1  640x360  3x4 at 1,2  7x8
    9  ?        ?           ?
    input failed: not connected
    input of channel 7 failed: gone
)"}));
}

// All bits set are what the service's getter returns if there is no pair.
TEST(show, shows_no_largest_crop_of_all_bits_set) {
    EXPECT_EQ(show({.channels = R"("info": {"input.count": 2}, "all": [])",
                    .more = R"("system": {"caps": {}}, "input": {"all": [
                  {"id": 1, "info": {"crop.possible": true, "crop.max": [4294967295, 4294967295]},
                   "crop": [1, 2, 3, 4], "resolution_unrotated": {"capture": [640, 360]}},
                  {"id": 2, "info": {"crop.possible": true, "crop.max": [4294967295, 4294967294]},
                   "crop": [1, 2, 3, 4], "resolution_unrotated": {"capture": [640, 360]}}]})"}),
              showing({.inputs = R"(
INPUT  CAPTURE  CROP        LARGEST CROP
    1  640x360  3x4 at 1,2  -
    2  640x360  3x4 at 1,2  4294967295x4294967294
)"}));
}

TEST(show, queries_at_most_1024_counted_inputs) {
    const result got = show({.channels = R"("info": {"input.count": 4294967295}, "all": [])"});
    EXPECT_EQ(got.status, 0);
    EXPECT_NE(got.out.find("\n 1024  ?        ?     ?\n"
                           "    input failed: input 1024 not recorded\n"
                           "    4294967295 inputs counted, asked for 1024\n"),
              std::string::npos)
        << got;
}

std::string shown_output(const std::string& settings, const std::string& info) {
    const members members{.more = R"("system": {"caps": {"output": true}}, "output": {"all": [
                                  {"id": 0, "settings": )" +
                                  settings + R"(, "info": )" + info + "}]}"};
    const result got = show(members);
    EXPECT_EQ(got.status, 0);
    const std::string before = std::string(no_streams) + no_quotas + no_channels + no_inputs;
    EXPECT_TRUE(got.out.starts_with(before) && got.out.ends_with(no_identities)) << got;
    return got.out.substr(before.size(),
                          got.out.size() - before.size() - std::string_view(no_identities).size());
}

TEST(show, shows_the_states_of_the_output) {
    EXPECT_EQ(shown_output(R"({"enabled": true, "VIC": 16})",
                           R"({"running": true, "vsdb": true, "width": 1920, "height": 1080,
                               "framerate": 59.94, "aspect.ratio": "16:9"})"),
              R"(
HDMI OUTPUT  RESOLUTION    FPS  ASPECT RATIO  VIC  SIGNAL
running      1920x1080   59.94  16:9           16  HDMI
)");
    EXPECT_EQ(shown_output(R"({"enabled": true})", R"({"running": false})"), R"(
HDMI OUTPUT  RESOLUTION  FPS  ASPECT RATIO  VIC  SIGNAL
not running  -             -  -               -  DVI
)");
    EXPECT_EQ(shown_output("{}", R"({"$error": "off"})"), R"(
HDMI OUTPUT  RESOLUTION  FPS  ASPECT RATIO  VIC  SIGNAL
disabled     ?             ?  ?               -  ?
    info failed: off
)");
    EXPECT_EQ(shown_output(R"({"$error": "off"})", "{}"), R"(
HDMI OUTPUT  RESOLUTION  FPS  ASPECT RATIO  VIC  SIGNAL
?            -             -  -               ?  DVI
    settings failed: off
)");
    EXPECT_EQ(shown_output(R"({"enabled": true})", R"({"$error": "off"})"), R"(
HDMI OUTPUT  RESOLUTION  FPS  ASPECT RATIO  VIC  SIGNAL
?            ?             ?  ?               -  ?
    info failed: off
)");
}

TEST(show, counts_the_streams_of_identities) {
    EXPECT_EQ(show({.streams = R"("debug": {"identity.b": 2, "identity.a": "many", "identity.": 1,
                                            "identity": 3, "identity.日本": 4294967295},
                                  "quota": {}, "limit": {}, "all": [])"}),
              showing({.identities = R"(
IDENTITY  STREAMS STARTED
""                      1
a                       -
b                       2
日本           4294967295
)"}));
}

TEST(show, fails_with_the_reason_if_no_query_is_answered) {
    const temp_directory scratch;
    EXPECT_EQ(oru_snapshot({"show"}, {.environment = {"ORU_SNAPSHOT=/no\nwhere"}}),
              ended(1, "", "oru-snapshot: /no\\nwhere: No such file or directory\n"));
    EXPECT_EQ(oru_snapshot_beside(R"({"stream": {"all": {"$error": "first"}}})", {"show"}),
              ended(1, "", "oru-snapshot: first\n"));
    // The mode is not shown, but a service that answers it was reached.
    EXPECT_EQ(oru_snapshot_beside(R"({"mode": {"info": {}}})", {"show"}).status, 0);
    EXPECT_EQ(oru_snapshot_beside(R"({"output": {"all": [{"id": 0}]}})", {"show"}).status, 0);
}

TEST(show, fails_if_its_output_is_lost) {
    EXPECT_EQ(
        oru_snapshot_beside(snapshot_of({}), {"show"}, {.stdout_to = "/dev/full"}),
        ended(1, "", "oru-snapshot: cannot write to standard output: No space left on device\n"));
    EXPECT_EQ(oru_snapshot_beside(snapshot_of({}), {"show"}, {.stdout_to = closed_stream}),
              ended(1, "", "oru-snapshot: cannot write to standard output: Bad file descriptor\n"));
}

// Returns the output of the program on a terminal.
std::string shown_on_terminal(const members& members, const std::vector<std::string>& environment) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_GE(terminal, 0);
    EXPECT_EQ(grantpt(terminal), 0);
    EXPECT_EQ(unlockpt(terminal), 0);
    const result got =
        oru_snapshot_beside(snapshot_of(members), {"show"},
                            {.environment = environment, .stdout_to = ptsname(terminal)});
    EXPECT_EQ(got, ended(0, ""));
    // The output arrives in pieces. After the last one, reading fails because the program
    // has ended.
    std::string shown;
    char piece[4096];
    for (ssize_t length = 0; (length = read(terminal, piece, sizeof piece)) > 0;) {
        shown.append(piece, static_cast<std::size_t>(length));
    }
    close(terminal);
    std::erase(shown, '\r');
    return shown;
}

TEST(show, colours_problems_on_a_terminal) {
    const members members{.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [
        {"id": 1, "info": {"statistics.failed_frames": 9}, "settings": {}, "debug": {}},
        {"id": 2, "info": {"statistics.failed_frames": 0}, "settings": {}, "debug": {}},
        {"id": 3, "info": {}, "settings": {}, "debug": {"$error": "busy"}}])"};
    sections expected{
        .streams =
            R"(STREAM  IDENTITY  FORMAT  RESOLUTION  ASKED FPS  FPS  BIT RATE  RUN TIME  FRAMES  FAILED  CLIENTS
     1  -         -       -                   -    -         -         -       -       9        -
     2  -         -       -                   -    -         -         -       -       0        -
     3  -         -       -                   -    -         -         -       -       -        -
    debug failed: busy
)"};
    const std::string plain = showing(expected).out;
    expected.streams =
        R"(STREAM  IDENTITY  FORMAT  RESOLUTION  ASKED FPS  FPS  BIT RATE  RUN TIME  FRAMES  FAILED  CLIENTS
     1  -         -       -                   -    -         -         -       -       )"
        "\033[1;31m9\033[0m"
        R"(        -
     2  -         -       -                   -    -         -         -       -       0        -
     3  -         -       -                   -    -         -         -       -       -        -
    )"
        "\033[1;31mdebug failed: busy\033[0m\n";
    const std::string coloured = showing(expected).out;

    EXPECT_EQ(shown_on_terminal(members, {}), coloured);
    EXPECT_EQ(shown_on_terminal(members, {"NO_COLOR="}), coloured);
    EXPECT_EQ(shown_on_terminal(members, {"NO_COLOR=1"}), plain);
    EXPECT_EQ(show(members).out, plain);
}

}  // namespace
