// The inputs, their capture modes and the view mode as a document.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

result system_info(const std::string& snapshot) {
    return tlm(snapshot, {"--system-info"});
}

// Returns the document of a device without inputs whose mode information is this map.
result view_mode_of(const std::string& mode) {
    return system_info(R"({"channel": {"info": {"input.count": 0}}, "mode": {"info": )" + mode +
                       "}}");
}

TEST(system_info, inputs_capture_modes_and_view_mode) {
    EXPECT_EQ(system_info(R"({
        "channel": {"info": {"input.count": 2}},
        "input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [1920, 1080]}},
                          {"id": 2, "resolution_unrotated": {"capture": [1280, 720]}}]},
        "mode": {"info": {"view": "quad", "capture": "full", "capture.width": 1920,
                          "captured": true, "available.modes": "a,b", "available": 3,
                          "stream.fps": 25, "sensor": "wide"}}
    })"),
              ended(0, R"({
    "inputs": 2,
    "capturemodes": {
        "input1": "1920x1080",
        "input2": "1280x720"
    },
    "viewmode": {
        "sensor": "wide",
        "stream_fps": 25
    }
}
)"));
}

TEST(system_info, no_input_count_means_one_input) {
    const std::string inputs =
        R"("input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [640, 480]}},
                             {"id": 2, "resolution_unrotated": {"capture": [1280, 720]}}]},
           "mode": {"info": {}})";
    const std::string expected = R"({
    "inputs": 1,
    "capturemodes": {
        "input1": "640x480"
    },
    "viewmode": {}
}
)";
    EXPECT_EQ(system_info(R"({"channel": {"info": {}}, )" + inputs + "}"), ended(0, expected));
    // A count of another kind is ignored.
    EXPECT_EQ(system_info(R"({"channel": {"info": {"input.count": "2"}}, )" + inputs + "}"),
              ended(0, expected));
}

TEST(system_info, an_input_count_of_0_opens_none) {
    EXPECT_EQ(system_info(R"({
        "channel": {"info": {"input.count": 0}},
        "input": {"all": [{"id": 0, "resolution_unrotated": {"capture": [640, 480]}},
                          {"id": 1, "resolution_unrotated": {"capture": [640, 480]}}]},
        "mode": {"info": {"fps": 30}}
    })"),
              ended(0, R"({
    "inputs": 0,
    "capturemodes": {},
    "viewmode": {
        "fps": 30
    }
}
)"));
}

TEST(system_info, twelve_inputs_come_in_byte_order) {
    std::string inputs;
    for (int i = 1; i <= 12; ++i) {
        inputs += (i == 1 ? "" : ", ") + (R"({"id": )" + std::to_string(i)) +
                  R"(, "resolution_unrotated": {"capture": [)" + std::to_string(100 * i) + ", " +
                  std::to_string(i) + "]}}";
    }
    EXPECT_EQ(system_info(R"({"channel": {"info": {"input.count": 12}}, "mode": {"info": {}},
                              "input": {"all": [)" +
                          inputs + "]}}"),
              ended(0, R"({
    "inputs": 12,
    "capturemodes": {
        "input1": "100x1",
        "input10": "1000x10",
        "input11": "1100x11",
        "input12": "1200x12",
        "input2": "200x2",
        "input3": "300x3",
        "input4": "400x4",
        "input5": "500x5",
        "input6": "600x6",
        "input7": "700x7",
        "input8": "800x8",
        "input9": "900x9"
    },
    "viewmode": {}
}
)"));
}

TEST(system_info, an_input_without_an_answer_is_left_out_but_counted) {
    for (const char* second :
         {R"({"id": 2, "$error": "no signal"},)", "", R"({"id": 2},)",
          R"({"id": 2, "resolution_unrotated": {}},)",
          R"({"id": 2, "resolution_unrotated": {"capture": {"$error": "no signal"}}},)",
          R"({"id": 7, "resolution_unrotated": {"capture": [7, 7]}},)"}) {
        EXPECT_EQ(system_info(std::string(R"({
            "channel": {"info": {"input.count": 3}},
            "input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [1920, 1080]}},)") +
                              second + R"(
                              {"id": 3, "resolution_unrotated": {"capture": [0, 4294967295]}}]},
            "mode": {"info": {}}
        })"),
                  ended(0, R"({
    "inputs": 3,
    "capturemodes": {
        "input1": "1920x1080",
        "input3": "0x4294967295"
    },
    "viewmode": {}
}
)")) << second;
    }
}

TEST(system_info, many_inputs_without_any_answer) {
    EXPECT_EQ(system_info(R"({"channel": {"info": {"input.count": 100000}},
                              "mode": {"info": {}}})"),
              ended(0, R"({
    "inputs": 100000,
    "capturemodes": {},
    "viewmode": {}
}
)"));
}

TEST(system_info, no_channel_information_leaves_the_capture_modes_without_a_value) {
    for (const char* channel :
         {"", R"("channel": {},)", R"("channel": {"info": {"$error": "no channels"}},)"}) {
        EXPECT_EQ(system_info(std::string("{") + channel + R"(
            "input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [640, 480]}}]},
            "mode": {"info": {"a.b": 1}}
        })"),
                  ended(0,
                        "{\n"
                        "    \"inputs\": 0,\n"
                        "    \"capturemodes\": ,\n"
                        "    \"viewmode\": {\n"
                        "        \"a_b\": 1\n"
                        "    }\n"
                        "}\n"))
            << channel;
    }
}

TEST(system_info, no_mode_leaves_the_view_mode_without_a_value) {
    for (const char* mode : {"", R"(, "mode": {})", R"(, "mode": {"$error": "no mode"})",
                             R"(, "mode": {"info": {"$error": "no mode"}})"}) {
        EXPECT_EQ(
            system_info(std::string(R"({"channel": {"info": {"input.count": 0}})") + mode + "}"),
            ended(0,
                  "{\n"
                  "    \"inputs\": 0,\n"
                  "    \"capturemodes\": {},\n"
                  "    \"viewmode\": \n"
                  "}\n"))
            << mode;
    }
}

TEST(system_info, no_answers_at_all) {
    EXPECT_EQ(system_info("{}"), ended(0,
                                       "{\n"
                                       "    \"inputs\": 0,\n"
                                       "    \"capturemodes\": ,\n"
                                       "    \"viewmode\": \n"
                                       "}\n"));
}

TEST(system_info, which_keys_of_the_mode_are_dropped) {
    EXPECT_EQ(view_mode_of(R"({"view": 1, "viewer": 2, "view.x": 3, "View": 4,
                               "capture": 5, "capture.width": 6, "captured": 7, "recapture": 8,
                               "available": 9, "available.modes": 10, "availableX": 11,
                               "Available": 12, "capt": 13})"),
              ended(0, R"({
    "inputs": 0,
    "capturemodes": {},
    "viewmode": {
        "Available": 12,
        "View": 4,
        "capt": 13,
        "recapture": 8,
        "view_x": 3,
        "viewer": 2
    }
}
)"));
}

TEST(system_info, full_stops_become_underscores_and_the_members_keep_their_order) {
    // "." sorts before "A", "_" after it: the written keys decide the order.
    EXPECT_EQ(view_mode_of(R"({"a.b.c": 1, "..": 2, "aA": 3, "a.b": 4})"), ended(0, R"({
    "inputs": 0,
    "capturemodes": {},
    "viewmode": {
        "__": 2,
        "aA": 3,
        "a_b": 4,
        "a_b_c": 1
    }
}
)"));
}

TEST(system_info, of_two_keys_with_the_same_name_the_smaller_stays) {
    EXPECT_EQ(view_mode_of(R"({"x_y": "dropped", "x.y": "kept", "a_b.c": 2, "a.b_c": 1,
                               "a_b_c": 3})"),
              ended(0, R"({
    "inputs": 0,
    "capturemodes": {},
    "viewmode": {
        "a_b_c": 1,
        "x_y": "kept"
    }
}
)"));
}

TEST(system_info, a_key_that_only_becomes_view_is_kept) {
    // Keys are removed before full stops are replaced.
    EXPECT_EQ(view_mode_of(R"({".view": 1, "view.": 2, "": 3})"), ended(0, R"({
    "inputs": 0,
    "capturemodes": {},
    "viewmode": {
        "": 3,
        "_view": 1,
        "view_": 2
    }
}
)"));
}

TEST(system_info, every_kind_of_value) {
    EXPECT_EQ(view_mode_of(R"({"boolean": true, "no": false, "text": "a b", "u32": 4294967295,
                               "round": 1000, "u16": {"uint16": 10}, "negative": -10,
                               "wide": 9223372036854775807, "lowest": -9223372036854775808,
                               "fps": 29.97, "tenth": 0.1, "whole": {"double": 5},
                               "small": 1e-7, "large": 1e30, "pair": [10, 20]})"),
              ended(0, R"({
    "inputs": 0,
    "capturemodes": {},
    "viewmode": {
        "boolean": true,
        "fps": 29.97,
        "large": 1e+30,
        "lowest": -9223372036854775808,
        "negative": -10,
        "no": false,
        "pair": [10, 20],
        "round": 1000,
        "small": 1e-07,
        "tenth": 0.1,
        "text": "a b",
        "u16": 10,
        "u32": 4294967295,
        "whole": 5,
        "wide": 9223372036854775807
    }
}
)"));
}

TEST(system_info, texts_pass_through_unchanged) {
    // Punctuation inside a text does not affect the layout, and control bytes are escaped as RFC
    // 8259 requires.
    EXPECT_EQ(view_mode_of(R"({"a\"b": "{[,:]} // \"quoted\" \\", "c": "\t\n", "d": "\u00e9\u2603/",
                               "e": ""})"),
              ended(0, R"({
    "inputs": 0,
    "capturemodes": {},
    "viewmode": {
        "a\"b": "{[,:]} // \"quoted\" \\",
        "c": "\t\n",
        "d": "é☃/",
        "e": ""
    }
}
)"));
}

TEST(system_info, a_number_that_json_lacks_ends_the_tool) {
    for (const std::string number : {"nan", "inf", "-inf"}) {
        const result got = view_mode_of(R"({"ratio": {"double": ")" + number + R"("}, "a": 1})");
        EXPECT_EQ(got.status, 1) << got;
        EXPECT_EQ(got.out, "");
        EXPECT_TRUE(got.err.starts_with("oru-tlm-tool: Exception: ")) << got;
        EXPECT_NE(got.err.find("ratio"), std::string::npos) << got;
        EXPECT_EQ(got.err.find('\n'), got.err.size() - 1) << got;
    }
    // A removed member may have such a value.
    EXPECT_EQ(view_mode_of(R"({"capture.ratio": {"double": "nan"}})").status, 0);
}

}  // namespace
