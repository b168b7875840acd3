#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <oru.h>

#include "applet/fatal.h"
#include "report/json.h"
#include "report/output.h"
#include "serverreport/sections.h"
#include "video/owned.h"

namespace {

// Returns what printf's "%f" prints in the C locale.
std::string six_decimals(double value) {
    if (std::isnan(value)) {
        return std::signbit(value) ? "-nan" : "nan";  // C++ libraries write it differently
    }
    char text[std::numeric_limits<double>::max_exponent10 + 10];
    char* const end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr;
    return {text, end};
}

std::map<std::string_view, std::string> output_state(OruMap* settings, OruMap* info) {
    std::map<std::string_view, std::string> state;
    if (oru_map_get_boolean(settings, "enabled", FALSE) == FALSE) {
        state["enabled"] = "No";
        return state;
    }
    state["enabled"] = "Yes";
    if (oru_map_get_boolean(info, "running", FALSE) == FALSE) {
        state["running"] = "No";
        return state;
    }
    state["running"] = "Yes";
    state["vsdb"] = oru_map_get_boolean(info, "vsdb", FALSE) != FALSE ? "HDMI" : "DVI";
    state["current VIC"] = std::to_string(oru_map_get_uint32(settings, "VIC", 0));
    state["width"] = std::to_string(oru_map_get_uint32(info, "width", 0));
    state["height"] = std::to_string(oru_map_get_uint32(info, "height", 0));
    state["framerate"] = six_decimals(oru_map_get_double(info, "framerate", 0.0));
    state["aspect ratio"] = oru_map_get_string(info, "aspect.ratio", nullptr, "");
    return state;
}

}  // namespace

void list_output() {
    owned_error error;
    const owned_object<OruSystem> system{oru_system_new(std::out_ptr(error))};
    if (system == nullptr) {
        return;
    }
    const owned_object<OruMap> caps{oru_system_get_caps(system.get(), std::out_ptr(error))};
    if (caps == nullptr || oru_map_get_boolean(caps.get(), "output", FALSE) == FALSE) {
        return;
    }
    const owned_object<OruOutput> output{oru_output_new(0, std::out_ptr(error))};
    if (error != nullptr || output == nullptr) {
        serverreport_fatal("Failed to get output: {}", error.get());
    }
    const owned_object<OruMap> settings{oru_output_get_settings(output.get(), std::out_ptr(error))};
    if (error != nullptr || settings == nullptr) {
        serverreport_fatal("Failed to get output settings: {}", error.get());
    }
    const owned_object<OruMap> info{oru_output_get_info(output.get(), std::out_ptr(error))};
    if (error != nullptr || info == nullptr) {
        serverreport_fatal("Failed to get output info: {}", error.get());
    }

    print_section_header("HDMI output");
    std::string text;
    if (!write_compact(output_state(settings.get(), info.get()), text)) {
        return;
    }
    print("    ");
    print_line(text);
    print_section_end();
}
