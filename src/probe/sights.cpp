// What only a person can judge: whether two numbers stand in the right order.
#include <algorithm>
#include <cstdint>
#include <format>
#include <optional>
#include <string>
#include <vector>

#include <oru.h>

#include "probe/checks.h"
#include "probe/content.h"
#include "video/native.h"

namespace {

std::string size_text(std::uint32_t width, std::uint32_t height) {
    return std::format("{}x{}", width, height);
}

// The first, but rather one that is wider than high or the other way round.
void crop_max(const probed_service& service, verdict& told) {
    bool is_square = true;
    for_each_map(service.maps, [&](const std::string& name, OruMap* map) {
        const auto entries = entries_of(map);
        const auto found = std::ranges::find(entries, "crop.max", &native_entry::key);
        if (found == entries.end() || !std::holds_alternative<native_pair>(found->value) ||
            !is_square) {
            return;
        }
        const auto [width, height] = halves_of(oru_map_get_pair32u(map, "crop.max", 0));
        is_square = width == height;
        told.shows(std::format("{}: {}", name, size_text(width, height)));
    });
}

void resolutions(const probed_service& service, verdict& told) {
    const owned_object<OruMap> filter = map_with("select", "available");
    for (const auto& [name, channel] : service.channels) {
        if (filter == nullptr || channel.get() == nullptr) {
            return;
        }
        const owned_block set{oru_channel_get_resolutions(channel.get(), filter.get(), nullptr)};
        if (set == nullptr) {
            continue;
        }
        // A count that is none shows: it is not believed.
        const std::uint64_t count = native_resolution_count(set.get());
        std::string text = std::format("{}: {} of them", name, count);
        for (const auto& [width, height] : native_resolutions(set.get(), 3)) {
            text += ", " + size_text(width, height);
        }
        told.shows(text + (count > 3 ? ", ..." : ""));
        if (count != 0) {
            return;
        }
    }
}

constexpr probe_check checks[] = {
    {"crop.max", crop_max},
    {"available resolutions", resolutions},
};

}  // namespace

std::span<const probe_check> sights() {
    return checks;
}
