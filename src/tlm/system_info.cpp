#include "tlm/system_info.h"

#include <algorithm>
#include <cstdint>
#include <format>
#include <map>
#include <string>

#include <oru.h>
#include <qwire.h>

#include "report/json.h"
#include "report/map_format.h"
#include "report/output.h"
#include "video/owned.h"

// The document, members in the order in which they are written. A table that could not be had stays
// empty, and its member is then written without a value (raw_json would become null).
struct SystemInfoReport {
    std::uint32_t inputs = 0;
    glz::text capturemodes;  // from input name to resolution, as JSON
    glz::text viewmode;      // the mode information that is not about capture, as JSON
};

namespace {

// The table as JSON. It is handed over in the order of its names: a native map puts each further
// entry at its end then, which takes no time to speak of however many there are.
template <class Held>
std::string as_json(const std::map<std::string, Held>& table) {
    qw::map native;
    for (const auto& [name, held] : table) {
        native.insert(name, qw::value(held));
    }
    return std::format("{}", native);
}

void read_inputs(SystemInfoReport& report) {
    const owned_object<OruMap> channels{oru_channel_get_info(nullptr, nullptr)};
    if (channels == nullptr) {
        return;
    }
    report.inputs = oru_map_get_uint32(channels.get(), "input.count", 1);

    std::map<std::string, std::string> capture_modes;
    // 64 bits, so that the walk ends for the largest count as well.
    for (std::uint64_t number = 1; number <= report.inputs; ++number) {
        const owned_object<OruInput> input{
            oru_input_new(static_cast<std::uint32_t>(number), nullptr)};
        if (input == nullptr) {
            continue;
        }
        guint32 width = 0;
        guint32 height = 0;
        if (oru_input_get_resolution_unrotated(input.get(), "capture", &width, &height, nullptr) !=
            FALSE) {
            capture_modes[std::format("input{}", number)] = std::format("{}x{}", width, height);
        }
    }
    report.capturemodes.str = as_json(capture_modes);
}

void read_view_mode(SystemInfoReport& report) {
    const owned_object<OruMode> mode{oru_mode_new(nullptr)};
    if (mode == nullptr) {
        return;
    }
    const owned_object<OruMap> info{oru_mode_get_info(mode.get(), nullptr)};
    if (info == nullptr) {
        return;
    }
    oru_map_remove(info.get(), "view");
    oru_map_remove_prefix(info.get(), "capture");
    oru_map_remove_prefix(info.get(), "available");

    std::map<std::string, qw::value> view_mode;
    for (const auto& [key, value] : *oru_map_native_ref(info.get())) {
        std::string name{key};
        std::ranges::replace(name, '.', '_');
        view_mode.emplace(name, value);  // of two keys that become one, the first stays
    }
    report.viewmode.str = as_json(view_mode);
}

}  // namespace

void print_system_info() {
    SystemInfoReport report;
    read_inputs(report);
    read_view_mode(report);

    std::string text;
    text.reserve(512);
    if (!write_compact(report, text)) {
        return;
    }
    print_line("{}", glz::prettify_json<document_options{}>(text));
}
