// Keys that must be unique, with their places in the text, and lists sorted by such keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "snapshot/json_reader.h"

namespace snapshot {

// A key, its place in the text, and the index of its item in the list.
template <class Key>
struct placed_key {
    Key key;
    const char* at;
    std::size_t item;
};

// Sort by key, then by place. If a key in the text repeats another, sort_ids() returns the first
// such key, otherwise NULL; sort_names() complains about it.
const placed_key<std::uint32_t>* sort_ids(std::vector<placed_key<std::uint32_t>>& ids);
void sort_names(std::vector<placed_key<std::string_view>>& names);

// Collects items with names while they are read.
template <class Item, std::string_view Item::* Name>
class named_items {
  public:
    void clear() {
        items_.clear();
        ascending_ = true;
    }

    void add(const Item& item, const char* place) {
        ascending_ = ascending_ && (items_.empty() || items_.back().item.*Name < item.*Name);
        items_.push_back({item, place});
    }

    // Returns a copy in the arena, ascending by name. Complains about a name that repeats another.
    std::span<const Item> keep(arena& arena) {
        if (ascending_) {
            return arena.keep(items_, &placed_item::item);
        }
        names_.clear();
        for (std::size_t i = 0; i < items_.size(); ++i) {
            names_.push_back({items_[i].item.*Name, items_[i].at, i});
        }
        sort_names(names_);
        return arena.keep(names_,
                          [&](const auto& name) -> const Item& { return items_[name.item].item; });
    }

  private:
    struct placed_item {
        Item item;
        const char* at;
    };

    std::vector<placed_item> items_;
    bool ascending_ = true;
    std::vector<placed_key<std::string_view>> names_;
};

}  // namespace snapshot
