#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "report/json.h"
#include "report/output.h"
#include "serverreport/stream_snapshot.h"
#include "video/native.h"

// The groups. Their members are printed in this order; one without a value is left out. Numbers and
// booleans are doubles, because the readers of the report expect that form. Only the source of the
// picture, the last member, is an integer.
struct stream_basic {
    double channel;
    std::optional<double> compression = {};
    std::string_view format;
    double framerate;
    std::optional<double> mirror = {};
    std::optional<double> monochrome = {};
    std::string_view resolution;
    double rotation;
    std::optional<double> is_signed = {};
    std::optional<std::uint32_t> input = {}, view = {}, warp = {};

    struct glaze {
        using group = stream_basic;
        static constexpr auto value =
            glz::object("channel", &group::channel, "compression", &group::compression,  //
                        "format", &group::format, "framerate", &group::framerate,        //
                        "mirror", &group::mirror, "monochrome", &group::monochrome,      //
                        "resolution", &group::resolution, "rotation", &group::rotation,  //
                        "signed", &group::is_signed,                                     //
                        "input", &group::input, "view", &group::view, "warp", &group::warp);
    };
};

struct stream_encoder {
    double bitrate;
    double goplength;
    std::string_view profile;
    std::string_view rcmode;
    std::string_view rcprio;
};

struct stream_leanflow {
    double fps;
    std::string_view fpsmode;
    double goplength;
    std::string_view gopmode;
    std::string_view skipmode;
    double strength;
};

namespace {

// Returns the word for a code, of which 0 has the first word. Returns `other` for a code without
// one.
const char* word_for(std::uint32_t code, std::span<const char* const> words, const char* other) {
    return code < words.size() ? words[code] : other;
}

constexpr const char* rate_control_modes[] = {"cbr", "vbr", "mbr", "abr"};
constexpr const char* rate_control_priorities[] = {"fps", "quality", "full fps"};
constexpr const char* h264_profiles[] = {"baseline", "main", "high"};
constexpr const char* other_profiles[] = {"main", "main 10bit"};
constexpr const char* fixed[] = {"fixed"};
constexpr const char* drop[] = {"drop"};
// Percent, by code.
constexpr double strengths[] = {0, 10, 20, 25, 30, 40, 50, 60, 70, 80, 90, 100};

bool is_uncompressed(std::uint32_t format) {
    return format == format_code::raw || format == 8 || format == 9;
}

// Returns whether the groups of the encoder are printed. The readers of the report know them for
// these formats only.
bool shows_encoder(std::uint32_t format) {
    return format == format_code::h264 || format == format_code::h265 || format == format_code::av1;
}

stream_basic basic_group(const stream_snapshot_entry& entry, const stream_picture& picture) {
    stream_basic basic{
        .channel = figure_of(entry.settings, "channel"),
        .format = picture.name,
        .framerate = oru_map_get_double(entry.settings, "framerate", 0.0),
        .resolution = picture.resolution,
        .rotation = figure_of(entry.info, "rotation"),
    };
    if (!is_uncompressed(picture.format)) {
        const auto number_of = [&](const char* key) {
            return oru_map_get_boolean(entry.settings, key, FALSE) != FALSE ? 1.0 : 0.0;
        };
        basic.compression = figure_of(entry.settings, "compression");
        basic.mirror = number_of("horizontal_flip");
        basic.monochrome = figure_of(entry.info, "monochrome");
        if (picture.format != format_code::jpeg) {
            basic.is_signed = number_of("sign");
        }
    }
    // The source of the picture: the first of these keys that the map contains.
    for (const auto& [source, member] : {std::pair{"input", &stream_basic::input},
                                         {"view", &stream_basic::view},
                                         {"warp", &stream_basic::warp}}) {
        if (oru_map_contains(entry.info, source) != FALSE) {
            basic.*member = oru_map_get_uint32(entry.info, source, 1);
            break;
        }
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

stream_encoder encoder_group(OruMap* settings, std::uint32_t format) {
    return {
        .bitrate = figure_of(settings, "bitrate"),
        .goplength = figure_of(settings, "gop_length"),
        .profile = profile_of(settings, format),
        .rcmode = word_for(native_map_get_uint(settings, "rc.mode", 0), rate_control_modes, "none"),
        .rcprio =
            word_for(native_map_get_uint(settings, "rc.prio", 0), rate_control_priorities, "none"),
    };
}

stream_leanflow leanflow_group(OruMap* settings, std::uint32_t strength) {
    const auto setting = [&](const char* key) { return oru_map_get_uint32(settings, key, 0); };
    return {
        .fps = figure_of(settings, "sqz.min_fps_num"),
        .fpsmode = word_for(setting("sqz.fps_mode"), fixed, "dynamic"),
        .goplength = figure_of(settings, "sqz.max_gop_length"),
        .gopmode = word_for(setting("sqz.gop_mode"), fixed, "dynamic"),
        .skipmode = word_for(setting("sqz.skip_mode"), drop, "empty"),
        .strength = strength < std::size(strengths) ? strengths[strength] : 0,
    };
}

}  // namespace

void print_stream_settings(const stream_snapshot_entry& entry, std::uint32_t last_id) {
    const stream_picture picture = picture_of(entry);
    const std::uint32_t strength = oru_map_get_uint32(entry.settings, "sqz.strength", 0);

    std::string text;
    if (!write_compact(basic_group(entry, picture), text)) {
        return;
    }
    print("        {\n            \"" + stream_label(entry.id) + "\" : {\n");
    print("                \"basic\": ");
    print(text);
    if (shows_encoder(picture.format) &&
        write_compact(encoder_group(entry.settings, picture.format), text)) {
        print(",\n                \"h26x\": ");
        print(text);
        if (strength != 0 && write_compact(leanflow_group(entry.settings, strength), text)) {
            print(",\n                \"leanflow\": ");
            print(text);
        }
    }
    print("\n            }\n");
    print(entry.id == last_id ? "        }\n" : "        },\n");
}
