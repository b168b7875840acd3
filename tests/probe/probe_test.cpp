#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "probe/oru_probe.h"
#include "probe/probed_device.h"
#include "support/file_size_limit.h"

namespace {

TEST(oru_probe, prints_help_and_version) {
    EXPECT_EQ(oru_probe({"-h"}), ended(0, R"(Usage:
  oru-probe [OPTION…]

Checks the client libraries through which it queries the video service.

Options:
  --version      Show the version
  -h, --help     Show this help

Example:
  ORU_SNAPSHOT=gate4.json oru-probe

Manual: oru-probe(1)
)"));
    EXPECT_EQ(oru_probe({"--version"}), ended(0, "oru-probe " ORU_VERSION "\n"));
}

TEST(oru_probe, rejects_other_arguments) {
    constexpr auto hint = "Try 'oru-probe --help'.\n";
    EXPECT_EQ(oru_probe({"x", "--version"}),
              ended(2, "", std::string("oru-probe: unexpected argument 'x'\n") + hint));
    EXPECT_EQ(oru_probe({"-x"}),
              ended(2, "", std::string("oru-probe: unknown option -x\n") + hint));
    EXPECT_EQ(oru_probe({"--version=1"}),
              ended(2, "", std::string("oru-probe: option --version takes no value\n") + hint));
    for (const std::string& stream : unwritable) {
        EXPECT_EQ(oru_probe({"x"}, {.stderr_to = stream}), ended(2, ""));
    }
}

TEST(oru_probe, prints_a_line_for_each_check) {
    EXPECT_EQ(probe_device(probed_device), ended(0, R"(oru_system_new: ok
oru_system_new, failing: not seen
oru_system_get_caps: ok
oru_system_get_caps, failing: not seen
oru_mode_new: ok
oru_mode_new, failing: not seen
oru_mode_get_info: ok
oru_mode_get_info, failing: not seen
oru_stream_get_debug of the service: ok
oru_stream_get_debug of the service, failing: not seen
oru_stream_get_quota: ok
oru_stream_get_quota, failing: not seen
oru_stream_get_limit: ok
oru_stream_get_limit, failing: not seen
oru_stream_get_all: ok
oru_stream_get_all, failing: not seen
oru_stream_get_info: ok
oru_stream_get_info, failing: not seen
oru_stream_get_settings: ok
oru_stream_get_settings, failing: not seen
oru_stream_get_debug: ok
oru_stream_get_debug, failing: not seen
oru_channel_get_info of all channels: ok
oru_channel_get_info of all channels, failing: not seen
oru_channel_get_all: ok
oru_channel_get_all, failing: not seen
oru_channel_get_filtered: ok
oru_channel_get_filtered, failing: not seen
oru_channel_get_info: ok
oru_channel_get_info, failing: not seen
oru_channel_get_crop: ok
oru_channel_get_crop, failing: ok
oru_channel_get_crop_max: ok
oru_channel_get_crop_max, failing: ok
oru_channel_get_resolutions: ok
oru_channel_get_resolutions, failing: ok
oru_input_new: ok
oru_input_new, failing: ok
oru_input_get_info: ok
oru_input_get_info, failing: not seen
oru_input_get_crop: ok
oru_input_get_crop, failing: not seen
oru_input_get_resolution_unrotated: ok
oru_input_get_resolution_unrotated, failing: not seen
oru_output_new: ok
oru_output_new, failing: not seen
oru_output_get_info: ok
oru_output_get_info, failing: not seen
oru_output_get_settings: not seen
oru_output_get_settings, failing: ok
oru_stream_get_id: ok
oru_channel_get_id: ok
an input that does not exist: ok
one of two objects released: ok
one of two maps released: ok
one of two lists released: ok
a stream held without its list: ok
a channel held without its list: ok
the service after oru_map_remove: ok
the service after oru_map_remove_prefix: ok
oru_map_new: ok
oru_map_set_string: ok
oru_map_contains: ok
oru_map_remove: ok
oru_map_remove_prefix: ok
oru_map_filter_prefix: ok
oru_map_empty: ok
maps of two queries: ok
oru_map_get_uint32: ok
oru_map_get_uint32 of an absent key: ok
oru_map_get_uint32 of another kind: ok: widened from uint16; default for boolean, double, int64, pair, string
oru_map_get_int64: ok
oru_map_get_int64 of an absent key: ok
oru_map_get_int64 of another kind: ok: widened from uint16, uint32; default for boolean, double, pair, string
oru_map_get_double: ok
oru_map_get_double of an absent key: ok
oru_map_get_double of another kind: ok: widened from uint16, uint32; default for boolean, int64, pair, string
oru_map_get_boolean: ok
oru_map_get_boolean of an absent key: ok
oru_map_get_boolean of another kind: ok: default for double, int64, pair, string, uint16, uint32
oru_map_get_string: ok
oru_map_get_string of an absent key: ok
oru_map_get_string of another kind: ok: default for boolean, double, int64, pair, uint16, uint32
oru_map_get_pair32u: ok
oru_map_get_pair32u of an absent key: ok
oru_map_get_pair32u of another kind: ok: default for boolean, double, int64, string, uint16, uint32
oru_map_native_ref: ok
order of native keys: ok
look-up in the native map: ok
kind code of 16 bits: ok
kind code of 32 bits: ok
to_json: ok
nicks of formats: ok
nick of an unknown format: ok
crop.max: see input 1 info: 1280x720
available resolutions: see channel 3: 4 of them, 1920x1080, 1280x720, 640x480, ...
)"));
}

// With empty lists and nothing else, only the map that the probe creates can be checked.
TEST(oru_probe, prints_not_seen_for_checks_without_a_case) {
    EXPECT_EQ(probe_device(R"({"stream": {"all": []}, "channel": {"all": []}, "formats": {}})"),
              ended(0, R"(oru_system_new: not seen
oru_system_new, failing: ok
oru_system_get_caps: not seen
oru_system_get_caps, failing: not seen
oru_mode_new: not seen
oru_mode_new, failing: ok
oru_mode_get_info: not seen
oru_mode_get_info, failing: not seen
oru_stream_get_debug of the service: not seen
oru_stream_get_debug of the service, failing: ok
oru_stream_get_quota: not seen
oru_stream_get_quota, failing: ok
oru_stream_get_limit: not seen
oru_stream_get_limit, failing: ok
oru_stream_get_all: ok
oru_stream_get_all, failing: not seen
oru_stream_get_info: not seen
oru_stream_get_info, failing: not seen
oru_stream_get_settings: not seen
oru_stream_get_settings, failing: not seen
oru_stream_get_debug: not seen
oru_stream_get_debug, failing: not seen
oru_channel_get_info of all channels: not seen
oru_channel_get_info of all channels, failing: ok
oru_channel_get_all: ok
oru_channel_get_all, failing: not seen
oru_channel_get_filtered: ok
oru_channel_get_filtered, failing: not seen
oru_channel_get_info: not seen
oru_channel_get_info, failing: not seen
oru_channel_get_crop: not seen
oru_channel_get_crop, failing: not seen
oru_channel_get_crop_max: not seen
oru_channel_get_crop_max, failing: not seen
oru_channel_get_resolutions: not seen
oru_channel_get_resolutions, failing: not seen
oru_input_new: not seen
oru_input_new, failing: ok
oru_input_get_info: not seen
oru_input_get_info, failing: not seen
oru_input_get_crop: not seen
oru_input_get_crop, failing: not seen
oru_input_get_resolution_unrotated: not seen
oru_input_get_resolution_unrotated, failing: not seen
oru_output_new: not seen
oru_output_new, failing: ok
oru_output_get_info: not seen
oru_output_get_info, failing: not seen
oru_output_get_settings: not seen
oru_output_get_settings, failing: not seen
oru_stream_get_id: not seen
oru_channel_get_id: not seen
an input that does not exist: ok
one of two objects released: not seen
one of two maps released: not seen
one of two lists released: not seen
a stream held without its list: not seen
a channel held without its list: not seen
the service after oru_map_remove: not seen
the service after oru_map_remove_prefix: not seen
oru_map_new: ok
oru_map_set_string: ok
oru_map_contains: ok
oru_map_remove: ok
oru_map_remove_prefix: ok
oru_map_filter_prefix: ok
oru_map_empty: ok
maps of two queries: not seen
oru_map_get_uint32: not seen
oru_map_get_uint32 of an absent key: ok
oru_map_get_uint32 of another kind: ok: default for string
oru_map_get_int64: not seen
oru_map_get_int64 of an absent key: ok
oru_map_get_int64 of another kind: ok: default for string
oru_map_get_double: not seen
oru_map_get_double of an absent key: ok
oru_map_get_double of another kind: ok: default for string
oru_map_get_boolean: not seen
oru_map_get_boolean of an absent key: ok
oru_map_get_boolean of another kind: ok: default for string
oru_map_get_string: ok
oru_map_get_string of an absent key: ok
oru_map_get_string of another kind: not seen
oru_map_get_pair32u: not seen
oru_map_get_pair32u of an absent key: ok
oru_map_get_pair32u of another kind: ok: default for string
oru_map_native_ref: ok
order of native keys: ok
look-up in the native map: ok
kind code of 16 bits: not seen
kind code of 32 bits: not seen
to_json: ok
nicks of formats: not seen
nick of an unknown format: ok
crop.max: not seen
available resolutions: not seen
)"));
}

TEST(oru_probe, fails_if_the_service_answers_nothing) {
    EXPECT_EQ(probe_device(R"({"system": {"$error": "the service\nis down"}})"),
              ended(1, "", "oru-probe: the service\\nis down\n"));
}

TEST(oru_probe, escapes_control_characters) {
    const result got = probe_device(R"({"stream": {"all": []}, "formats": {"RA\u001b[2J\nW": 3}})");
    EXPECT_EQ(got.status, 1);
    EXPECT_TRUE(got.out.contains("nicks of formats: departs: format 3 is 'RA\\x1b[2J\\nW'\n"))
        << got;
}

// g_enum_get_value() finds the first.
TEST(oru_probe, checks_the_first_of_several_nicks_with_one_code) {
    const result got =
        probe_device(R"({"stream": {"all": []}, "formats": {"raw": 3, "RAW": 3, "jpeg": 2}})");
    EXPECT_EQ(got.status, 0);
    EXPECT_TRUE(got.out.contains("\nnicks of formats: ok\n")) << got;
}

// JSON has no form for a number that is not finite.
TEST(oru_probe, accepts_that_a_map_without_json_form_fails_to_convert) {
    const result got = probe_device(R"({"mode": {"info": {"rate": {"double": "nan"}}}})");
    EXPECT_EQ(got.status, 0);
    EXPECT_TRUE(got.out.contains("\nto_json: ok\n")) << got;
}

TEST(oru_probe, accepts_streams_without_an_id_and_an_input_with_the_highest_number) {
    const result got = probe_device(R"({"stream": {"all": [{"id": 0}, {"id": 0}]},
        "channel": {"info": {"input.count": 4294967295}, "all": []},
        "input": {"all": [{"id": 4294967295, "info": {}}]}})");
    EXPECT_EQ(got.status, 0);
    EXPECT_TRUE(got.out.contains("\noru_stream_get_id: ok\n")) << got;
    EXPECT_TRUE(got.out.contains("\nan input that does not exist: ok\n")) << got;
}

TEST(oru_probe, fails_if_standard_output_cannot_be_written) {
    const std::string lost = "oru-probe: cannot write to standard output: ";
    EXPECT_EQ(probe_device(probed_device, {.stdout_to = "/dev/full"}),
              ended(1, "", lost + "No space left on device\n"));
    EXPECT_EQ(probe_device(probed_device, {.stdout_to = closed_stream}),
              ended(1, "", lost + "Bad file descriptor\n"));
    EXPECT_EQ(oru_probe({"--help"}, {.stdout_to = "/dev/full"}),
              ended(1, "", lost + "No space left on device\n"));
    EXPECT_EQ(oru_probe({"--version"}, {.stdout_to = "/dev/full"}),
              ended(1, "", lost + "No space left on device\n"));
    const temp_directory scratch;
    const file_size_limit limit(10);
    EXPECT_EQ(oru_probe({"--version"}, {.stdout_to = scratch.path() + "/out"}),
              ended(1, "", lost + "File too large\n"));
}

}  // namespace
