// Memory that lives as long as its snapshot.
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
    // Returns a copy of the text, followed by a NUL. Throws a std::length_error for one that a
    // value cannot hold.
    std::string_view keep(std::string_view text) {
        if (text.size() > UINT32_MAX) {
            throw std::length_error("a text of 4 GiB or more");
        }
        auto* kept = static_cast<char*>(memory_.allocate(text.size() + 1, 1));
        *std::ranges::copy(text, kept).out = '\0';
        return {kept, text.size()};
    }

    // Returns copies of a part of each item, by default of the whole.
    template <class Item, class Part = std::identity>
    auto keep(const std::vector<Item>& items, Part part = {}) {
        using kept_type = std::remove_cvref_t<std::invoke_result_t<Part, const Item&>>;
        static_assert(std::is_trivially_destructible_v<kept_type>);  // the arena destroys nothing
        auto* kept = static_cast<kept_type*>(
            memory_.allocate(items.size() * sizeof(kept_type), alignof(kept_type)));
        for (kept_type* at = kept; const Item& item : items) {
            std::construct_at(at++, std::invoke(part, item));
        }
        return std::span<const kept_type>(kept, items.size());
    }

  private:
    std::pmr::monotonic_buffer_resource memory_;
};

}  // namespace snapshot
