#include "snapshot_tool/nearest.h"

#include <algorithm>
#include <vector>

namespace snapshot_tool {
namespace {

// Returns how many letters must be inserted, removed, replaced or exchanged with the next one to
// make one text of the other.
std::size_t distance(std::string_view from, std::string_view to) {
    // For each pair of beginnings of the two texts.
    std::vector<std::vector<std::size_t>> changes(from.size() + 1,
                                                  std::vector<std::size_t>(to.size() + 1));
    for (std::size_t i = 0; i <= from.size(); ++i) {
        for (std::size_t j = 0; j <= to.size(); ++j) {
            if (i == 0 || j == 0) {
                changes[i][j] = i + j;
                continue;
            }
            const std::size_t differs = from[i - 1] == to[j - 1] ? 0 : 1;
            changes[i][j] = std::min(
                {changes[i - 1][j] + 1, changes[i][j - 1] + 1, changes[i - 1][j - 1] + differs});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                changes[i][j] = std::min(changes[i][j], changes[i - 2][j - 2] + 1);
            }
        }
    }
    return changes.back().back();
}

}  // namespace

std::string_view nearest(std::string_view text, std::span<const std::string_view> names) {
    std::string_view best;
    std::size_t least = 3;
    for (const std::string_view name : names) {
        // A text of much more letters than the name has is not compared: it may be very long.
        if (text.size() <= name.size() + 2) {
            const std::size_t changes = distance(text, name);
            if (changes < least && 2 * changes < name.size()) {
                best = name;
                least = changes;
            }
        }
    }
    return best;
}

}  // namespace snapshot_tool
