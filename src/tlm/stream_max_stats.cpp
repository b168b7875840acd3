#include <cstdint>
#include <memory>

#include <oru.h>

#include "report/output.h"
#include "tlm/sections.h"
#include "video/owned.h"

void print_stream_max_stats() {
    owned_error error;
    const owned_object<OruMap> debug{oru_stream_get_debug(nullptr, std::out_ptr(error))};

    if (debug != nullptr) {
        const auto peak = [&](const char* key) -> std::uint32_t {
            return oru_map_get_uint32(debug.get(), key, 0);
        };
        print_line("MaxBufferBytes={}", peak("global.capacity.peak"));
        print_line("MaxEncodeStreams={}", peak("global.encoded.peers.peak"));
        print_line("MaxRawStreams={}", peak("global.raw.peers.peak"));
    } else {
        print_line("MaxBufferBytes=-1");
        print_line("MaxEncodeStreams=-1");
        print_line("MaxRawStreams=-1");
    }
    print_line("Version=1");
}
