#include "snapshot/comparison.h"

#include <cmath>
#include <cstdint>
#include <string_view>

namespace snapshot {

bool is_same(const value& one, const value& other) {
    if (one.kind() != other.kind()) {
        return false;
    }
    const auto is_equal = [&]<class T>(T) { return one.get_if<T>() == other.get_if<T>(); };
    switch (one.kind()) {
        case kind::boolean:
            return is_equal(bool());
        case kind::string:
            return is_equal(std::string_view());
        case kind::int64:
            return is_equal(std::int64_t());
        case kind::float64: {
            const double left = *one.get_if<double>();
            const double right = *other.get_if<double>();
            return std::signbit(left) == std::signbit(right) &&
                   (left == right || (std::isnan(left) && std::isnan(right)));
        }
        case kind::pair32u:
            return is_equal(pair32u());
        case kind::other:
            return is_equal(snapshot::other());
        case kind::uint16:
            return is_equal(std::uint16_t());
        case kind::uint32:
            return is_equal(std::uint32_t());
        case kind::unwritable:
            break;  // the writer rejects both
    }
    return true;
}

bool is_same(map_entries one, map_entries other) {
    return std::ranges::equal(one, other, [](const entry& left, const entry& right) {
        return left.key == right.key && is_same(left.value, right.value);
    });
}

}  // namespace snapshot
