// The HDMI output.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

// Returns the report on a device that has an output with these maps.
result output_of(const std::string& settings, const std::string& info) {
    return report(R"({"system": {"caps": {"output": true}},
                      "output": {"all": [{"id": 0, "settings": )" +
                      settings + R"(, "info": )" + info + "}]}}",
                  {"--list-output"});
}

std::string section_of(const std::string& object) {
    return "----- HDMI output -----\n\n    " + object + "\n\n";
}

TEST(list_output, a_running_output) {
    EXPECT_EQ(output_of(R"({"enabled": true, "VIC": 16})",
                        R"({"running": true, "vsdb": true, "width": 1920, "height": 1080,
                            "framerate": 60.0, "aspect.ratio": "16:9"})"),
              ended(0, section_of(R"({"aspect ratio":"16:9","current VIC":"16","enabled":"Yes",)"
                                  R"("framerate":"60.000000","height":"1080","running":"Yes",)"
                                  R"("vsdb":"HDMI","width":"1920"})")));
}

TEST(list_output, a_running_output_without_other_values) {
    EXPECT_EQ(output_of(R"({"enabled": true})", R"({"running": true})"),
              ended(0, section_of(R"({"aspect ratio":"","current VIC":"0","enabled":"Yes",)"
                                  R"("framerate":"0.000000","height":"0","running":"Yes",)"
                                  R"("vsdb":"DVI","width":"0"})")));
}

TEST(list_output, values_of_another_kind_count_as_absent) {
    EXPECT_EQ(output_of(R"({"enabled": true, "VIC": "16"})",
                        R"({"running": true, "vsdb": 1, "width": -1, "height": 1080.0,
                            "framerate": "60", "aspect.ratio": 169})"),
              ended(0, section_of(R"({"aspect ratio":"","current VIC":"0","enabled":"Yes",)"
                                  R"("framerate":"0.000000","height":"0","running":"Yes",)"
                                  R"("vsdb":"DVI","width":"0"})")));
}

TEST(list_output, a_disabled_output) {
    for (const char* settings : {"{}", R"({"enabled": false})", R"({"enabled": 1})",
                                 R"({"enabled": "true", "VIC": 16})"}) {
        EXPECT_EQ(output_of(settings, R"({"running": true, "width": 1920, "enabled": true})"),
                  ended(0, section_of(R"({"enabled":"No"})")))
            << settings;
    }
}

TEST(list_output, an_enabled_output_that_is_not_running) {
    for (const char* info :
         {"{}", R"({"running": false, "vsdb": true, "width": 1920})", R"({"running": 1})"}) {
        EXPECT_EQ(output_of(R"({"enabled": true, "VIC": 16, "running": true})", info),
                  ended(0, section_of(R"({"enabled":"Yes","running":"No"})")))
            << info;
    }
}

TEST(list_output, each_value_is_read_from_its_map) {
    EXPECT_EQ(output_of(R"({"enabled": true, "VIC": 1000, "vsdb": true, "width": 7, "height": 7,
                            "framerate": 7.0, "aspect.ratio": "7"})",
                        R"({"running": true, "VIC": 7})"),
              ended(0, section_of(R"({"aspect ratio":"","current VIC":"1000","enabled":"Yes",)"
                                  R"("framerate":"0.000000","height":"0","running":"Yes",)"
                                  R"("vsdb":"DVI","width":"0"})")));
}

// Expects the text `shown` for this frame rate of a running output.
void expect_frame_rate(const std::string& rate, const std::string& shown) {
    EXPECT_EQ(
        output_of(R"({"enabled": true})", R"({"running": true, "framerate": )" + rate + "}"),
        ended(0, section_of(R"({"aspect ratio":"","current VIC":"0","enabled":"Yes",)"
                            R"("framerate":")" +
                            shown + R"(","height":"0","running":"Yes","vsdb":"DVI","width":"0"})")))
        << rate;
}

TEST(list_output, frame_rates_have_six_decimals) {
    expect_frame_rate("30.0", "30.000000");
    expect_frame_rate("29.97", "29.970000");
    expect_frame_rate("59.9400599400599", "59.940060");
    expect_frame_rate("0.0000004", "0.000000");
    expect_frame_rate("-1.5", "-1.500000");
    expect_frame_rate("1e22", "10000000000000000000000.000000");
    expect_frame_rate(R"({"int64": 50})", "0.000000");
}

TEST(list_output, frame_rates_at_the_ends_of_their_range) {
    const std::string largest =
        "179769313486231570814527423731704356798070567525844996598917476803157260780028"
        "538760589558632766878171540458953514382464234321326889464182768467546703537516"
        "986049910576551282076245490090389328944075868508455133942304583236903222948165"
        "808559332123348274797826204144723168738177180919299881250404026184124858368";
    expect_frame_rate("1.7976931348623157e308", largest + ".000000");
    expect_frame_rate("-1.7976931348623157e308", '-' + largest + ".000000");
    expect_frame_rate("-5e-324", "-0.000000");
    expect_frame_rate(R"({"double": "nan"})", "nan");
    expect_frame_rate(R"({"double": "-nan"})", "-nan");
    expect_frame_rate(R"({"double": "inf"})", "inf");
    expect_frame_rate(R"({"double": "-inf"})", "-inf");
}

TEST(list_output, a_frame_rate_that_widens) {
    expect_frame_rate("25", "25.000000");
    expect_frame_rate(R"({"uint16": 50})", "50.000000");
}

TEST(list_output, an_aspect_ratio_is_any_text) {
    EXPECT_EQ(output_of(R"({"enabled": true})",
                        R"({"running": true, "aspect.ratio": "4:3 \"wide\"\t\u0001 é \\"})"),
              ended(0, section_of("{\"aspect ratio\":\"4:3 \\\"wide\\\"\\t\x01 é \\\\\","
                                  "\"current VIC\":\"0\",\"enabled\":\"Yes\","
                                  "\"framerate\":\"0.000000\",\"height\":\"0\","
                                  "\"running\":\"Yes\",\"vsdb\":\"DVI\",\"width\":\"0\"}")));
}

TEST(list_output, a_device_without_output_prints_nothing) {
    const std::string output =
        R"("output": {"all": [{"id": 0, "settings": {"enabled": true}, "info": {}}]}})";
    for (const char* system :
         {"", R"("system": {},)", R"("system": {"$error": "no system"},)",
          R"("system": {"caps": {"$error": "no caps"}},)", R"("system": {"caps": {}},)",
          R"("system": {"caps": {"output": false}},)", R"("system": {"caps": {"output": 1}},)",
          R"("system": {"caps": {"output": "true"}},)"}) {
        EXPECT_EQ(report(std::string("{") + system + output, {"-o"}), ended(0, "")) << system;
    }
    // The output is not queried then.
    EXPECT_EQ(report(R"({"system": {"caps": {}},
                         "output": {"all": [{"id": 0, "$error": "no output"}]}})",
                     {"-o"}),
              ended(0, ""));
}

TEST(list_output, an_output_that_does_not_answer_is_fatal) {
    const auto snapshot = [](const std::string& output) {
        return R"({"system": {"caps": {"output": true}}, "output": {"all": [)" + output + "]}}";
    };
    EXPECT_EQ(report(snapshot(R"({"id": 0, "$error": "cable é"})"), {"-o"}),
              ended(1, "", "oru-serverreport-tool: Failed to get output: cable é\n"));
    EXPECT_EQ(report(snapshot(R"({"id": 0, "settings": {"$error": "no settings"},
                                  "info": {"$error": "no info"}})"),
                     {"-o"}),
              ended(1, "", "oru-serverreport-tool: Failed to get output settings: no settings\n"));
    // The info map is queried even if the output is disabled.
    EXPECT_EQ(
        report(snapshot(R"({"id": 0, "settings": {}, "info": {"$error": "no info"}})"), {"-o"}),
        ended(1, "", "oru-serverreport-tool: Failed to get output info: no info\n"));
    for (const auto& [output, line] :
         {std::pair<std::string, std::string>{"", "oru-serverreport-tool: Failed to get output: "},
          {R"({"id": 1, "settings": {}, "info": {}})",
           "oru-serverreport-tool: Failed to get output: "},
          {R"({"id": 0, "info": {}})", "oru-serverreport-tool: Failed to get output settings: "},
          {R"({"id": 0, "settings": {}})", "oru-serverreport-tool: Failed to get output info: "}}) {
        const result got = report(snapshot(output), {"-o"});
        EXPECT_EQ(got.status, 1) << output;
        EXPECT_EQ(got.out, "") << output;
        EXPECT_TRUE(got.err.starts_with(line)) << got;
        EXPECT_TRUE(got.err.ends_with("\n")) << got;
    }
}

}  // namespace
