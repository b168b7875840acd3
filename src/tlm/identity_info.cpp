#include "tlm/identity_info.h"

#include <string>
#include <string_view>

#include <oru.h>
#include <qwire.h>

#include "report/json.h"
#include "report/output.h"
#include "video/owned.h"

void print_identity_info() {
    constexpr std::string_view prefix = "identity.";

    const owned_object<OruMap> debug{oru_stream_get_debug(nullptr, nullptr)};
    if (debug == nullptr) {
        return;
    }
    const owned_object<OruMap> counters{oru_map_filter_prefix(debug.get(), prefix.data())};
    if (oru_map_empty(counters.get()) != FALSE) {
        return;
    }

    json identities;
    for (const auto& [key, value] : *oru_map_native_ref(counters.get())) {
        // A key is followed by a NUL, as the C interface needs it.
        identities[key.substr(prefix.size())] = oru_map_get_uint32(counters.get(), key.data(), 0);
    }
    json document;
    document["identities"] = identities;

    std::string text;
    text.reserve(512);
    if (glz::write<document_options{}>(document, text)) {
        return;
    }
    print_line("{}", text);
}
