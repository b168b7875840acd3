// The strict client has one planted fault at a time. The line of its check reports it. Other lines
// depart only if their checks use what is broken.
//
// The device has 16 maps with 7, 0, 1, 2, 1, 0, 1, 0, 0, 0, 0, 1, 1, 0, 1 and 1 entries: 8 of 32
// bits, 2 booleans, 2 pairs, and one of each other kind. The map that the probe creates has 8
// texts.
#include <algorithm>
#include <cctype>
#include <string>

#include <gtest/gtest.h>

#include "probe/oru_probe.h"
#include "probe/probed_device.h"

namespace {

struct planted_fault {
    const char* name;        // in tests/strict_client/faults.cpp
    const char* departures;  // all lines that depart
};

constexpr planted_fault faults[] = {
    {"a stream held without its list",
     "a stream held without its list: departs: element 1: stream 1, info with, no settings, debug "
     "with; before: stream 1, info with, settings with 'width', debug with (and 1 more)\n"},
    {"an input that does not exist",
     "an input that does not exist: departs: there are inputs 4294967295 and 4294967294\n"},
    {"kind code of 16 bits",
     "oru_map_get_uint32 of another kind: departs: system caps: 'narrow': uint32 7 for other\n"
     "oru_map_get_int64 of another kind: departs: system caps: 'narrow': int64 7 for other\n"
     "oru_map_get_double of another kind: departs: system caps: 'narrow': double 7 for other\n"
     "kind code of 16 bits: departs: system caps: 'narrow': oru_map_get_uint32 gives 7, of the "
     "code 11\n"
     "kind code of 32 bits: departs: system caps: 'narrow': oru_map_get_uint32 gives 7, of the "
     "code 11\n"},
    {"kind code of 32 bits",
     "oru_map_get_uint32 of another kind: departs: system caps: 'wide': uint32 8 for other (and 7 "
     "more)\n"
     "oru_map_get_int64 of another kind: departs: system caps: 'wide': int64 8 for other (and 7 "
     "more)\n"
     "oru_map_get_double of another kind: departs: system caps: 'wide': double 8 for other (and 7 "
     "more)\n"
     "kind code of 16 bits: departs: system caps: 'wide': oru_map_get_uint32 gives 8, of the code "
     "12 (and 7 more)\n"
     "kind code of 32 bits: departs: system caps: 'wide': oru_map_get_uint32 gives 8, of the code "
     "12 (and 7 more)\n"},
    {"look-up in the native map",
     "look-up in the native map: departs: stream debug: absent 'absent': 1 (and 5 more)\n"},
    {"maps of two queries",
     "the service after oru_map_remove: departs: stream limit: 'encoded' is gone\n"
     "maps of two queries: departs: stream limit, changed in another answer: 'absent': none, then "
     "string 'text' (and 1 more)\n"},
    {"nick of an unknown format",
     "nick of an unknown format: departs: format 1 is 'h264' (and 1 more)\n"},
    {"nicks of formats", "nicks of formats: departs: format 0 is 'H264'\n"},
    {"nicks of formats without type",
     "nicks of formats: departs: the type 'gint' is not an enumeration\n"
     "nick of an unknown format: departs: the type 'gint' is not an enumeration\n"},
    {"one of two lists released",
     "one of two lists released: departs: gone, which was: channel 3, info with 'type.id'\n"},
    {"one of two maps released",
     "one of two maps released: departs: stream quota: gone\n"
     "maps of two queries: departs: stream quota, changed in another answer: 'hard': uint32 2, "
     "then none (and 1 more)\n"},
    {"one of two objects released", "one of two objects released: departs: system: gone\n"},
    {"order of native keys",
     "order of native keys: departs: system caps: 'wide' before 'text' (and 13 more)\n"},
    {"oru_channel_get_crop",
     "oru_channel_get_crop: departs: channel 3: an answer, and the error 'planted'\n"},
    {"oru_channel_get_crop, failing",
     "oru_channel_get_crop, failing: departs: channel 4: a failure, but none if the error "
     "argument is NULL\n"},
    {"oru_channel_get_crop_max, failing",
     "oru_channel_get_crop_max, failing: departs: channel 4: no answer, and no error\n"},
    {"oru_channel_get_id", "oru_channel_get_id: departs: two have the id 3\n"},
    {"oru_input_get_resolution_unrotated",
     "oru_input_get_resolution_unrotated: departs: input 1: TRUE, but value 2 of 2 is not set\n"},
    {"oru_input_new, failing",
     "oru_input_new, failing: departs: input 4294967295: an error without a message\n"},
    {"oru_map_contains",
     "oru_map_contains: departs: system caps: FALSE for 'pair', pair 640 and 480 (and 1 more)\n"},
    {"oru_map_empty",
     "oru_map_empty: departs: system caps of 'absent': FALSE with 0 keys (and 24 more)\n"},
    {"oru_map_filter_prefix",
     "oru_map_filter_prefix: departs: system caps of 'fl': 'long': none, then int64 -5 (and 17 "
     "more)\n"},
    {"oru_map_get_boolean",
     "oru_map_get_boolean: departs: system caps: 'flag': boolean false, in the native map boolean "
     "true (and 1 more)\n"},
    {"oru_map_get_boolean of an absent key",
     "oru_map_get_boolean of an absent key: departs: system caps: absent 'absent': boolean false "
     "(and 16 more)\n"},
    {"oru_map_get_boolean of another kind",
     "oru_map_get_boolean of another kind: departs: system caps: 'long': boolean false for int64 "
     "-5 (and 21 more)\n"},
    {"oru_map_get_double",
     "oru_map_get_double: departs: system caps: 'real': double 0.125, in the native map double "
     "1.5\n"},
    {"oru_map_get_double of an absent key",
     "oru_map_get_double of an absent key: departs: system caps: absent 'absent': double 0.125 "
     "(and 16 more)\n"},
    {"oru_map_get_double of another kind",
     "oru_map_get_double of another kind: departs: system caps: 'flag': double 0.125 for boolean "
     "true (and 22 more)\n"},
    {"oru_map_get_int64",
     "oru_map_get_int64: departs: system caps: 'long': int64 -99, in the native map int64 -5\n"},
    {"oru_map_get_int64 of an absent key",
     "oru_map_get_int64 of an absent key: departs: system caps: absent 'absent': int64 -99 (and 16 "
     "more)\n"},
    {"oru_map_get_int64 of another kind",
     "oru_map_get_int64 of another kind: departs: system caps: 'flag': int64 -99 for boolean true "
     "(and 22 more)\n"},
    {"oru_map_get_pair32u",
     "oru_map_get_pair32u: departs: system caps: 'pair': pair 480 and 640, in the native map pair "
     "640 and 480 (and 1 more)\n"},
    {"oru_map_get_pair32u of an absent key",
     "oru_map_get_pair32u of an absent key: departs: system caps: absent 'absent': pair 0 and 3, "
     "and pair 4294967295 and 4294967295 with another default (and 16 more)\n"},
    {"oru_map_get_pair32u of another kind",
     "oru_map_get_pair32u of another kind: departs: system caps: 'flag': pair 0 and 3, and pair "
     "4294967295 and 4294967295 with another default for boolean true (and 21 more)\n"},
    {"oru_map_get_string",
     "oru_map_get_string: departs: system caps: 'text': string '', in the native map string '12' "
     "(and 8 more)\n"},
    {"oru_map_get_string of an absent key",
     "oru_map_get_string of an absent key: departs: system caps: absent 'absent': string '' (and "
     "16 more)\n"},
    {"oru_map_get_string of another kind",
     "oru_map_get_string of another kind: departs: system caps: 'flag': string '' for boolean true "
     "(and 14 more)\n"},
    {"oru_map_get_uint32",
     "oru_map_get_uint32: departs: system caps: 'wide': uint32 99, in the native map uint32 8 (and "
     "7 more)\n"},
    {"oru_map_get_uint32 of an absent key",
     "oru_map_get_uint32 of an absent key: departs: system caps: absent 'absent': uint32 99 (and "
     "16 more)\n"},
    {"oru_map_get_uint32 of another kind",
     "oru_map_get_uint32 of another kind: departs: system caps: 'flag': uint32 99 for boolean true "
     "(and 15 more)\n"},
    {"oru_map_native_ref", "oru_map_native_ref: departs: system caps: NULL (and 16 more)\n"},
    {"oru_map_new",
     "oru_map_new: departs: a new map: 'version': none, then string '1' (and 1 more)\n"},
    {"oru_map_remove",
     "oru_map_remove: departs: system caps without 'flag': 'flag': none, then boolean true (and 14 "
     "more)\n"},
    {"oru_map_remove_prefix",
     "oru_map_remove_prefix: departs: system caps without 'fl': 'flag': none, then boolean true "
     "(and 12 more)\n"},
    {"oru_map_set_string",
     "oru_map_set_string: departs: system caps: 'flag': string 'as it was set', then boolean true "
     "(and 9 more)\n"},
    {"oru_mode_get_info",
     "oru_mode_get_info: departs: an answer, but none if the error argument is NULL\n"},
    {"oru_stream_get_all", "oru_stream_get_all: departs: an element that is NULL\n"},
    {"oru_stream_get_id", "oru_stream_get_id: departs: 1, and then 101 (and 1 more)\n"},
    {"oru_stream_get_limit, failing",
     "oru_stream_get_limit, failing: departs: no answer, and no error\n"},
    {"oru_stream_get_quota", "oru_stream_get_quota: departs: an answer, and the error 'planted'\n"},
    {"the service after oru_map_remove",
     "the service after oru_map_remove: departs: stream quota: 'hard' is gone (and 1 more)\n"},
    {"to_json",
     "to_json: departs: system caps: no JSON at '' of "
     "'{\"flag\":true,\"long\":-5,\"narrow\":7,\"pair\":[640,480],\"real\":1.' (and 16 more)\n"},
    {"to_json of a pair",
     "to_json: departs: system caps: fails: pairs are not supported (and 1 more)\n"},
    {"to_json of two keys", "to_json: departs: stream quota: member 1 is 'soft', the key 'hard'\n"},
};

std::string departures_in(const std::string& text) {
    std::string departures;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = text.find('\n', begin) + 1;
        const std::string line = text.substr(begin, end - begin);
        departures += line.contains(": departs: ") ? line : "";
        begin = end;
    }
    return departures;
}

class probe_faults : public testing::TestWithParam<planted_fault> {};

TEST_P(probe_faults, are_reported_by_their_lines) {
    const std::string fault = std::string("ORU_STRICT_FAULT=") + GetParam().name;
    const result got = probe_device(probed_device, {.environment = {fault}});
    EXPECT_EQ(departures_in(got.out), GetParam().departures);
    EXPECT_EQ(got.status, 1) << got;
    EXPECT_EQ(got.err, "");
}

std::string test_name(const testing::TestParamInfo<planted_fault>& fault) {
    std::string name = fault.param.name;
    std::ranges::replace_if(name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(each, probe_faults, testing::ValuesIn(faults), test_name);

}  // namespace
