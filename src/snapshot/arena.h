// The memory of a snapshot, freed only as a whole.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <memory_resource>
#include <span>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <vector>

namespace snapshot {

class arena {
  public:
    // Returns a copy of the text, followed by a NUL. Throws a std::length_error if it is too long
    // for a value.
    std::string_view keep(std::string_view text) {
        if (text.size() > UINT32_MAX) {
            throw std::length_error("a text of 4 GiB or more");
        }
        auto* copy = static_cast<char*>(memory_.allocate(text.size() + 1, 1));
        *std::ranges::copy(text, copy).out = '\0';
        return {copy, text.size()};
    }

    // Returns copies of a part of each item, by default of the whole item.
    template <class Item, class Part = std::identity>
    auto keep(const std::vector<Item>& items, Part part = {}) {
        using part_type = std::remove_cvref_t<std::invoke_result_t<Part, const Item&>>;
        static_assert(std::is_trivially_destructible_v<part_type>);  // the arena destroys nothing
        auto* copies = static_cast<part_type*>(
            memory_.allocate(items.size() * sizeof(part_type), alignof(part_type)));
        for (part_type* at = copies; const Item& item : items) {
            std::construct_at(at++, std::invoke(part, item));
        }
        return std::span<const part_type>(copies, items.size());
    }

  private:
    std::pmr::monotonic_buffer_resource memory_;
};

}  // namespace snapshot
