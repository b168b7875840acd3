// The inputs and their crop.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

const std::string opening = "----- Snapshot of input settings -----\n\n{\n    \"inputs\" : [\n";
const std::string closing = "    ]\n}\n";

result inputs(const std::string& channels, const std::string& inputs) {
    return report(R"({"channel": {"all": )" + channels + R"(}, "input": {"all": )" + inputs + "}}",
                  {"--list-inputs"});
}

// Returns a channel of an input. Its own number differs from those of all inputs.
std::string channel(const std::string& info) {
    static int id = 100;
    return R"({"id": )" + std::to_string(++id) + R"(, "properties": {"key": "input"}, "info": )" +
           info + "}";
}

TEST(list_inputs, an_input_with_crop) {
    EXPECT_EQ(inputs("[" + channel(R"({"type.id": 1})") + "]",
                     R"([{"id": 1, "info": {"crop.possible": true, "crop.max": [1920, 1080]},
                          "crop": [0, 0, 1920, 1080]}])"),
              ended(0, R"(----- Snapshot of input settings -----

{
    "inputs" : [
        {"id/1":{"crop":"Yes","height":1.08e+3,"maxheight":1.08e+3,"maxwidth":1.92e+3,"width":1.92e+3,"x":0,"y":0}}
    ]
}
)"));
}

TEST(list_inputs, each_number_in_its_place) {
    EXPECT_EQ(inputs("[" + channel(R"({"type.id": 4294967295})") + "]",
                     R"([{"id": 4294967295, "crop": [1, 20, 333, 4444],
                          "info": {"crop.possible": true, "crop.max": [5555, 4294967295]}}])"),
              ended(0, opening +
                           R"(        {"id/4294967295":{"crop":"Yes","height":4444,)"
                           R"("maxheight":4294967295,"maxwidth":5555,"width":333,"x":1,)"
                           R"("y":2e+1}})"
                           "\n" +
                           closing));
}

TEST(list_inputs, an_input_without_crop) {
    for (const char* info :
         {"{}", R"({"crop.possible": false, "crop.max": [1, 2]})", R"({"crop.possible": 1})"}) {
        EXPECT_EQ(
            inputs("[" + channel(R"({"type.id": 20})") + "]",
                   std::string(R"([{"id": 20, "crop": [1, 2, 3, 4], "info": )") + info + "}]"),
            ended(0, opening + "        {\"id/20\":{\"crop\":\"No\"}}\n" + closing))
            << info;
    }
}

TEST(list_inputs, a_channel_that_names_no_input_is_input_1) {
    for (const char* info : {"{}", R"({"type.id": "2"})", R"({"type.id": {"int64": 2}})"}) {
        EXPECT_EQ(
            inputs("[" + channel(info) + "]", R"([{"id": 2, "info": {}}, {"id": 1, "info": {}}])"),
            ended(0, opening + "        {\"id/1\":{\"crop\":\"No\"}}\n" + closing))
            << info;
    }
}

TEST(list_inputs, no_crop_maximum_is_all_ones) {
    for (const char* maximum : {"", R"(, "crop.max": 5)", R"(, "crop.max": "1,2")"}) {
        EXPECT_EQ(inputs("[" + channel(R"({"type.id": 1})") + "]",
                         std::string(R"([{"id": 1, "crop": [0, 0, 0, 0],
                                          "info": {"crop.possible": true)") +
                             maximum + "}}]"),
                  ended(0, opening +
                               R"(        {"id/1":{"crop":"Yes","height":0,)"
                               R"("maxheight":4294967295,"maxwidth":4294967295,"width":0,)"
                               R"("x":0,"y":0}})"
                               "\n" +
                               closing))
            << maximum;
    }
}

TEST(list_inputs, only_the_channels_of_inputs_in_list_order) {
    EXPECT_EQ(inputs(R"([{"id": 0, "properties": {"key": "input"}, "info": {"type.id": 3}},
                         {"id": 1, "properties": {"key": "view"}, "info": {"type.id": 2}},
                         {"id": 2, "properties": {}, "info": {"type.id": 2}},
                         {"id": 3, "info": {"type.id": 2}},
                         {"id": 4, "properties": {"key": "inputs"}, "info": {"type.id": 2}},
                         {"id": 5, "properties": {"key": "input", "more": "x"},
                          "info": {"type.id": 1}}])",
                     R"([{"id": 1, "info": {}}, {"id": 2, "info": {}}, {"id": 3, "info": {}}])"),
              ended(0, opening +
                           "        {\"id/3\":{\"crop\":\"No\"}},\n"
                           "        {\"id/1\":{\"crop\":\"No\"}}\n" +
                           closing));
}

TEST(list_inputs, two_channels_of_one_input) {
    EXPECT_EQ(inputs("[" + channel(R"({"type.id": 1})") + ", " + channel(R"({"type.id": 1})") + "]",
                     R"([{"id": 1, "info": {}}])"),
              ended(0, opening +
                           "        {\"id/1\":{\"crop\":\"No\"}},\n"
                           "        {\"id/1\":{\"crop\":\"No\"}}\n" +
                           closing));
}

TEST(list_inputs, an_input_without_a_crop_rectangle_is_skipped) {
    const std::string channels = "[" + channel(R"({"type.id": 1})") + ", " +
                                 channel(R"({"type.id": 2})") + ", " +
                                 channel(R"({"type.id": 3})") + "]";
    const std::string plain = R"("info": {})";
    for (const std::string& skipped :
         {std::string(R"("info": {"crop.possible": true}, "crop": {"$error": "busy"})"),
          std::string(R"("info": {"crop.possible": true, "crop.max": [1, 2]})")}) {
        EXPECT_EQ(inputs(channels, R"([{"id": 1, )" + plain + R"(}, {"id": 2, )" + skipped +
                                       R"(}, {"id": 3, )" + plain + "}]"),
                  ended(0, opening +
                               "        {\"id/1\":{\"crop\":\"No\"}},\n"
                               "        {\"id/3\":{\"crop\":\"No\"}}\n" +
                               closing));
        // The comma before the last input remains.
        EXPECT_EQ(inputs(channels, R"([{"id": 1, )" + plain + R"(}, {"id": 2, )" + plain +
                                       R"(}, {"id": 3, )" + skipped + "}]"),
                  ended(0, opening +
                               "        {\"id/1\":{\"crop\":\"No\"}},\n"
                               "        {\"id/2\":{\"crop\":\"No\"}},\n" +
                               closing));
        EXPECT_EQ(inputs(channels, R"([{"id": 1, )" + skipped + R"(}, {"id": 2, )" + skipped +
                                       R"(}, {"id": 3, )" + skipped + "}]"),
                  ended(0, opening + closing));
    }
}

TEST(list_inputs, no_inputs) {
    EXPECT_EQ(inputs("[]", "[]"), ended(0, "No inputs.\n"));
    EXPECT_EQ(inputs(R"([{"id": 0, "properties": {"key": "view"}, "info": {}}])",
                     R"([{"id": 1, "info": {}}])"),
              ended(0, "No inputs.\n"));
}

TEST(list_inputs, a_failing_list_ends_the_section) {
    EXPECT_EQ(inputs(R"({"$error": "service busy"})", "[]"),
              ended(0, "Failed to get inputs: service busy\n"));
    EXPECT_EQ(
        report(R"({"channel": {"all": [], "filtered": {"$error": "no filter é"}}})", {"-i", "-c"}),
        ended(0, "No channels.\nFailed to get inputs: no filter ?\n"));
    const result unrecorded = report("{}", {"-i"});
    EXPECT_EQ(unrecorded.status, 0);
    EXPECT_TRUE(unrecorded.out.starts_with("Failed to get inputs: ")) << unrecorded;
}

TEST(list_inputs, a_failing_query_leaves_the_document_unclosed) {
    const std::string first = channel(R"({"type.id": 1})");
    const std::string second = channel(R"({"type.id": 20})");
    const std::string good = R"({"id": 1, "info": {}})";
    const std::string printed = "        {\"id/1\":{\"crop\":\"No\"}},\n";
    EXPECT_EQ(
        inputs("[" + first + ", " + channel(R"({"$error": "gone é"})") + "]", "[" + good + "]"),
        ended(0, opening + printed + "Failed to get channel info: gone ?\n"));
    EXPECT_EQ(inputs("[" + first + ", " + second + ", " + channel("{}") + "]",
                     "[" + good + R"(, {"id": 20, "$error": "no signal é"}])"),
              ended(0, opening + printed + "Failed to get input 20: no signal ?\n"));
    EXPECT_EQ(inputs("[" + first + ", " + second + "]",
                     "[" + good + R"(, {"id": 20, "info": {"$error": "no info"}}])"),
              ended(0, opening + printed + "Failed to get input info: no info\n"));
    // The first input fails, before an input is printed.
    EXPECT_EQ(inputs("[" + second + ", " + first + "]",
                     "[" + good + R"(, {"id": 20, "$error": "100%s"}])"),
              ended(0, opening + "Failed to get input 20: 100%s\n"));
    for (const auto& [recorded, line] :
         {std::pair<std::string, std::string>{"[]", "Failed to get input 4294967295: "},
          {R"([{"id": 4294967295}])", "Failed to get input info: "}}) {
        const result got = inputs("[" + channel(R"({"type.id": 4294967295})") + "]", recorded);
        EXPECT_EQ(got.status, 0);
        EXPECT_EQ(got.err, "");
        EXPECT_TRUE(got.out.starts_with(opening + line)) << got;
        EXPECT_TRUE(got.out.ends_with("\n")) << got;
    }
}

}  // namespace
