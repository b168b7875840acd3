#include <cstdint>
#include <memory>
#include <vector>

#include <oru.h>

#include "applet/fatal.h"
#include "report/output.h"
#include "serverreport/sections.h"
#include "serverreport/stream_snapshot.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

// Returns the maps of every stream that this process has reported. Nobody reads or destroys the
// list. It makes the maps, which are never released, reachable for a leak checker.
std::vector<OruMap*>& reported_maps() {
    static auto& maps = *new std::vector<OruMap*>;
    return maps;
}

// Appends the stream to `entries` unless the section leaves it out.
void add_stream(OruStream* stream, std::vector<stream_snapshot_entry>& entries) {
    const std::uint32_t id = oru_stream_get_id(stream);
    if (id == 0) {
        return;
    }
    owned_object<OruMap> info{oru_stream_get_info(stream, nullptr)};
    if (info == nullptr) {
        return;
    }
    owned_object<OruMap> debug{oru_stream_get_debug(stream, nullptr)};
    if (debug == nullptr) {
        return;
    }
    owned_object<OruMap> settings{oru_stream_get_settings(stream, nullptr)};
    if (settings == nullptr) {
        return;
    }
    if (oru_map_get_uint32(settings.get(), "format", format_code::none) ==
        format_code::unreported) {
        return;
    }
    if (g_strcmp0(oru_map_get_string(settings.get(), "subformat", nullptr, nullptr), "leanflow") ==
        0) {
        return;
    }
    // The maps exist until the process ends: to release each of them would only take time.
    auto& entry = entries.emplace_back();
    auto& maps = reported_maps();
    maps.insert(maps.end(),
                {info.get(), settings.get(), debug.get()});  // the last step that throws
    entry = {
        .id = id, .info = info.release(), .settings = settings.release(), .debug = debug.release()};
}

}  // namespace

void list_streams() {
    owned_error error;
    std::vector<stream_snapshot_entry> entries;
    const owned_object_list streams{oru_stream_get_all(std::out_ptr(error))};
    if (error != nullptr) {
        serverreport_fatal("Failed to get all streams: {}", error.get());
    }
    for (const GList* link = streams.get(); link != nullptr; link = link->next) {
        add_stream(object_in<OruStream>(link), entries);
    }
    const std::uint32_t last_id = entries.empty() ? 0 : entries.back().id;

    print_section_header("Snapshot of all running streams");
    print("{\n");
    print("    \"streams\" : [\n");
    for (const auto& entry : entries) {
        print_stream_summary(entry, last_id);
    }
    print("    ],\n");
    print("\n");
    print("    \"streaminfo\" : [\n");
    for (const auto& entry : entries) {
        print_stream_settings(entry, last_id);
    }
    print("    ],\n");
    print("\n");
    print("    \"streamstatistics\" : [\n");
    for (const auto& entry : entries) {
        print_stream_statistics(entry, last_id);
    }
    print("    ]\n");
    print("}\n");
    print_section_end();
}
