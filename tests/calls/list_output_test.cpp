// The calls of the section on the HDMI output.
#include <string>

#include <gtest/gtest.h>

#include "support/calls.h"

namespace {

calls calls_of(const std::string& caps, const std::string& output) {
    return report_calls(R"({"system": {)" + caps + R"(}, "output": {"all": [)" + output + "]}}",
                        {"--list-output"});
}

calls calls_of_output(const std::string& output) {
    return calls_of(R"("caps": {"output": true})", output);
}

const std::string asked_first = R"(g_option_context_new
oru_system_new(&error) -> system
oru_system_get_caps(system, &error) -> system caps
)";
const std::string reads_of_the_state = R"(oru_map_get_boolean(system caps, "output", FALSE)
oru_map_get_boolean(output 0 settings, "enabled", FALSE)
)";

TEST(calls_of_list_output, of_one_that_runs) {
    const calls made =
        calls_of_output(R"({"id": 0, "settings": {"enabled": true}, "info": {"running": true}})");
    EXPECT_EQ(made.queries, asked_first + R"(oru_output_new(NULL, &error) -> output 0
oru_output_get_settings(output 0, &error) -> output 0 settings
oru_output_get_info(output 0, &error) -> output 0 info
g_print("----- HDMI output -----\n\n")
g_print("\n")
release output 0 info
release output 0 settings
release output 0
release system caps
release system
g_option_context_free
)");
    EXPECT_EQ(made.reads, lines_of(reads_of_the_state +
                                   R"(oru_map_get_boolean(output 0 info, "running", FALSE)
oru_map_get_boolean(output 0 info, "vsdb", FALSE)
oru_map_get_uint32(output 0 settings, "VIC", 0)
oru_map_get_uint32(output 0 info, "width", 0)
oru_map_get_uint32(output 0 info, "height", 0)
oru_map_get_double(output 0 info, "framerate", 0)
oru_map_get_string(output 0 info, "aspect.ratio", NULL, "")
)"));
    EXPECT_EQ(made.classes, "");
}

TEST(calls_of_list_output, reads_of_one_that_does_not_run) {
    EXPECT_EQ(calls_of_output(R"({"id": 0, "settings": {}, "info": {}})").reads,
              lines_of(reads_of_the_state));
    EXPECT_EQ(
        calls_of_output(R"({"id": 0, "settings": {"enabled": true}, "info": {}})").reads,
        lines_of(reads_of_the_state + "oru_map_get_boolean(output 0 info, \"running\", FALSE)\n"));
}

TEST(calls_of_list_output, of_a_device_without_output) {
    EXPECT_EQ(report_calls("{}", {"-o"}).queries, R"(g_option_context_new
oru_system_new(&error) -> failed
g_error_free(error of oru_system_new)
g_option_context_free
)");
    EXPECT_EQ(calls_of("", "").queries, R"(g_option_context_new
oru_system_new(&error) -> system
oru_system_get_caps(system, &error) -> failed
release system
g_error_free(error of oru_system_get_caps)
g_option_context_free
)");
    const calls made = calls_of(R"("caps": {})", "");
    EXPECT_EQ(made.queries, asked_first + R"(release system caps
release system
g_option_context_free
)");
    EXPECT_EQ(made.reads, lines_of("oru_map_get_boolean(system caps, \"output\", FALSE)\n"));
}

TEST(calls_of_list_output, of_an_output_that_fails) {
    calls made = calls_of_output("");
    EXPECT_EQ(made.ended.status, 1);
    EXPECT_EQ(made.queries, asked_first + R"(oru_output_new(NULL, &error) -> failed
never released: system
never released: system caps
never released: error of oru_output_new
)");
    made = calls_of_output(R"({"id": 0, "info": {}})");
    EXPECT_EQ(made.ended.status, 1);
    EXPECT_EQ(made.queries, asked_first + R"(oru_output_new(NULL, &error) -> output 0
oru_output_get_settings(output 0, &error) -> failed
never released: system
never released: system caps
never released: output 0
never released: error of oru_output_get_settings
)");
    made = calls_of_output(R"({"id": 0, "settings": {}})");
    EXPECT_EQ(made.ended.status, 1);
    EXPECT_EQ(made.queries, asked_first + R"(oru_output_new(NULL, &error) -> output 0
oru_output_get_settings(output 0, &error) -> output 0 settings
oru_output_get_info(output 0, &error) -> failed
never released: system
never released: system caps
never released: output 0
never released: output 0 settings
never released: error of oru_output_get_info
)");
}

}  // namespace
