// The resolutions that each channel offers.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

const std::string opening =
    "----- Available resolutions -----\n\n{\n    \"available_resolutions\" : [\n";
const std::string closing = "    ]\n}\n";

result resolutions(const std::string& all) {
    return report(R"({"channel": {"all": )" + all + "}}", {"--list-available-resolutions"});
}

TEST(available_resolutions, two_resolutions) {
    EXPECT_EQ(
        resolutions(R"([{"id": 0, "resolutions": {"available": [[1920, 1080], [1280, 720]]}}])"),
        ended(0, R"(----- Available resolutions -----

{
    "available_resolutions" : [
        {"channel":"0","resolutions":"1920x1080,1280x720"}
    ]
}
)"));
}

TEST(available_resolutions, only_a_single_one_is_followed_by_a_comma) {
    for (const auto& [recorded, written] :
         {std::pair<std::string, std::string>{"[]", ""},
          {"[[1920, 1080]]", "1920x1080,"},
          {"[[1920, 1080], [1280, 720]]", "1920x1080,1280x720"},
          {"[[1920, 1080], [1280, 720], [640, 360]]", "1920x1080,1280x720,640x360"},
          {"[[1, 2], [1, 2], [1, 2], [1, 2]]", "1x2,1x2,1x2,1x2"},
          {"[[0, 4294967295]]", "0x4294967295,"}}) {
        EXPECT_EQ(resolutions(R"([{"id": 7, "resolutions": {"available": )" + recorded + "}}]"),
                  ended(0, opening + "        {\"channel\":\"7\",\"resolutions\":\"" + written +
                               "\"}\n" + closing));
    }
}

TEST(available_resolutions, lines_are_separated_by_commas) {
    EXPECT_EQ(resolutions(R"([{"id": 10, "resolutions": {"available": [[1, 1], [2, 2]]}},
                              {"id": 0, "resolutions": {"available": []}},
                              {"id": 4294967295, "resolutions": {"available": [[3, 3]],
                                                                 "all": [[9, 9]]}}])"),
              ended(0, opening +
                           "        {\"channel\":\"10\",\"resolutions\":\"1x1,2x2\"},\n"
                           "        {\"channel\":\"0\",\"resolutions\":\"\"},\n"
                           "        {\"channel\":\"4294967295\",\"resolutions\":\"3x3,\"}\n" +
                           closing));
}

TEST(available_resolutions, no_channels) {
    EXPECT_EQ(resolutions("[]"), ended(0, "No channels.\n"));
}

TEST(available_resolutions, a_failing_list_ends_the_section) {
    EXPECT_EQ(resolutions(R"({"$error": "service busy: é"})"),
              ended(0, "Failed to get all channels: service busy: ?\n"));
    // Each of the two sections queries the channels itself.
    EXPECT_EQ(report(R"({"channel": {"all": {"$error": "busy"}}})", {"-a", "-c"}),
              ended(0, "Failed to get all channels: busy\nFailed to get all channels: busy\n"));
    EXPECT_EQ(report(R"({"channel": {"all": []}})", {"-ca"}),
              ended(0, "No channels.\nNo channels.\n"));
}

TEST(available_resolutions, a_failing_query_leaves_the_document_unclosed) {
    EXPECT_EQ(resolutions(R"([{"id": 0, "resolutions": {"available": {"$error": "gone é"}}},
                              {"id": 1, "resolutions": {"available": []}}])"),
              ended(0, opening + "        {\"channel\":\"0\",\n"
                                 "Failed to get resolutions: gone ?\n"));
    EXPECT_EQ(resolutions(R"([{"id": 0, "resolutions": {"available": [[1, 2]]}},
                              {"id": 1, "resolutions": {"available": {"$error": "gone"}}}])"),
              ended(0, opening + "        {\"channel\":\"0\",\"resolutions\":\"1x2,\"},\n"
                                 "        {\"channel\":\"1\",\n"
                                 "Failed to get resolutions: gone\n"));
    for (const char* unrecorded : {R"([{"id": 0}])", R"([{"id": 0, "resolutions": {}}])",
                                   R"([{"id": 0, "resolutions": {"all": [[1, 2]]}}])"}) {
        const result got = resolutions(unrecorded);
        EXPECT_EQ(got.status, 0) << unrecorded;
        EXPECT_TRUE(got.out.starts_with(opening + "        {\"channel\":\"0\",\n"
                                                  "Failed to get resolutions: "))
            << got;
        EXPECT_TRUE(got.out.ends_with("\n")) << got;
    }
}

TEST(available_resolutions, the_channel_info_is_not_queried) {
    EXPECT_EQ(resolutions(R"([{"id": 0, "info": {"$error": "gone"},
                               "resolutions": {"available": []}}])"),
              ended(0, opening + "        {\"channel\":\"0\",\"resolutions\":\"\"}\n" + closing));
}

}  // namespace
