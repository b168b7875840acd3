#include <cstdint>
#include <cstring>
#include <string>

#include <oru.h>

#include "report/json.h"
#include "report/output.h"
#include "tlm/sections.h"
#include "video/native.h"
#include "video/owned.h"

void print_identity_info() {
    static constexpr char prefix[] = "identity.";

    const owned_object<OruMap> debug{oru_stream_get_debug(nullptr, nullptr)};
    if (debug == nullptr) {
        return;
    }
    const owned_object<OruMap> counters{oru_map_filter_prefix(debug.get(), prefix)};
    if (counters == nullptr || oru_map_empty(counters.get()) != FALSE) {
        return;
    }

    json identities;
    for (const std::string& key : native_map(counters.get()).keys()) {
        const std::uint32_t count = oru_map_get_uint32(counters.get(), key.c_str(), 0);
        identities[key.substr(std::strlen(prefix))] = count;
    }
    json document;
    document["identities"] = identities;

    std::string text;
    text.reserve(512);
    if (write_document(document, text)) {
        print_line("{}", text);
    }
}
