// Keys that must differ from each other, with their places in the text, and lists in their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "snapshot/json_reader.h"

namespace snapshot {

// A key, where it stands in the text, and which item of the list it is the key of.
template <class Key>
struct placed_key {
    Key key;
    const char* at;
    std::size_t item;
};

// These sort by key, then by place. The first key in the text that repeats another is returned,
// NULL when there is none, or complained about.
const placed_key<std::uint32_t>* sort_ids(std::vector<placed_key<std::uint32_t>>& ids);
void sort_names(std::vector<placed_key<std::string_view>>& names);

// Items by name while they are read.
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

    // Returns a copy, ascending by name, that lives as long as the document. Complains about a name
    // that repeats another.
    std::span<const Item> keep(arena& into) {
        if (ascending_) {
            return into.keep(items_, &placed_item::item);
        }
        names_.clear();
        for (std::size_t i = 0; i < items_.size(); ++i) {
            names_.push_back({items_[i].item.*Name, items_[i].at, i});
        }
        sort_names(names_);
        return into.keep(names_,
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
