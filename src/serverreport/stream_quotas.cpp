#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <oru.h>

#include "applet/fatal.h"
#include "report/json.h"
#include "report/output.h"
#include "serverreport/sections.h"
#include "serverreport/stream_snapshot.h"
#include "video/native.h"
#include "video/owned.h"

namespace {

struct quota_member {
    const char* name;  // in the report
    const char* key;   // in the map
};

bool is_encoded(OruStream* stream) {
    const owned_object<OruMap> settings{oru_stream_get_settings(stream, nullptr)};
    if (settings == nullptr) {
        return false;
    }
    switch (oru_map_get_uint32(settings.get(), "format", format_code::none)) {
        case format_code::h264:
        case format_code::h265:
        case format_code::jpeg:
        case format_code::av1:
        case 11:
            return true;
        default:
            return false;
    }
}

owned_object<OruMap> debug_of(const GList* link) {
    owned_error error;
    return owned_object<OruMap>{
        oru_stream_get_debug(object_in<OruStream>(link), std::out_ptr(error))};
}

// Returns a stream's debug map, which contains the service-wide figures in use: that of the first
// encoded stream, or that of the first stream if none is encoded or the query fails. Returns NULL
// if there is no stream or the last query fails.
owned_object<OruMap> figures_in_use() {
    owned_error error;
    const owned_object_list streams{oru_stream_get_all(std::out_ptr(error))};
    if (error != nullptr || streams == nullptr) {
        return nullptr;
    }
    for (const GList* link = streams.get(); link != nullptr; link = link->next) {
        if (is_encoded(object_in<OruStream>(link))) {
            if (auto debug = debug_of(link)) {
                return debug;
            }
            break;
        }
    }
    return debug_of(streams.get());
}

// Prints the line of one array's object. Returns false and prints nothing if it cannot be written
// as JSON.
bool print_object(OruMap* map, std::initializer_list<quota_member> members) {
    std::map<std::string_view, std::string> object;
    for (const auto& [name, key] : members) {
        object[name] = std::to_string(oru_map_get_uint32(map, key, 0));
    }
    std::string text;
    if (!write_compact(object, text)) {
        return false;
    }
    print("        ");
    print_line(text);
    return true;
}

}  // namespace

void print_stream_quotas() {
    owned_error quota_error;
    const owned_object<OruMap> quota{oru_stream_get_quota(std::out_ptr(quota_error))};
    if (quota_error != nullptr || quota == nullptr) {
        serverreport_fatal("Failed to get quota: {}", quota_error.get());
    }
    owned_error limit_error;
    const owned_object<OruMap> limit{oru_stream_get_limit(std::out_ptr(limit_error))};
    if (limit_error != nullptr || limit == nullptr) {
        serverreport_fatal("Failed to get limit: {}", limit_error.get());
    }
    const owned_object<OruMap> debug = figures_in_use();

    print_section_header("Stream Quotas and Limits");
    print("{\n");
    print("    \"streammaximumquota\" : [\n");
    if (!print_object(quota.get(), {{"hard", "global.hard.limit"},
                                    {"soft", "global.soft.limit"},
                                    {"buffering", "global.buffering.limit"}})) {
        return;
    }
    print("    ],\n");
    print("\n");
    if (debug != nullptr) {
        print("    \"streamcurrentquota\" : [\n");
        if (!print_object(debug.get(),
                          {{"hard", "global.capacity"}, {"soft", "global.capacity"}})) {
            return;
        }
        print("    ],\n");
        print("\n");
    }
    print("    \"streammaximumlimits\" : [\n");
    if (!print_object(limit.get(), {{"encode", "global.max.streams.limit.encoded"},
                                    {"other", "global.max.streams.limit.encoded"}})) {
        return;
    }
    if (debug != nullptr) {
        print("    ],\n");
        print("\n");
        print("    \"streamcurrentlimits\" : [\n");
        if (!print_object(debug.get(), {{"motion encoded", "global.encoded.peers"},
                                        {"jpeg", "global.encoded.jpeg.peers"},
                                        {"other", "global.raw.peers"}})) {
            return;
        }
    }
    print("    ]\n");
    print("}\n");
    print_section_end();
}
