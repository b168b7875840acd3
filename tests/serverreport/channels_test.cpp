// The channels and their crop.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

result channels(const std::string& all) {
    return report(R"({"channel": {"all": )" + all + "}}", {"--list-channels"});
}

std::string document_of(const std::string& entries) {
    return "----- Snapshot of channel settings -----\n\n{\n    \"channels\" : [\n" + entries +
           "    ]\n}\n";
}

TEST(channels, a_channel_with_crop) {
    EXPECT_EQ(channels(R"([{"id": 0, "info": {"crop.possible": true}, "crop": [0, 0, 1920, 1080],
                            "crop_max": [1920, 1080]}])"),
              ended(0, R"(----- Snapshot of channel settings -----

{
    "channels" : [
        {"id/0":{"crop":"Yes","height":1.08e+3,"maxheight":1.08e+3,"maxwidth":1.92e+3,"width":1.92e+3,"x":0,"y":0}}
    ]
}
)"));
}

TEST(channels, each_number_in_its_place) {
    EXPECT_EQ(channels(R"([{"id": 4294967295, "info": {"crop.possible": true},
                            "crop": [1, 20, 333, 4294967295], "crop_max": [5555, 66]}])"),
              ended(0, document_of(R"(        {"id/4294967295":{"crop":"Yes","height":4294967295,)"
                                   R"("maxheight":66,"maxwidth":5555,"width":333,"x":1,"y":2e+1}})"
                                   "\n")));
}

TEST(channels, a_channel_without_crop) {
    for (const char* info : {"{}", R"({"crop.possible": false})", R"({"crop.possible": 1})",
                             R"({"crop.possible": "true"})"}) {
        EXPECT_EQ(channels(std::string(R"([{"id": 10, "crop": [1, 2, 3, 4], "crop_max": [5, 6],
                                             "info": )") +
                           info + "}]"),
                  ended(0, document_of("        {\"id/10\":{\"crop\":\"No\"}}\n")))
            << info;
    }
}

TEST(channels, crop_queries_that_fail_leave_zeros) {
    for (const char* crop :
         {"", R"(, "crop": {"$error": "busy"}, "crop_max": [5, 6])",
          R"(, "crop": [1, 2, 3, 4], "crop_max": {"$error": "busy"})", R"(, "crop": [1, 2, 3, 4])",
          R"(, "crop_max": [5, 6])", R"(, "crop": {"$error": "a"}, "crop_max": {"$error": "b"})"}) {
        EXPECT_EQ(
            channels(std::string(R"([{"id": 3, "info": {"crop.possible": true})") + crop + "}]"),
            ended(0, document_of(R"(        {"id/3":{"crop":"Yes","height":0,"maxheight":0,)"
                                 R"("maxwidth":0,"width":0,"x":0,"y":0}})"
                                 "\n")))
            << crop;
    }
}

TEST(channels, entries_are_separated_by_commas_in_list_order) {
    EXPECT_EQ(channels(R"([{"id": 2, "info": {}}, {"id": 0, "info": {"crop.possible": true}},
                           {"id": 1, "info": {}}])"),
              ended(0, document_of(R"(        {"id/2":{"crop":"No"}},
        {"id/0":{"crop":"Yes","height":0,"maxheight":0,"maxwidth":0,"width":0,"x":0,"y":0}},
        {"id/1":{"crop":"No"}}
)")));
}

TEST(channels, no_channels) {
    EXPECT_EQ(channels("[]"), ended(0, "No channels.\n"));
}

TEST(channels, a_failing_list_ends_the_section) {
    EXPECT_EQ(channels(R"({"$error": "service busy"})"),
              ended(0, "Failed to get all channels: service busy\n"));
    EXPECT_EQ(channels(R"({"$error": "100%s %n {}"})"),
              ended(0, "Failed to get all channels: 100%s %n {}\n"));
    EXPECT_EQ(channels(R"({"$error": ""})"), ended(0, "Failed to get all channels: \n"));
    // g_print prints this message. Without a locale, it prints ASCII only.
    EXPECT_EQ(channels(R"({"$error": "é or ☃"})"),
              ended(0, "Failed to get all channels: ? or ?\n"));
    const result unrecorded = report("{}", {"-c"});
    EXPECT_EQ(unrecorded.status, 0);
    EXPECT_EQ(unrecorded.err, "");
    EXPECT_TRUE(unrecorded.out.starts_with("Failed to get all channels: ")) << unrecorded;
    EXPECT_EQ(unrecorded.out.find('\n'), unrecorded.out.size() - 1) << unrecorded;
}

TEST(channels, a_failing_info_query_leaves_the_document_unclosed) {
    const std::string opening =
        "----- Snapshot of channel settings -----\n\n{\n    \"channels\" : [\n";
    EXPECT_EQ(channels(R"([{"id": 0, "info": {"$error": "gone é"}}, {"id": 1, "info": {}}])"),
              ended(0, opening + "Failed to get channel info: gone ?\n"));
    EXPECT_EQ(channels(R"([{"id": 0, "info": {}}, {"id": 1, "info": {"$error": "gone"}},
                           {"id": 2, "info": {}}])"),
              ended(0, opening + "        {\"id/0\":{\"crop\":\"No\"}},\n"
                                 "Failed to get channel info: gone\n"));
    EXPECT_EQ(channels(R"([{"id": 0, "info": {}}, {"id": 1, "info": {}},
                           {"id": 2, "info": {"$error": "gone"}}])"),
              ended(0, opening + "        {\"id/0\":{\"crop\":\"No\"}},\n"
                                 "        {\"id/1\":{\"crop\":\"No\"}},\n"
                                 "Failed to get channel info: gone\n"));
    const result unrecorded = channels(R"([{"id": 0}])");
    EXPECT_EQ(unrecorded.status, 0);
    EXPECT_TRUE(unrecorded.out.starts_with(opening + "Failed to get channel info: ")) << unrecorded;
    EXPECT_TRUE(unrecorded.out.ends_with("\n")) << unrecorded;
}

TEST(channels, the_next_section_runs_after_a_failure) {
    EXPECT_EQ(report(R"({"channel": {"all": [{"id": 5, "info": {"$error": "gone"},
                                     "resolutions": {"available": []}}]}})",
                     {"-ac"}),
              ended(0,
                    "----- Snapshot of channel settings -----\n\n{\n    \"channels\" : [\n"
                    "Failed to get channel info: gone\n"
                    "----- Available resolutions -----\n\n{\n    \"available_resolutions\" : [\n"
                    "        {\"channel\":\"5\",\"resolutions\":\"\"}\n"
                    "    ]\n}\n"));
}

}  // namespace
