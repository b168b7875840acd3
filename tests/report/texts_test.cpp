// Odd texts and values from the service, in every place of the reports.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

// Bytes that are not valid UTF-8 are printed unchanged, and JSON escapes are still applied.
TEST(texts, bytes_that_are_not_utf8_stay_unchanged) {
    EXPECT_EQ(
        report(R"({"stream": {"all": [{"id": 1, "info": {"identity[3]": {"bytes": "c328"}},
                  "settings": {"format": 3, "subformat": {"bytes": "feff"},
                               "identity": {"bytes": "22ff0a80"}},
                  "debug": {"tlm[0].reclaim_count": 1,
                            "tlm[0].reclaim_histogram": {"bytes": "edff22"}}}]}})",
               {"--list-streams"}),
        ended(0,
              "----- Snapshot of all running streams -----\n\n"
              "{\n    \"streams\" : [\n        { \"id/0x0001\" : {\"bitrate\":0,\"channel\":0,"
              "\"duration\":\"00:00:00\",\"failcount\":0,\"format\":\"\xFE\xFF\","
              "\"framecount\":0,\"framerate\":0,\"identity\":\"\\\"\xFF\\n\x80\","
              "\"identity[3]\":\"\xC3(\",\"peers\":0,\"resolution\":\"0x0\"} }\n    ],\n\n"
              "    \"streaminfo\" : [\n        {\n            \"id/0x0001\" : {\n"
              "                \"basic\": {\"channel\":0,\"format\":\"\xFE\xFF\","
              "\"framerate\":0,\"resolution\":\"0x0\",\"rotation\":0}\n"
              "            }\n        }\n    ],\n\n"
              "    \"streamstatistics\" : [\n        { \"id/0x0001\" : "
              "{\"actual-framerate\":0,\"bitrate\":0,\"failcount\":0,\"framecount\":0,"
              "\"reclaimcount\":0,\"tlm[0].reclaim_count\":1,"
              "\"tlm[0].reclaim_histogram\":[\xED\xFF\"]} }\n    ]\n}\n\n"));
    EXPECT_EQ(report(R"({"system": {"caps": {"output": true}}, "output": {"all": [{"id": 0,
                  "settings": {"enabled": true},
                  "info": {"running": true, "aspect.ratio": {"bytes": "31f09f"}}}]}})",
                     {"--list-output"}),
              ended(0,
                    "----- HDMI output -----\n\n    {\"aspect ratio\":\"1\xF0\x9F\","
                    "\"current VIC\":\"0\",\"enabled\":\"Yes\",\"framerate\":\"0.000000\","
                    "\"height\":\"0\",\"running\":\"Yes\",\"vsdb\":\"DVI\",\"width\":\"0\"}\n\n"));
    EXPECT_EQ(tlm(R"({"channel": {"info": {"input.count": 0}},
                      "mode": {"info": {"sensor": {"bytes": "ff5c01e2"}}}})",
                  {"--system-info"}),
              ended(0,
                    "{\n    \"inputs\": 0,\n    \"capturemodes\": {},\n    \"viewmode\": {\n"
                    "        \"sensor\": \"\xFF\\\\\\u0001\xE2\"\n    }\n}\n"));
}

// GLib prints messages in the character set that $CHARSET names, otherwise in that of the C locale,
// because the tools never set another locale.
TEST(texts, messages_that_glib_prints_are_in_its_character_set) {
    const std::string snapshot = R"({"channel": {"all": {"$error": "na\u00efve \u2603"}}})";
    for (const std::vector<std::string>& environment :
         {std::vector<std::string>{}, {"LANG=C.UTF-8"}, {"LC_ALL=C.UTF-8"}, {"CHARSET=US-ASCII"}}) {
        EXPECT_EQ(report(snapshot, {"--list-channels"}, {.environment = environment}),
                  ended(0, "Failed to get all channels: na?ve ?\n"));
    }
    EXPECT_EQ(report(snapshot, {"--list-channels"}, {.environment = {"CHARSET=UTF-8"}}),
              ended(0, "Failed to get all channels: na\xC3\xAFve \xE2\x98\x83\n"));
    // GLib does not print the messages that end a tool.
    EXPECT_EQ(report(R"({"stream": {"all": {"$error": "na\u00efve \u2603"}}})", {"--list-streams"}),
              ended(1, "",
                    "oru-serverreport-tool: Failed to get all streams: "
                    "na\xC3\xAFve \xE2\x98\x83\n"));
}

// GLib marks a message that is not valid UTF-8 and escapes its bytes beyond ASCII. The message
// contains the path of the snapshot.
TEST(texts, a_message_that_is_not_utf8_is_escaped_by_glib) {
    const temp_directory etc;
    command list_channels{.executable = program("oru-serverreport-tool"),
                          .argv = {"oru-serverreport-tool", "--list-channels"},
                          .environment = etc_oru_in(etc.path())};
    list_channels.environment.emplace_back("ORU_SNAPSHOT=/nowhere/na\xC3\xAFve \xE2\x98\x83\xFF");
    EXPECT_EQ(run(list_channels),
              ended(0,
                    "[Invalid UTF-8] Failed to get all channels: /nowhere/na\\xc3\\xafve "
                    "\\xe2\\x98\\x83\\xff: No such file or directory\n"));
    list_channels.environment.emplace_back("CHARSET=UTF-8");
    EXPECT_EQ(run(list_channels), ended(0,
                                        "Failed to get all channels: /nowhere/na\xC3\xAFve "
                                        "\xE2\x98\x83\xFF: No such file or directory\n"));
}

// No getter returns a value of an unknown kind, but its key exists.
TEST(texts, values_of_an_unknown_kind_count_as_absent) {
    EXPECT_EQ(report(R"({"stream": {"all": [{"id": 1,
                  "info": {"channel": {"other": 1}, "identity[0]": {"other": "x"},
                           "statistics.duration": {"other": 1}, "view": {"other": 2}},
                  "settings": {"format": 0, "identity": {"other": "x"}, "rc.mode": {"other": 1},
                               "h264.profile": {"other": 1}, "sign": {"other": true},
                               "framerate": {"other": 2.5}},
                  "debug": {"tlm[0].client_us": {"other": [1, 2]},
                            "tlm[0].duration": {"other": 1},
                            "tlm[0].reclaim_count": 1,
                            "tlm[0].reclaim_histogram": {"other": "1"}}}]}})",
                     {"--list-streams"}),
              ended(0, R"(----- Snapshot of all running streams -----

{
    "streams" : [
        { "id/0x0001" : {"bitrate":0,"channel":0,"duration":"00:00:00","failcount":0,"format":"h264","framecount":0,"framerate":0,"identity":"N/A","peers":0,"resolution":"0x0"} }
    ],

    "streaminfo" : [
        {
            "id/0x0001" : {
                "basic": {"channel":0,"compression":0,"format":"h264","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0,"signed":0,"view":1},
                "h26x": {"bitrate":0,"goplength":0,"profile":"baseline","rcmode":"cbr","rcprio":"fps"}
            }
        }
    ],

    "streamstatistics" : [
        { "id/0x0001" : {"actual-framerate":0,"bitrate":0,"failcount":0,"framecount":0,"reclaimcount":0,"tlm[0].client_us":[0,0]} }
    ]
}

)"));
    EXPECT_EQ(tlm(R"({"channel": {"info": {"input.count": {"other": 7}}},
                      "input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [8, 6]}}]},
                      "stream": {"debug": {"global.capacity.peak": {"other": 5}}, "quota": {},
                                 "limit": {}},
                      "mode": {"info": {"view": {"other": 1}, "a.b": {"other": [ 1.50, "\u0041" ]},
                                        "c": {"other": {"d": null, "e": {}}}}}})",
                  {"--stream-max-stats", "--system-info"}),
              ended(0, R"(MaxBufferBytes=0
MaxEncodeStreams=0
MaxRawStreams=0
Version=1
{
    "inputs": 1,
    "capturemodes": {
        "input1": "8x6"
    },
    "viewmode": {
        "a_b": [1.50, "\u0041"],
        "c": {
            "d": null,
            "e": {}
        }
    }
}
)"));
}

}  // namespace
