#include "snapshot/usual_names.h"

#include <algorithm>

namespace oru {

std::string_view usual_names::learn(std::string_view name) {
    constexpr std::ptrdiff_t most_left_out = 16;  // by one record, of what others have
    constexpr std::size_t most_known = 256;
    const auto expected = names_.begin() + static_cast<std::ptrdiff_t>(next_);
    const auto end = expected + std::min(most_left_out, names_.end() - expected);
    auto known = std::find(expected, end, name);
    if (known == end) {
        if (names_.size() == most_known) {
            return name;
        }
        known = names_.insert(expected, name);
    }
    next_ = static_cast<std::size_t>(known - names_.begin()) + 1;
    return *known;
}

}  // namespace oru
