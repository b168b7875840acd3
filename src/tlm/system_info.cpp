#include <algorithm>
#include <cstdint>
#include <string>

#include <oru.h>

#include "report/json.h"
#include "report/output.h"
#include "tlm/sections.h"
#include "video/native.h"
#include "video/owned.h"

// The document; its members are written in this order. A table that the service does not report
// stays empty, and its member is written without a value (a glz::raw_json would be written as
// null).
struct SystemInfoReport {
    std::uint32_t inputs = 0;
    glz::text capturemodes;  // JSON: the resolution of each input
    glz::text viewmode;      // JSON: the mode information that is not about capture
};

namespace {

void read_inputs(SystemInfoReport& report) {
    const owned_object<OruMap> channels{oru_channel_get_info(nullptr, nullptr)};
    if (channels == nullptr) {
        return;
    }
    report.inputs = oru_map_get_uint32(channels.get(), "input.count", 1);

    native_table capture_modes;
    // 64 bits, so that the loop ends for the largest count.
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
            capture_modes.assign("input" + std::to_string(number),
                                 std::to_string(width) + 'x' + std::to_string(height));
        }
    }
    report.capturemodes.str = capture_modes.to_json();
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

    const native_map native{info.get()};
    native_table view_mode;
    for (const std::string& key : native.keys()) {
        std::string name = key;
        std::ranges::replace(name, '.', '_');
        view_mode.insert(name, native, key);  // the first of two equal names stays
    }
    report.viewmode.str = view_mode.to_json();
}

}  // namespace

void print_system_info() {
    SystemInfoReport report;
    read_inputs(report);
    read_view_mode(report);

    std::string text;
    text.reserve(512);
    if (write_compact(report, text)) {
        print_line("{}", glz::prettify_json<document_options{}>(text));
    }
}
