#include <string>

#include <gtest/gtest.h>

#include "probe/probed_device.h"
#include "snapshot_tool/oru_snapshot.h"

namespace {

result probe(std::string_view snapshot, const command& streams = {}) {
    return oru_snapshot_beside(snapshot, {"probe"}, streams);
}

TEST(probe, tells_of_every_check_in_a_line) {
    EXPECT_EQ(probe(probed_device), ended(0, R"(oru_system_new: ok
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

// Lists that are empty, and nothing else: a map of the probe's own is all that can be tried.
TEST(probe, says_what_it_could_not_try) {
    EXPECT_EQ(probe(R"({"stream": {"all": []}, "channel": {"all": []}, "formats": {}})"),
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

TEST(probe, fails_when_nothing_is_answered) {
    EXPECT_EQ(probe(R"({"system": {"$error": "the service is down"}})"),
              ended(1, "", "oru-snapshot: the service is down\n"));
}

// A name is told in one line and does nothing to a terminal.
TEST(probe, writes_out_what_a_terminal_would_obey) {
    const result got = probe(R"({"stream": {"all": []}, "formats": {"RA\u001b[2J\nW": 3}})");
    EXPECT_EQ(got.status, 1);
    EXPECT_TRUE(got.out.contains("nicks of formats: departs: format 3 is 'RA\\x1b[2J\\nW'\n"))
        << got;
}

// A number that is not finite has no JSON, whatever library writes it.
TEST(probe, takes_no_failure_to_write_json_for_a_fault_where_there_is_no_form) {
    const result got = probe(R"({"mode": {"info": {"rate": {"double": "nan"}}}})");
    EXPECT_EQ(got.status, 0);
    EXPECT_TRUE(got.out.contains("\nto_json: ok\n")) << got;
}

// Two streams may have no id yet; an input of any number may be there.
TEST(probe, takes_what_is_allowed_for_no_fault) {
    const result got = probe(R"({"stream": {"all": [{"id": 0}, {"id": 0}]},
        "channel": {"info": {"input.count": 4294967295}, "all": []},
        "input": {"all": [{"id": 4294967295, "info": {}}]}})");
    EXPECT_EQ(got.status, 0);
    EXPECT_TRUE(got.out.contains("\noru_stream_get_id: ok\n")) << got;
    EXPECT_TRUE(got.out.contains("\nan input that does not exist: ok\n")) << got;
}

TEST(probe, says_when_its_output_is_lost) {
    const std::string lost = "oru-snapshot: cannot write to standard output: ";
    EXPECT_EQ(probe(probed_device, {.stdout_to = "/dev/full"}),
              ended(1, "", lost + "No space left on device\n"));
    EXPECT_EQ(probe(probed_device, {.stdout_to = closed_stream}),
              ended(1, "", lost + "Bad file descriptor\n"));
}

}  // namespace
