#include <fcntl.h>
#include <unistd.h>

#include <ctime>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <stdlib.h>

#include "snapshot_tool/oru_snapshot.h"

namespace {

// The parts of the output for an empty device.
constexpr auto no_counts = "0 streams, 0 channels, 0 inputs, 0 outputs\n";
constexpr auto no_problems = "no problems found\n";
constexpr auto no_streams = R"(
  STREAM  IDENTITY  FORMAT  SIZE  FPS  KBIT/S  TIME  FAIL
    none
)";
constexpr auto no_limits = R"(
  BUFFERS  USED MIB  QUOTA MIB  USE%  PEAK MIB
  hard            -          -     -         -
  soft            -          -     -         -

  LIMIT            USED  LIMIT  USE%  PEAK
  encoded streams     -      -     -     -
  JPEG streams        -      -     -     -
  raw streams         -      -     -     -
  buffering           -      -     -     -
)";
constexpr auto no_channels = R"(
  CHANNEL  INPUT  CROP  SIZES
    none
)";
constexpr auto no_inputs = R"(
  INPUT  SIZE  CROP
    none
)";
constexpr auto no_output = R"(
  OUTPUT  SIZE  FPS  ASPECT  VIC  SIGNAL
    none
)";
constexpr auto no_identities = R"(
  IDENTITY  STARTS
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
    std::string counts = no_counts;
    std::string problems = no_problems;
    std::string streams = no_streams;
    std::string limits = no_limits;
    std::string channels = no_channels;
    std::string inputs = no_inputs;
    std::string output = no_output;
    std::string identities = no_identities;
};

result showing(const sections& sections) {
    return ended(0, sections.counts + sections.problems + sections.streams + sections.limits +
                        sections.channels + sections.inputs + sections.output +
                        sections.identities);
}

// Returns the output without its first line, which says where the answers come from: with our
// client library from the snapshot.
result show(const members& members, std::vector<std::string> options = {}) {
    options.insert(options.begin(), "show");
    result got = oru_snapshot_beside(snapshot_of(members), options);
    const std::string first = got.out.substr(0, got.out.find('\n'));
    EXPECT_TRUE(first.ends_with("/snapshot.json") || first == "video service") << first;
    got.out.erase(0, first.size() + 1);
    return got;
}

TEST(show, shows_an_empty_device) {
    EXPECT_EQ(show({}), showing({}));
}

TEST(show, begins_with_the_origin_of_the_answers) {
    const temp_directory scratch;
    const std::string file = scratch.write(
        "gate\n4.json", R"({"about": "gate 4\nfreezes", "recorded": "2026-11-22T07:14:32Z",
                            "channel": {"info": {"input.count": 2}, "all": {"$error": "gone"}},
                            "stream": {"all": [{"id": 1}]}})");
    const std::string shown = scratch.path() +
                              "/gate\\n4.json\ngate 4\\nfreezes\nrecorded 2026-11-22T07:14:32Z\n"
                              "1 stream, ? channels, 2 inputs, ? outputs\n";
    const result got = oru_snapshot({"show", file});
    EXPECT_TRUE(got.out.starts_with(shown)) << got;
    EXPECT_TRUE(oru_snapshot({"show", "-"}, {.stdin_from = file})
                    .out.starts_with("/dev/stdin\ngate 4\\nfreezes\nrecorded 2026"));
}

TEST(show, aligns_hostile_texts) {
    EXPECT_EQ(show({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [
                        {"id": 0, "info": {}, "settings": {}, "debug": {}},
                        {"id": 0, "info": {}, "debug": {},
                         "settings": {"identity": "日本の客", "format": 3}},
                        {"id": 12, "info": {}, "debug": {},
                         "settings": {"identity": "", "format": 3, "subformat": "longer than it fits"}},
                        {"id": 13, "info": {}, "debug": {},
                         "settings": {"identity": "a\nb\u001b[2J\"<\\>\u202e", "format": 4}}])"}),
              showing({.counts = "4 streams, 0 channels, 0 inputs, 0 outputs\n", .streams = R"(
  STREAM  IDENTITY            FORMAT              SIZE  FPS  KBIT/S  TIME  FAIL
       0  -                   -                   -       -       -     -     -
       0  日本の客            NV12                -       -       -     -     -
      12  ""                  longer than it fi…  -       -       -     -     -
      13  a\nb\x1b[2J"<\>\u…  code 4              -       -       -     -     -
)"}));
}

TEST(show, shows_the_largest_figures) {
    const members members{.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [
            {"id": 4294967295,
             "info": {"peers": 4294967295, "statistics.failed_frames": 4294967,
                      "statistics.frame_count": 4294967295, "statistics.framerate": 4294967295,
                      "statistics.bitrate": 4294967295,
                      "statistics.duration": { "int64": 9223372036854775807 }},
             "settings": {"identity": "a client with a long name", "format": 4294967294,
                          "framerate": 1e300, "width": 4294967295, "height": 4294967295},
             "debug": {}},
            {"id": 1, "info": {"statistics.duration": { "int64": -9223372036854775808 }},
             "settings": {}, "debug": {}}])"};
    const std::string shown = show(members, {"--wide"}).out;
    EXPECT_TRUE(shown.contains(R"(
      STREAM  IDENTITY                   FORMAT           SIZE                                 FPS   KBIT/S               TIME      FRAMES     FAIL     CLIENTS  CHANNEL
! 4294967295  a client with a long name  code 4294967294  4294967295x4294967295  4294967295/1e+300  4294967   2562047788:00:54  4294967295  4294967  4294967295        -
           1  -                          -                -                                      -        -  -2562047788:00:54           -        -           -        -
)")) << shown;
    const std::string cut = show(members).out;
    EXPECT_TRUE(cut.contains(R"(
      STREAM  IDENTITY  FORMAT   SIZE           FPS   KBIT/S      TIME     FAIL
! 4294967295  a clien…  code 4…  4294967…  4294967…  4294967  2562047…  4294967
           1  -         -        -                -        -  -256204…        -
)")) << cut;
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
        showing({.counts = "3 streams, 2 channels, ? inputs, ? outputs\n",
                 .problems = R"(! stream debug failed: no\ncounters
! stream quota failed: no quota
! stream limit failed
! channels failed: no filter
! channel info failed: no count
! system caps failed: no caps
! stream 1: info and 1 more query failed: ended
! stream 2: settings failed: busy
! stream 2: debug failed: secret
! channel 7: info failed: gone
! channel 8: crop_max failed: no most
! channel 8: resolutions failed: none
)",
                 .streams = R"(
  STREAM  IDENTITY  FORMAT  SIZE     FPS  KBIT/S  TIME  FAIL
!      1  -         h264    640x360  ?/-       ?     ?     ?
    info failed: ended
!      2  ?         ?       ?        -/?       -     -     -
    settings failed: busy
    debug failed: secret
!      3  -         NV12    ?        ?/-       ?     ?     ?
    info failed: ended
)",
                 .limits = R"(
  BUFFERS  USED MIB  QUOTA MIB  USE%  PEAK MIB
! hard            ?          ?     -         ?
! soft            ?          ?     -         ?
    quota failed: no quota

  LIMIT            USED  LIMIT  USE%  PEAK
! encoded streams     ?      ?     -     ?
! JPEG streams        ?      -     -     -
! raw streams         ?      ?     -     ?
! buffering           -      ?     -     -
    limit failed
    counters failed: no\ncounters
)",
                 .channels = R"(
  CHANNEL  INPUT  CROP        SIZES
!       7      ?  ?           none
    info failed: gone
!       8      ?  3x4 at 1,2  ?
    largest crop failed: no most
    resolutions failed: none
)",
                 .inputs = R"(
  INPUT  SIZE  CROP
    count of inputs failed: no count
    channels of inputs failed: no filter
)",
                 .output = R"(
  OUTPUT  SIZE  FPS  ASPECT  VIC  SIGNAL
    output failed: no caps
)",
                 .identities = R"(
  IDENTITY  STARTS
    counters failed: no\ncounters
)"}));
}

TEST(show, shows_failures_of_lists) {
    EXPECT_EQ(
        show({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": {"$error": "busy"})",
              .channels = R"("info": {"input.count": 0}, "all": {"$error": "gone"},
                                   "filtered": {"$error": "gone too"})"}),
        showing({.counts = "? streams, ? channels, 0 inputs, 0 outputs\n",
                 .problems = "! streams failed: busy\n"
                             "! channels failed: gone\n"
                             "! channels failed: gone too\n",
                 .streams = R"(
  STREAM  IDENTITY  FORMAT  SIZE  FPS  KBIT/S  TIME  FAIL
    streams failed: busy
)",
                 .channels = R"(
  CHANNEL  INPUT  CROP  SIZES
    channels failed: gone
)",
                 .inputs = R"(
  INPUT  SIZE  CROP
    channels of inputs failed: gone too
)"}));
}

TEST(show, wraps_a_long_reason) {
    EXPECT_EQ(
        show({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": {"$error":
        "the stream server did not answer within the time that a query may take, and was restarted"})"}),
        showing(
            {.counts = "? streams, 0 channels, 0 inputs, 0 outputs\n",
             .problems =
                 R"(! streams failed: the stream server did not answer within the time that a query
  may take, and was restarted
)",
             .streams = R"(
  STREAM  IDENTITY  FORMAT  SIZE  FPS  KBIT/S  TIME  FAIL
    streams failed: the stream server did not answer within the time that a
    query may take, and was restarted
)"}));
}

TEST(show, takes_usage_from_the_first_stream_that_reports_it) {
    EXPECT_EQ(show({.streams = R"("debug": {"global.capacity": 1, "global.raw.peers": 7,
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
              showing({.counts = "3 streams, 0 channels, 0 inputs, 0 outputs\n",
                       .streams = R"(
  STREAM  IDENTITY  FORMAT  SIZE  FPS  KBIT/S  TIME  FAIL
       1  -         -       -       -       -     -     -
       2  -         -       -       -       -     -     -
       3  -         -       -       -       -     -     -
)",
                       .limits = R"(
  BUFFERS  USED MIB  QUOTA MIB  USE%  PEAK MIB
  hard          1.0        2.0   50%       0.5
  soft          1.0        0.0     -       0.5

  LIMIT            USED  LIMIT  USE%  PEAK
  encoded streams    10     12   83%    11
  JPEG streams        3      -     -     -
  raw streams         7     12   58%     8
  buffering           -   1000     -     -
)"}));
}

TEST(show, names_the_inputs_of_channels) {
    EXPECT_EQ(show({.channels = R"("info": {"input.count": 1}, "all": [
                  {"id": 5, "properties": {"key": "input"}, "info": {},
                   "resolutions": {"available": [[1, 2], [3, 4]]}},
                  {"id": 6, "properties": {"key": "input"}, "info": {"type.id": 9},
                   "resolutions": {"available": [[1111111, 1111111], [22222, 22222],
                                                 [333333333, 33333], [4, 4], [5, 5]]}},
                  {"id": 7, "properties": {"key": "input"}, "info": {"$error": "gone"},
                   "resolutions": {"available": []}}])",
                    .more = R"("system": {"caps": {}}, "input": {"all": [
                  {"id": 1, "info": {"crop.possible": true, "crop.max": [7, 8]},
                   "crop": [1, 2, 3, 4], "resolution_unrotated": {"capture": [640, 360]}},
                  {"id": 9, "$error": "not connected"}]})"}),
              showing({.counts = "0 streams, 3 channels, 2 inputs, 0 outputs\n",
                       .problems = R"(! channel 7: info failed: gone
! input 9 has no signal: not connected
! channel 6 names input 9, which is not in the list
)",
                       .channels = R"(
  CHANNEL  INPUT  CROP  SIZES
        5      1  no    1x2, 3x4
!       6      9  no    1111111x1111111, 22222x22222 and 3 more
!       7      ?  ?     none
    info failed: gone
)",
                       .inputs = R"(
  INPUT  SIZE     CROP
      1  640x360  3x4 at 1,2
!     9  ?        ?
    input failed: not connected
    input of channel 7 failed: gone
)"}));
}

// All bits set are what the service's getter returns if there is no pair.
TEST(show, shows_no_largest_crop_of_all_bits_set) {
    const result got = show({.channels = R"("info": {"input.count": 2}, "all": [])",
                             .more = R"("system": {"caps": {}}, "input": {"all": [
                  {"id": 1, "info": {"crop.possible": true, "crop.max": [4294967295, 4294967295]},
                   "crop": [1, 2, 3, 4], "resolution_unrotated": {"capture": [640, 360]}},
                  {"id": 2, "info": {"crop.possible": true, "crop.max": [4294967295, 4294967294]},
                   "crop": [1, 2, 3, 4], "resolution_unrotated": {"capture": [640, 360]}}]})"},
                            {"-w"});
    EXPECT_TRUE(got.out.contains(R"(
  INPUT  SIZE     CROP        MAX CROP
      1  640x360  3x4 at 1,2  -
      2  640x360  3x4 at 1,2  4294967295x4294967294
)")) << got;
}

TEST(show, queries_at_most_1024_counted_inputs) {
    const result got = show({.channels = R"("info": {"input.count": 4294967295}, "all": [])"});
    EXPECT_EQ(got.status, 0);
    EXPECT_TRUE(
        got.out.contains("\n!  1024  ?     ?\n"
                         "    input failed: input 1024 not recorded\n"
                         "    only 1024 of 4294967295 inputs were queried\n"))
        << got;
    EXPECT_TRUE(
        got.out.contains("\n! input 20 has no signal: input 20 not recorded\n"
                         "  … and 1004 more\n"))
        << got;
}

std::string shown_output(const std::string& settings, const std::string& info) {
    const members members{.more = R"("system": {"caps": {"output": true}}, "output": {"all": [
                                  {"id": 0, "settings": )" +
                                  settings + R"(, "info": )" + info + "}]}"};
    const std::string got = show(members).out;
    EXPECT_TRUE(got.starts_with("0 streams, 0 channels, 0 inputs, 1 output\n")) << got;
    const std::size_t begin = got.find("\n  OUTPUT ");
    return got.substr(begin, got.size() - begin - std::string_view(no_identities).size());
}

TEST(show, shows_the_states_of_the_output) {
    EXPECT_EQ(shown_output(R"({"enabled": true, "VIC": 16})",
                           R"({"running": true, "vsdb": true, "width": 1920, "height": 1080,
                               "framerate": 59.94, "aspect.ratio": "16:9"})"),
              R"(
  OUTPUT   SIZE         FPS  ASPECT  VIC  SIGNAL
  running  1920x1080  59.94  16:9     16  HDMI
)");
    EXPECT_EQ(shown_output(R"({"enabled": true})", R"({"running": false})"), R"(
  OUTPUT       SIZE  FPS  ASPECT  VIC  SIGNAL
  not running  -       -  -         -  DVI
)");
    EXPECT_EQ(shown_output("{}", R"({"$error": "off"})"), R"(
  OUTPUT    SIZE  FPS  ASPECT  VIC  SIGNAL
! disabled  ?       ?  ?         -  ?
    info failed: off
)");
    EXPECT_EQ(shown_output(R"({"$error": "off"})", "{}"), R"(
  OUTPUT  SIZE  FPS  ASPECT  VIC  SIGNAL
! ?       -       -  -         ?  DVI
    settings failed: off
)");
    EXPECT_EQ(shown_output(R"({"enabled": true})", R"({"$error": "off"})"), R"(
  OUTPUT  SIZE  FPS  ASPECT  VIC  SIGNAL
! ?       ?       ?  ?         -  ?
    info failed: off
)");
}

TEST(show, counts_the_streams_of_identities) {
    EXPECT_EQ(show({.streams = R"("debug": {"identity.b": 2, "identity.a": "many", "identity.": 1,
                                            "identity": 3, "identity.日本": 4294967295},
                                  "quota": {}, "limit": {}, "all": [])"}),
              showing({.identities = R"(
  IDENTITY      STARTS
  ""                 1
  a                  -
  b                  2
  日本      4294967295
)"}));
}

// --- Problems ------------------------------------------------------------------------------------

result problems(const members& members) {
    return oru_snapshot_beside(snapshot_of(members), {"show", "--problems"});
}

// Returns a stream without other problems.
std::string stream(const std::string& id, const std::string& info, const std::string& settings) {
    return R"({"id": )" + id + R"(, "debug": {}, "info": {)" + info + R"(}, "settings": {)" +
           settings + "}}";
}

TEST(problems, of_streams) {
    const auto of = [](const std::string& info, const std::string& settings) {
        return problems({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [)" +
                                    stream("1", info, settings) + "]"});
    };
    const result none = ended(0, "no problems found\n");
    EXPECT_EQ(of(R"("statistics.failed_frames": 1, "statistics.frame_count": 1000)", ""), none);
    EXPECT_EQ(of(R"("statistics.failed_frames": 2, "statistics.frame_count": 1999)",
                 R"("identity": "wall\n")"),
              ended(1, "! stream 1 (wall\\n): 2 of 1999 frames failed\n"));
    EXPECT_EQ(of(R"("statistics.failed_frames": 1)", ""),
              ended(1, "! stream 1: 1 frames failed\n"));

    // Nine tenths of 29.97 are 26.973.
    constexpr auto asked = R"("framerate": 29.97)";
    EXPECT_EQ(of(R"("statistics.framerate": 26, "statistics.duration": 10000000)", asked), none);
    EXPECT_EQ(of(R"("statistics.framerate": 25, "statistics.duration": 9999999)", asked), none);
    EXPECT_EQ(of(R"("statistics.framerate": 25)", asked), none);
    EXPECT_EQ(of(R"("statistics.framerate": 25, "statistics.duration": 10000000)", asked),
              ended(1, "! stream 1: 25 of 29.97 frames a second\n"));
    EXPECT_EQ(
        of(R"("statistics.framerate": 0, "statistics.duration": 10000000)", R"("framerate": 1.0)"),
        none);
    EXPECT_EQ(of(R"("statistics.framerate": 0, "statistics.duration": 10000000)",
                 R"("framerate": {"double": "inf"})"),
              none);
}

TEST(problems, of_inputs) {
    EXPECT_EQ(problems({.channels = R"("info": {"input.count": 5}, "all": [])",
                        .more = R"("system": {"caps": {}}, "input": {"all": [
        {"id": 1, "info": {}, "resolution_unrotated": {"capture": [0, 1]}},
        {"id": 2, "info": {}, "resolution_unrotated": {"capture": [0, 0]}},
        {"id": 3, "info": {}, "resolution_unrotated": {"capture": {"$error": "asleep"}}},
        {"id": 4, "$error": ""}]})"}),
              ended(1,
                    "! input 2 has no signal: it captures 0x0\n"
                    "! input 3 has no signal: asleep\n"
                    "! input 4 has no signal\n"
                    "! input 5 has no signal: input 5 not recorded\n"));
}

TEST(problems, of_quotas) {
    const auto of = [](const std::string& used, const std::string& quota) {
        return problems({.streams = R"("debug": {)" + used + R"(}, "quota": {)" + quota +
                                    R"(}, "limit": {"global.max.streams.limit.encoded": 20},
                                       "all": [])"});
    };
    constexpr auto quota = R"("global.hard.limit": 10485760, "global.soft.limit": 5242880)";
    const result none = ended(0, "no problems found\n");
    EXPECT_EQ(of(R"("global.capacity": 4718592, "global.encoded.peers": 18)", quota), none);
    EXPECT_EQ(of(R"("global.capacity": 4718593, "global.encoded.peers": 19)", quota),
              ended(1,
                    "! encoded streams: 19 of 20 in use\n"
                    "! buffers, soft quota: 4.5 of 5.0 MiB in use\n"));
    EXPECT_EQ(of(R"("global.capacity": 10485760)", quota),
              ended(1, "! buffers, hard quota: 10.0 of 10.0 MiB in use\n"));
    EXPECT_EQ(of(R"("global.capacity": 1)", R"("global.hard.limit": 0)"), none);
}

TEST(problems, of_names) {
    const std::string all = R"("debug": {}, "quota": {}, "limit": {}, "all": [)" +
                            stream("1", R"("channel": 5, "input": 2)", R"("identity": "wall")") +
                            ", " + stream("2", R"("channel": 6, "input": 3)", "") + "]";
    EXPECT_EQ(problems({.streams = all,
                        .channels = R"("info": {"input.count": 2}, "all": [
        {"id": 5, "info": {}, "resolutions": {"available": []}}], "filtered": [
        {"id": 5, "info": {"type.id": 2}}, {"id": 7, "info": {"type.id": 3}}])",
                        .more = R"("system": {"caps": {}}, "input": {"all": [
        {"id": 1, "info": {}, "resolution_unrotated": {"capture": [1, 1]}},
        {"id": 2, "info": {}, "resolution_unrotated": {"capture": [1, 1]}},
        {"id": 3, "info": {}, "resolution_unrotated": {"capture": [1, 1]}}]})"}),
              ended(1,
                    "! stream 2 names channel 6, which is not in the list\n"
                    "! stream 2 names input 3, which is not in the list\n"
                    "! channel 7 names input 3, which is not in the list\n"));
    // A list that is not known lacks nothing.
    EXPECT_EQ(problems({.streams = all,
                        .channels = R"("info": {"$error": "gone"}, "all": {"$error": "gone"},
                                       "filtered": [])"}),
              ended(1, "! channels and 1 more query failed: gone\n"));
}

TEST(problems, begin_with_the_worst) {
    const result got = problems(
        {.streams =
             R"("debug": {"global.encoded.peers": 20}, "quota": {},
                       "limit": {"global.max.streams.limit.encoded": 20}, "all": [)" +
             stream("1", R"("statistics.failed_frames": 1, "channel": 3)", "") + ", " +
             stream("2", R"("statistics.failed_frames": 9, "statistics.frame_count": 90)", "") +
             ", " +
             stream("3", R"("statistics.framerate": 1, "statistics.duration": 10000000)",
                    R"("framerate": 10.0)") +
             R"(, {"id": 4, "info": {"$error": "ended"}},
                         {"id": 5, "info": {}, "settings": {}, "debug": {"$error": "busy"}}])",
         .channels = R"("info": {"input.count": 1}, "all": [])"});
    EXPECT_EQ(got, ended(1,
                         "! stream 4: settings and 1 more query failed: not recorded\n"
                         "! stream 4: info failed: ended\n"
                         "! stream 5: debug failed: busy\n"
                         "! input 1 has no signal: input 1 not recorded\n"
                         "! stream 1: 1 frames failed\n"
                         "! stream 3: 1 of 10 frames a second\n"
                         "! stream 2: 9 of 90 frames failed\n"
                         "! encoded streams: 20 of 20 in use\n"
                         "! stream 1 names channel 3, which is not in the list\n"));
}

TEST(problems, are_a_health_check_with_a_status) {
    EXPECT_EQ(oru_snapshot({"show", "--problems", "/nowhere"}),
              ended(2, "", "oru-snapshot: /nowhere: No such file or directory\n"));
    EXPECT_EQ(
        oru_snapshot_beside(snapshot_of({}), {"show", "--problems"}, {.stdout_to = "/dev/full"}),
        ended(2, "", "oru-snapshot: cannot write to standard output: No space left on device\n"));
    EXPECT_EQ(oru_snapshot({"show", "--problems", "--stream", "1"}),
              ended(2, "",
                    "oru-snapshot show: --problems and --stream exclude each other\n"
                    "Try 'oru-snapshot show --help'.\n"));
}

// --- One stream ----------------------------------------------------------------------------------

TEST(stream_view, has_every_key_with_its_kind) {
    const result got = show({.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": [
            {"id": 1, "settings": {}, "debug": {}},
            {"id": 43981, "settings": {"identity": "wall"}, "debug": {"$error": "a reason that is so long that it has to be wrapped, as any other line would be"},
             "info": {"channel": 5, "identity[0]": "a\n", "identity[7]": "b", "a": true,
                      "b": "x", "c": { "int64": 5 }, "d": 0.1, "e": [1, 2], "f": { "uint16": 3 },
                      "g": { "other": [1, {"k": "v"}] }, "": "",
                      "a key that needs a line of its own": 1}}])",
                             .channels = R"("info": {"input.count": 0}, "all": [], "filtered": [
                          {"id": 5, "info": {"type.id": 2}}])"},
                            {"--stream", "0xabcd"});
    EXPECT_EQ(got, ended(0, R"(
stream 43981 (id/0xabcd)
  identity  wall
  clients   a\n, b
  channel   5
  input     2

  info
    ""           string   ""
    a            boolean  true
    a key that needs a line of its own
                 uint32   1
    b            string   x
    c            int64    5
    channel      uint32   5
    d            double   0.1
    e            pair     [1, 2]
    f            uint16   3
    g            other    [1,{"k":"v"}]
    identity[0]  string   a\n
    identity[7]  string   b

  settings
    identity  string   wall

! debug failed: a reason that is so long that it has to be wrapped, as any
  other line would be
)"));
}

TEST(stream_view, shows_several_streams_and_lists_the_ids_there_are) {
    std::string all;
    for (int i = 0; i < 22; ++i) {
        all += (i == 0 ? "" : ", ") + stream(std::to_string(i % 21), "", "");
    }
    const members members{.streams =
                              R"("debug": {}, "quota": {}, "limit": {}, "all": [)" + all + "]"};
    const std::string zero =
        "\nstream 0 (id/0x0000)\n  identity  -\n  clients   -\n  channel   -\n  input     -\n"
        "\n  info\n    no keys\n\n  settings\n    no keys\n\n  debug\n    no keys\n";
    std::string one = zero;
    one.replace(one.find("0 (id/0x0000"), 12, "1 (id/0x0001");
    EXPECT_EQ(show(members, {"--stream=1", "--stream", "0"}), ended(0, one + zero + zero));
    EXPECT_EQ(oru_snapshot_beside(snapshot_of(members), {"show", "--stream", "999"}),
              ended(1, "",
                    "oru-snapshot: no stream 999: there are 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, "
                    "12, 13, 14, 15, 16, 17, 18, 19 and 2 more\n"));
    EXPECT_EQ(oru_snapshot_beside(snapshot_of({}), {"show", "--stream", "1"}),
              ended(1, "", "oru-snapshot: no stream 1: there are none\n"));
    for (const char* id : {"", "x", "0x", "-1", "1 ", "4294967296"}) {
        EXPECT_EQ(oru_snapshot({"show", "--stream", id}),
                  ended(2, "",
                        std::string("oru-snapshot show: '") + id +
                            "' is not the id of a stream\nTry 'oru-snapshot show --help'.\n"));
    }
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
std::string shown_on_terminal(const std::string& snapshot, std::vector<std::string> options,
                              const std::vector<std::string>& environment) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_GE(terminal, 0);
    EXPECT_EQ(grantpt(terminal), 0);
    EXPECT_EQ(unlockpt(terminal), 0);
    options.insert(options.begin(), "show");
    const result got = oru_snapshot_beside(
        snapshot, options, {.environment = environment, .stdout_to = ptsname(terminal)});
    EXPECT_EQ(got.err, "");
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

TEST(show, colours_problems_on_a_terminal_or_on_request) {
    const std::string snapshot = snapshot_of(
        {.streams = R"("debug": {}, "quota": {}, "limit": {}, "all": {"$error": "x"})"});
    constexpr auto plain = "! streams failed: x\n";
    constexpr auto coloured = "\033[1;31m! streams failed: x\033[0m\n";
    const auto on_terminal = [&](const std::vector<std::string>& environment,
                                 const char* when = "--color=auto") {
        return shown_on_terminal(snapshot, {"--problems", when}, environment);
    };
    EXPECT_EQ(shown_on_terminal(snapshot, {"--problems"}, {"TERM=xterm"}), coloured);
    EXPECT_EQ(on_terminal({"TERM=xterm", "NO_COLOR="}), coloured);
    EXPECT_EQ(on_terminal({"TERM=xterm", "NO_COLOR=0"}), plain);
    EXPECT_EQ(on_terminal({"TERM=dumb"}), plain);
    EXPECT_EQ(on_terminal({"TERM="}), plain);
    EXPECT_EQ(on_terminal({}), plain);
    EXPECT_EQ(on_terminal({"TERM=xterm"}, "--color=never"), plain);

    const auto in_a_pipe = [&](const std::string& when) {
        return oru_snapshot_beside(snapshot, {"show", "--problems", "--color", when},
                                   {.environment = {"TERM=xterm", "NO_COLOR=1"}});
    };
    EXPECT_EQ(in_a_pipe("always"), ended(1, coloured));
    EXPECT_EQ(in_a_pipe("auto"), ended(1, plain));
    EXPECT_EQ(in_a_pipe("blue"), ended(2, "",
                                       "oru-snapshot show: --color must be always, auto or never\n"
                                       "Try 'oru-snapshot show --help'.\n"));
}

// A file, because another client library has no time of a recording.
TEST(show, has_the_age_of_a_recording_on_a_terminal) {
    const temp_directory scratch;
    const auto line_about = [&](const std::string& time) {
        const std::string file =
            scratch.write("file", R"({"recorded": ")" + time + R"(", "mode": {"info": {}}})");
        const std::string shown = shown_on_terminal("{}", {file}, {});
        const std::size_t begin = shown.find("recorded ");
        return shown.substr(begin, shown.find('\n', begin) - begin);
    };
    const auto time_before = [](std::time_t seconds) {
        const std::time_t then = std::time(nullptr) - seconds;
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&then));
        return std::string(text);
    };
    EXPECT_TRUE(line_about(time_before(30)).ends_with(" seconds ago"));
    EXPECT_TRUE(line_about(time_before(3 * 60 + 20)).ends_with("Z, 3 minutes ago"));
    EXPECT_TRUE(line_about(time_before(26 * 3600 + 60)).ends_with("Z, 26 hours ago"));
    EXPECT_TRUE(line_about(time_before(2 * 86400 + 60)).ends_with("Z, 2 days ago"));
    EXPECT_TRUE(line_about(time_before(-3600)).ends_with("Z"));
}

}  // namespace
