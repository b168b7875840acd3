#include "snapshot_tool/figures.h"

#include <cmath>
#include <format>

#include "snapshot/printable.h"
#include "snapshot_tool/columns.h"

namespace snapshot_tool {

std::string resolution_text(const resolution& resolution) {
    return std::to_string(resolution.width) + 'x' + std::to_string(resolution.height);
}

std::string rectangle_text(const rectangle& area) {
    return std::format("{}x{} at {},{}", area.width, area.height, area.x, area.y);
}

std::string bit_rate_text(std::uint32_t bits) {
    return bits < 1'000'000 ? std::format("{:.1f} kbit/s", bits / 1e3)
                            : std::format("{:.2f} Mbit/s", bits / 1e6);
}

std::string frame_rate_text(double frames) {
    if (frames >= 0 && frames < 1e6 && std::trunc(frames) == frames) {
        return std::to_string(static_cast<std::uint32_t>(frames));  // nearly every frame rate
    }
    // No camera is that fast. In plain digits such a number could fill a line.
    if (!(std::abs(frames) < 1e6)) {
        return std::format("{:g}", frames);
    }
    std::string text = std::format("{:.2f}", frames);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text;
}

std::string mebibytes_text(std::uint32_t bytes) {
    return std::format("{:.1f}", bytes / 1048576.0);
}

std::string whole_text(std::string_view text) {
    return text.empty() ? "\"\"" : snapshot::printable(text);
}

std::string short_text(std::size_t columns, std::string_view text) {
    return cut_to(columns, whole_text(text));
}

std::string failure_text(std::string_view query, std::string_view reason) {
    return std::format("{} failed{}{}", query, reason.empty() ? "" : ": ",
                       snapshot::printable(reason));
}

}  // namespace snapshot_tool
