// The settings record of a stream.
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "serverreport/stream_lists.h"

namespace {

// Returns the lines inside the record of the only stream, one for each group.
std::string groups_of(const std::string& settings, const std::string& info = "{}",
                      const std::string& formats = "") {
    const std::string element =
        array_of("streaminfo", snapshot_of({{.info = info, .settings = settings}}, formats));
    const std::string opening = "        {\n            \"id/0x0001\" : {\n";
    const std::string closing = "            }\n        }\n";
    if (!element.starts_with(opening) || !element.ends_with(closing)) {
        ADD_FAILURE() << element;
        return "";
    }
    return element.substr(opening.size(), element.size() - opening.size() - closing.size());
}

TEST(stream_settings, every_group_in_full) {
    EXPECT_EQ(
        groups_of(R"({"format": 0, "width": 1920, "height": 1080, "channel": 1,
        "framerate": 29.97, "compression": 30, "horizontal_flip": true, "sign": true,
        "rc.mode": 1, "rc.prio": 2, "h264.profile": 1, "h265.profile": 5, "av1.profile": 5,
        "gop_length": 32, "bitrate": 4000000, "sqz.strength": 3, "sqz.gop_mode": 1,
        "sqz.max_gop_length": 300, "sqz.skip_mode": 0, "sqz.fps_mode": 0, "sqz.min_fps_num": 5})",
                  R"({"rotation": 180, "monochrome": 1, "view": 8, "width": 7, "height": 7,
        "channel": 7, "framerate": 7.5, "compression": 7, "bitrate": 7})"),
        R"(                "basic": {"channel":1,"compression":3e+1,"format":"h264","framerate":29.969999999999999,"mirror":1,"monochrome":1,"resolution":"1920x1080","rotation":1.8e+2,"signed":1,"view":8},
                "h26x": {"bitrate":4e+6,"goplength":32,"profile":"main","rcmode":"vbr","rcprio":"full fps"},
                "leanflow": {"fps":5,"fpsmode":"fixed","goplength":3e+2,"gopmode":"dynamic","skipmode":"drop","strength":25}
)");
}

TEST(stream_settings, figures_up_to_the_largest) {
    EXPECT_EQ(
        groups_of(R"({"format": 1, "width": 4294967295, "height": 2147483648,
        "channel": 4294967294, "compression": 4294967293, "gop_length": 4294967292,
        "bitrate": 4294967291, "sqz.strength": 1, "sqz.max_gop_length": 4294967289,
        "sqz.min_fps_num": 4294967288})",
                  R"({"rotation": 4294967287, "monochrome": 4294967286, "warp": 4294967285})"),
        R"(                "basic": {"channel":4294967294,"compression":4294967293,"format":"h265","framerate":0,"mirror":0,"monochrome":4294967286,"resolution":"4294967295x2147483648","rotation":4294967287,"signed":0,"warp":4294967285},
                "h26x": {"bitrate":4294967291,"goplength":4294967292,"profile":"main","rcmode":"cbr","rcprio":"fps"},
                "leanflow": {"fps":4294967288,"fpsmode":"fixed","goplength":4294967289,"gopmode":"fixed","skipmode":"drop","strength":1e+1}
)");
}

TEST(stream_settings, the_shape_of_the_record_follows_the_format) {
    const std::string formats = R"({"f0": 0, "f1": 1, "f2": 2, "f3": 3, "f4": 4, "f5": 5, "f6": 6,
        "f7": 7, "f8": 8, "f9": 9, "f10": 10, "f11": 11, "f12": 12, "f13": 13})";
    const std::string h26x =
        ",\n                \"h26x\": {\"bitrate\":0,\"goplength\":0,\"profile\":\"@\","
        "\"rcmode\":\"cbr\",\"rcprio\":\"fps\"}";
    const std::string leanflow =
        ",\n                \"leanflow\": {\"fps\":0,\"fpsmode\":\"fixed\",\"goplength\":0,"
        "\"gopmode\":\"fixed\",\"skipmode\":\"drop\",\"strength\":1e+1}";
    for (const int code : {0, 1, 2, 3, 4, 5, 7, 8, 9, 10, 11, 12, 13, 14, 100}) {
        const bool raw = code == 3 || code == 8 || code == 9;
        std::string name = code <= 13 ? "f" + std::to_string(code) : "n/a";
        if (code == 3) {
            name = "NV12";
        }
        std::string expected = "                \"basic\": {\"channel\":0,";
        expected += raw ? "" : "\"compression\":0,";
        expected += "\"format\":\"" + name + "\",\"framerate\":0,";
        expected += raw ? "" : "\"mirror\":0,\"monochrome\":0,";
        expected += std::string("\"resolution\":\"") + (code == 3 ? "3x4" : "1x2") + "\",";
        expected += "\"rotation\":0";
        expected += raw || code == 2 ? "" : ",\"signed\":0";
        expected += ",\"input\":1}";
        if (code == 0 || code == 1 || code == 10) {
            std::string group = h26x;
            group.replace(group.find('@'), 1, code == 0 ? "baseline" : "main");
            expected += group + leanflow;
        }
        EXPECT_EQ(groups_of(R"({"width": 1, "height": 2, "sqz.strength": 1, "format": )" +
                                std::to_string(code) + "}",
                            R"({"width": 3, "height": 4, "input": 1})", formats),
                  expected + "\n")
            << code;
    }
}

TEST(stream_settings, a_raw_stream_in_full) {
    EXPECT_EQ(
        groups_of(R"({"format": 3, "width": 1920, "height": 1080, "channel": 10,
        "framerate": 25.0, "compression": 30, "horizontal_flip": true, "sign": true,
        "sqz.strength": 3, "subformat": "Y800"})",
                  R"({"rotation": 90, "monochrome": 1, "width": 640, "height": 360,
        "warp": 3})"),
        R"(                "basic": {"channel":1e+1,"format":"Y800","framerate":25,"resolution":"640x360","rotation":9e+1,"warp":3}
)");
}

TEST(stream_settings, a_subformat_names_raw_streams_only) {
    EXPECT_EQ(
        groups_of(R"({"format": 8, "subformat": "Y800"})"),
        R"(                "basic": {"channel":0,"format":"n/a","framerate":0,"resolution":"0x0","rotation":0}
)");
}

TEST(stream_settings, no_format_at_all) {
    const std::string expected =
        R"(                "basic": {"channel":0,"compression":0,"format":"n/a","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0,"signed":0}
)";
    EXPECT_EQ(groups_of("{}"), expected);
    EXPECT_EQ(groups_of(R"({"format": "h264", "sqz.strength": 1})"), expected);
    EXPECT_EQ(groups_of(R"({"format": 4294967295, "sqz.strength": 1})"), expected);
}

// Returns the h26x group for these settings.
std::string h26x_of(const std::string& settings) {
    const std::string groups = groups_of(settings);
    const std::size_t begin = groups.find("\"h26x\": ");
    return begin == std::string::npos ? "" : groups.substr(begin, groups.find('\n', begin) - begin);
}

TEST(stream_settings, words_for_the_rate_control) {
    for (const auto& [code, word] : {std::pair<std::string, std::string>{"0", "cbr"},
                                     {"1", "vbr"},
                                     {"2", "mbr"},
                                     {"3", "abr"},
                                     {"4", "none"},
                                     {"4294967295", "none"},
                                     {R"({"uint16": 2})", "mbr"},
                                     {"\"vbr\"", "cbr"},
                                     {R"({"int64": 1})", "cbr"}}) {
        EXPECT_EQ(h26x_of(R"({"format": 0, "rc.mode": )" + code + "}"),
                  R"("h26x": {"bitrate":0,"goplength":0,"profile":"baseline","rcmode":")" + word +
                      R"(","rcprio":"fps"})");
    }
    for (const auto& [code, word] : {std::pair<std::string, std::string>{"0", "fps"},
                                     {"1", "quality"},
                                     {"2", "full fps"},
                                     {"3", "none"},
                                     {"4294967295", "none"},
                                     {R"({"uint16": 1})", "quality"},
                                     {"1.0", "fps"}}) {
        EXPECT_EQ(h26x_of(R"({"format": 0, "rc.prio": )" + code + "}"),
                  R"("h26x": {"bitrate":0,"goplength":0,"profile":"baseline","rcmode":"cbr",)"
                  R"("rcprio":")" +
                      word + R"("})");
    }
}

TEST(stream_settings, words_for_the_profiles) {
    const std::vector<std::string> h264 = {"baseline", "main", "high", "none", "none"};
    const std::vector<std::string> others = {"main", "main 10bit", "none", "none", "none"};
    for (std::size_t code = 0; code < h264.size(); ++code) {
        const std::string number = std::to_string(code);
        const auto expected = [](const std::string& word) {
            return R"("h26x": {"bitrate":0,"goplength":0,"profile":")" + word +
                   R"(","rcmode":"cbr","rcprio":"fps"})";
        };
        EXPECT_EQ(h26x_of(R"({"format": 0, "h265.profile": 9, "av1.profile": 9, "h264.profile": )" +
                          number + "}"),
                  expected(h264[code]));
        EXPECT_EQ(h26x_of(R"({"format": 1, "h264.profile": 9, "av1.profile": 9, "h265.profile": )" +
                          number + "}"),
                  expected(others[code]));
        EXPECT_EQ(h26x_of(R"({"format": 10, "h264.profile": 9, "h265.profile": 9,
                              "av1.profile": {"uint16": )" +
                          number + "}}"),
                  expected(others[code]));
    }
}

// Returns the leanflow group for these settings of an encoded stream, or "" if there is none.
std::string leanflow_of(const std::string& settings) {
    const std::string groups = groups_of(R"({"format": 1, )" + settings + "}");
    const std::size_t begin = groups.find("\"leanflow\": ");
    return begin == std::string::npos ? "" : groups.substr(begin, groups.find('\n', begin) - begin);
}

TEST(stream_settings, strengths) {
    for (const auto& [code, strength] : {std::pair<std::string, std::string>{"1", "1e+1"},
                                         {"2", "2e+1"},
                                         {"3", "25"},
                                         {"4", "3e+1"},
                                         {"5", "4e+1"},
                                         {"6", "5e+1"},
                                         {"7", "6e+1"},
                                         {"8", "7e+1"},
                                         {"9", "8e+1"},
                                         {"10", "9e+1"},
                                         {"11", "1e+2"},
                                         {"12", "0"},
                                         {"13", "0"},
                                         {"4294967295", "0"}}) {
        EXPECT_EQ(leanflow_of(R"("sqz.strength": )" + code),
                  R"("leanflow": {"fps":0,"fpsmode":"fixed","goplength":0,"gopmode":"fixed",)"
                  R"("skipmode":"drop","strength":)" +
                      strength + "}")
            << code;
    }
}

TEST(stream_settings, a_strength_that_widens) {
    EXPECT_EQ(leanflow_of(R"("sqz.strength": {"uint16": 3})"),
              R"("leanflow": {"fps":0,"fpsmode":"fixed","goplength":0,"gopmode":"fixed",)"
              R"("skipmode":"drop","strength":25})");
}

TEST(stream_settings, no_strength_no_leanflow) {
    const std::string rest = R"("sqz.gop_mode": 1, "sqz.max_gop_length": 5, "sqz.fps_mode": 1)";
    EXPECT_EQ(leanflow_of(rest), "");
    EXPECT_EQ(leanflow_of(R"("sqz.strength": 0, )" + rest), "");
    EXPECT_EQ(leanflow_of(R"("sqz.strength": "3", )" + rest), "");
    EXPECT_EQ(leanflow_of(R"("sqz.strength": {"int64": 3}, )" + rest), "");
}

TEST(stream_settings, words_for_the_leanflow_modes) {
    for (const char* code : {"1", "2", "4294967295"}) {
        const std::string number = code;
        EXPECT_EQ(leanflow_of(R"("sqz.strength": 3, "sqz.gop_mode": )" + number +
                              R"(, "sqz.skip_mode": )" + number + R"(, "sqz.fps_mode": )" + number +
                              R"(, "sqz.max_gop_length": 1000, "sqz.min_fps_num": 10)"),
                  R"("leanflow": {"fps":1e+1,"fpsmode":"dynamic","goplength":1e+3,)"
                  R"("gopmode":"dynamic","skipmode":"empty","strength":25})");
    }
    EXPECT_EQ(leanflow_of(R"("sqz.strength": 3, "sqz.gop_mode": 1)"),
              R"("leanflow": {"fps":0,"fpsmode":"fixed","goplength":0,"gopmode":"dynamic",)"
              R"("skipmode":"drop","strength":25})");
    EXPECT_EQ(leanflow_of(R"("sqz.strength": 3, "sqz.skip_mode": 1)"),
              R"("leanflow": {"fps":0,"fpsmode":"fixed","goplength":0,"gopmode":"fixed",)"
              R"("skipmode":"empty","strength":25})");
    EXPECT_EQ(leanflow_of(R"("sqz.strength": 3, "sqz.fps_mode": 1)"),
              R"("leanflow": {"fps":0,"fpsmode":"dynamic","goplength":0,"gopmode":"fixed",)"
              R"("skipmode":"drop","strength":25})");
}

// Returns the text after the sorted members of the basic group.
std::string source_of(const std::string& info) {
    const std::string groups = groups_of(R"({"format": 3})", info);
    const std::string before = "\"rotation\":0";
    const std::size_t begin = groups.find(before);
    return begin == std::string::npos ? groups : groups.substr(begin + before.size());
}

TEST(stream_settings, the_source_is_the_first_of_input_view_and_warp) {
    for (const auto& [info, member] :
         {std::pair<std::string, std::string>{"{}", "}\n"},
          {R"({"input": 0})", ",\"input\":0}\n"},
          {R"({"view": 2})", ",\"view\":2}\n"},
          {R"({"warp": 3})", ",\"warp\":3}\n"},
          {R"({"input": 1, "view": 2})", ",\"input\":1}\n"},
          {R"({"warp": 3, "view": 2})", ",\"view\":2}\n"},
          {R"({"warp": 3, "view": 2, "input": 1})", ",\"input\":1}\n"},
          {R"({"inputs": 3, "Input": 2})", "}\n"},
          // An integer, unlike the other numbers; 1 if it is not a number.
          {R"({"input": 10})", ",\"input\":10}\n"},
          {R"({"input": 4294967295})", ",\"input\":4294967295}\n"},
          {R"({"input": "two", "view": 5})", ",\"input\":1}\n"},
          {R"({"view": false})", ",\"view\":1}\n"},
          {R"({"warp": -5})", ",\"warp\":1}\n"}}) {
        EXPECT_EQ(source_of(info), member) << info;
    }
}

TEST(stream_settings, a_source_that_widens) {
    EXPECT_EQ(source_of(R"({"input": {"uint16": 1000}})"), ",\"input\":1000}\n");
}

TEST(stream_settings, the_source_is_read_from_the_info_map_alone) {
    EXPECT_EQ(
        groups_of(R"({"format": 3, "input": 4, "view": 5, "warp": 6, "rotation": 90})"),
        R"(                "basic": {"channel":0,"format":"NV12","framerate":0,"resolution":"0x0","rotation":0}
)");
}

TEST(stream_settings, booleans_of_another_kind_count_as_absent) {
    EXPECT_EQ(
        groups_of(R"({"format": 2, "horizontal_flip": 1, "sign": true})"),
        R"(                "basic": {"channel":0,"compression":0,"format":"jpeg","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0}
)");
    EXPECT_EQ(
        groups_of(R"({"format": 4, "horizontal_flip": "true", "sign": 1})"),
        R"(                "basic": {"channel":0,"compression":0,"format":"n/a","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0,"signed":0}
)");
    EXPECT_EQ(
        groups_of(R"({"format": 4, "horizontal_flip": false, "sign": true})",
                  R"({"monochrome": true})"),
        R"(                "basic": {"channel":0,"compression":0,"format":"n/a","framerate":0,"mirror":0,"monochrome":0,"resolution":"0x0","rotation":0,"signed":1}
)");
}

// Expects the text `shown` for this frame rate of a raw stream.
void expect_frame_rate(const std::string& recorded, const std::string& shown) {
    EXPECT_EQ(groups_of(R"({"format": 3, "framerate": )" + recorded + "}"),
              R"(                "basic": {"channel":0,"format":"NV12","framerate":)" + shown +
                  R"(,"resolution":"0x0","rotation":0})" + "\n")
        << recorded;
}

TEST(stream_settings, frame_rates) {
    for (const auto& [rate, text] : {std::pair<std::string, std::string>{"0.0", "0"},
                                     {"-0.0", "0"},
                                     {"1.0", "1"},
                                     {"10.0", "1e+1"},
                                     {"12.0", "12"},
                                     {"25.0", "25"},
                                     {"30.0", "3e+1"},
                                     {"60.0", "6e+1"},
                                     {"120.0", "1.2e+2"},
                                     {"7.5", "7.5"},
                                     {"12.5", "12.5"},
                                     {"29.97", "29.969999999999999"},
                                     {"59.94", "59.939999999999998"},
                                     {"23.976", "23.975999999999999"},
                                     {"0.5", "0.5"},
                                     {"0.1", "0.10000000000000001"},
                                     {"0.2", "0.20000000000000001"},
                                     {"0.001", "0.001"},
                                     {"0.0001", "0.0001"},
                                     {"0.00001", "1.0000000000000001e-5"},
                                     {"0.00012207031250", "0.0001220703125"},
                                     {"0.000030517578125", "3.0517578125e-5"},
                                     {"-2.5", "-2.5"},
                                     {"-10.0", "-1e+1"},
                                     {"1e22", "1e+22"},
                                     {"1e100", "1e+100"},
                                     {"1.5e300", "1.5000000000000001e+300"},
                                     {"12345678901234567e0", "12345678901234568"},
                                     {"123456789012345678e0", "1.2345678901234568e+17"},
                                     {"9007199254740993e0", "9007199254740992"},
                                     {"1.7976931348623157e308", "1.7976931348623157e+308"},
                                     {"2.2250738585072014e-308", "2.2250738585072014e-308"},
                                     {"5e-324", "4.9406564584124654e-324"},
                                     {R"({"double": 29.97})", "29.969999999999999"},
                                     {R"({"double": 30})", "3e+1"},
                                     {R"({"double": "nan"})", "null"},
                                     {R"({"double": "inf"})", "null"},
                                     {R"({"double": "-inf"})", "null"},
                                     // Other kinds.
                                     {"-30", "0"},
                                     {R"({"int64": 30})", "0"},
                                     {"\"30\"", "0"},
                                     {"[30, 1]", "0"},
                                     {"true", "0"}}) {
        expect_frame_rate(rate, text);
    }
}

TEST(stream_settings, a_frame_rate_that_widens) {
    expect_frame_rate("25", "25");
    expect_frame_rate("30", "3e+1");
    expect_frame_rate(R"({"uint16": 50})", "5e+1");
}

TEST(stream_settings, texts_in_a_record) {
    EXPECT_EQ(
        groups_of(R"({"format": 3, "subformat": "\u0001\"\t\\ and a good deal more \u001f é"})"),
        "                \"basic\": {\"channel\":0,\"format\":\"\x01\\\"\\t\\\\ and a good "
        "deal more \x1f é\",\"framerate\":0,\"resolution\":\"0x0\",\"rotation\":0}\n");
}

}  // namespace
