#include "serverreport/list_streams.h"

#include <cstdint>
#include <memory>
#include <vector>

#include <oru.h>

#include "applet/fatal.h"
#include "report/output.h"
#include "serverreport/stream_settings.h"
#include "serverreport/stream_snapshot.h"
#include "serverreport/stream_statistics.h"
#include "serverreport/stream_summary.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

// Never part of its caller: what it keeps is told from what is lost by its name.
[[gnu::noinline]] void keep_stream(OruStream* stream, std::vector<stream_snapshot_entry>& kept) {
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
    // The maps stay until the process ends, whatever sections follow: a report is over in a
    // moment, and giving them back one by one would only take time.
    auto& entry = kept.emplace_back();
    entry.id = id;
    entry.info = info.release();
    entry.settings = settings.release();
    entry.debug = debug.release();
}

}  // namespace

void list_streams() {
    owned_error error;
    std::vector<stream_snapshot_entry> kept;
    const owned_object_list streams{oru_stream_get_all(std::out_ptr(error))};
    if (error != nullptr) {
        serverreport_fatal("Failed to get all streams: {}", error.get());
    }
    for (const GList* link = streams.get(); link != nullptr; link = link->next) {
        keep_stream(object_in<OruStream>(link), kept);
    }
    const std::uint32_t last_id = kept.empty() ? 0 : kept.back().id;

    print_section_header("Snapshot of all running streams");
    print("{\n");
    print("    \"streams\" : [\n");
    for (const auto& entry : kept) {
        print_stream_summary(entry, last_id);
    }
    print("    ],\n");
    print("\n");
    print("    \"streaminfo\" : [\n");
    for (const auto& entry : kept) {
        print_stream_settings(entry, last_id);
    }
    print("    ],\n");
    print("\n");
    print("    \"streamstatistics\" : [\n");
    for (const auto& entry : kept) {
        print_stream_statistics(entry, last_id);
    }
    print("    ]\n");
    print("}\n");
    print_section_end();
}
