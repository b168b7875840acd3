#include "serverreport/stream_settings.h"

#include <cstddef>
#include <map>
#include <span>
#include <string>

#include "report/json.h"
#include "report/output.h"
#include "video/native.h"

namespace {

// The service's codes in words, from 0 on; every further code is `other`.
const char* word_for(std::uint32_t code, std::span<const char* const> words, const char* other) {
    return code < words.size() ? words[code] : other;
}

constexpr const char* rate_control_modes[] = {"cbr", "vbr", "mbr", "abr"};
constexpr const char* rate_control_priorities[] = {"fps", "quality", "full fps"};
constexpr const char* h264_profiles[] = {"baseline", "main", "high"};
constexpr const char* other_profiles[] = {"main", "main 10bit"};
constexpr const char* fixed[] = {"fixed"};
constexpr const char* drop[] = {"drop"};
// Percent; the steps are smaller between 20 and 30.
constexpr std::uint32_t strengths[] = {0, 10, 20, 25, 30, 40, 50, 60, 70, 80, 90, 100};

bool is_uncompressed(std::uint32_t format) {
    return format == format_code::raw || format == 8 || format == 9;
}

// Whether the encoder's groups are printed: of the formats with an encoder, only these have groups
// that the report's readers know.
bool shows_encoder(std::uint32_t format) {
    return format == format_code::h264 || format == format_code::h265 || format == format_code::av1;
}

json basic_group(const stream_snapshot_entry& entry, const stream_picture& picture) {
    json basic;
    basic["channel"] = oru_map_get_uint32(entry.settings, "channel", 0);
    basic["resolution"] = picture.resolution;
    basic["format"] = picture.name;
    basic["framerate"] = oru_map_get_double(entry.settings, "framerate", 0.0);
    basic["rotation"] = oru_map_get_uint32(entry.info, "rotation", 0);
    if (is_uncompressed(picture.format)) {
        return basic;
    }
    // The two switches are numbers here, as all figures of the group are.
    const auto number_of = [&](const char* key) {
        return oru_map_get_boolean(entry.settings, key, FALSE) != FALSE ? 1.0 : 0.0;
    };
    basic["compression"] = oru_map_get_uint32(entry.settings, "compression", 0);
    basic["mirror"] = number_of("horizontal_flip");
    basic["monochrome"] = oru_map_get_uint32(entry.info, "monochrome", 0);
    if (picture.format != format_code::jpeg) {
        basic["signed"] = number_of("sign");
    }
    return basic;
}

const char* profile_of(OruMap* settings, std::uint32_t format) {
    switch (format) {
        case format_code::h264:
            return word_for(native_map_get_uint(settings, "h264.profile", 0), h264_profiles,
                            "none");
        case format_code::h265:
            return word_for(native_map_get_uint(settings, "h265.profile", 0), other_profiles,
                            "none");
        default:
            return word_for(native_map_get_uint(settings, "av1.profile", 0), other_profiles,
                            "none");
    }
}

json encoder_group(OruMap* settings, std::uint32_t format) {
    json encoder;
    encoder["rcmode"] =
        word_for(native_map_get_uint(settings, "rc.mode", 0), rate_control_modes, "none");
    encoder["rcprio"] =
        word_for(native_map_get_uint(settings, "rc.prio", 0), rate_control_priorities, "none");
    encoder["profile"] = profile_of(settings, format);
    encoder["goplength"] = oru_map_get_uint32(settings, "gop_length", 0);
    encoder["bitrate"] = oru_map_get_uint32(settings, "bitrate", 0);
    return encoder;
}

json leanflow_group(OruMap* settings, std::uint32_t strength) {
    const auto setting = [&](const char* key) { return oru_map_get_uint32(settings, key, 0); };

    json leanflow;
    leanflow["strength"] = strength < std::size(strengths) ? strengths[strength] : 0;
    leanflow["gopmode"] = word_for(setting("sqz.gop_mode"), fixed, "dynamic");
    leanflow["goplength"] = setting("sqz.max_gop_length");
    leanflow["skipmode"] = word_for(setting("sqz.skip_mode"), drop, "empty");
    leanflow["fpsmode"] = word_for(setting("sqz.fps_mode"), fixed, "dynamic");
    leanflow["fps"] = setting("sqz.min_fps_num");
    return leanflow;
}

// Where the stream's picture comes from: the first of these that the service names.
std::map<std::string, std::uint32_t> source_of(OruMap* info) {
    for (const char* source : {"input", "view", "warp"}) {
        if (oru_map_contains(info, source) != FALSE) {
            return {{source, oru_map_get_uint32(info, source, 1)}};
        }
    }
    return {};
}

}  // namespace

void print_stream_settings(const stream_snapshot_entry& entry, std::uint32_t last_id) {
    const stream_picture picture = picture_of(entry);
    const json basic = basic_group(entry, picture);
    const auto source = source_of(entry.info);
    const std::uint32_t strength = oru_map_get_uint32(entry.settings, "sqz.strength", 0);

    std::string text;
    if (!write_compact(merged(basic, source), text)) {
        return;
    }
    print("        {\n");
    print("            \"");
    print(stream_label(entry.id));
    print("\" : {\n");
    print("                \"basic\": ");
    print(text);
    if (shows_encoder(picture.format) &&
        write_compact(encoder_group(entry.settings, picture.format), text)) {
        print(",\n");
        print("                \"h26x\": ");
        print(text);
        if (strength != 0 && write_compact(leanflow_group(entry.settings, strength), text)) {
            print(",\n");
            print("                \"leanflow\": ");
            print(text);
        }
    }
    print("\n            }");
    print(entry.id == last_id ? "\n        }" : "\n        },");
    print("\n");
}
