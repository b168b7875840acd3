// Pairs of numbers whose order only the user can judge. The probe shows them.
#include <algorithm>
#include <cstdint>
#include <format>
#include <string>
#include <variant>

#include <oru.h>

#include "probe/checks.h"
#include "probe/map_contents.h"
#include "video/native.h"

namespace probe {
namespace {

std::string size_text(std::uint32_t width, std::uint32_t height) {
    return std::format("{}x{}", width, height);
}

// Shows the first that is not square, otherwise the last.
void show_crop_max(const video_service& service, verdict& result) {
    bool is_square = true;
    for_each_map(service.maps, [&](const std::string& name, OruMap* map) {
        const auto entries = entries_of(map);
        const auto entry = std::ranges::find(entries, "crop.max", &native_entry::key);
        if (entry == entries.end() || !std::holds_alternative<native_pair>(entry->value) ||
            !is_square) {
            return;
        }
        const auto [width, height] = halves_of(oru_map_get_pair32u(map, "crop.max", 0));
        is_square = width == height;
        result.show(std::format("{}: {}", name, size_text(width, height)));
    });
}

// Shows the resolutions of the first channel that has any, otherwise those of the last.
void show_resolutions(const video_service& service, verdict& result) {
    const owned_object<OruMap> filter = map_with("select", "available");
    for (const auto& [name, channel] : service.channels) {
        if (filter == nullptr || channel.get() == nullptr) {
            return;
        }
        const owned_block set{oru_channel_get_resolutions(channel.get(), filter.get(), nullptr)};
        if (set == nullptr) {
            continue;
        }
        // If native.cpp reads the wrong place, the count is absurd. The user will see that.
        const std::uint64_t count = native_resolution_count(set.get());
        std::string text = std::format("{}: {} of them", name, count);
        for (const auto& [width, height] : native_resolutions(set.get(), 3)) {
            text += ", " + size_text(width, height);
        }
        result.show(text + (count > 3 ? ", ..." : ""));
        if (count != 0) {
            return;
        }
    }
}

constexpr check manual_table[] = {
    {"crop.max", show_crop_max},
    {"available resolutions", show_resolutions},
};

}  // namespace

std::span<const check> manual_checks() {
    return manual_table;
}

}  // namespace probe
