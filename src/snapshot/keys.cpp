#include "snapshot/keys.h"

#include <algorithm>
#include <utility>

namespace snapshot {
namespace {

template <class Key>
const placed_key<Key>* sort(std::vector<placed_key<Key>>& keys) {
    std::ranges::sort(keys, {}, [](const auto& key) { return std::pair(key.key, key.at); });
    const placed_key<Key>* first = nullptr;
    for (std::size_t i = 1; i < keys.size(); ++i) {
        if (keys[i - 1].key == keys[i].key && (first == nullptr || keys[i].at < first->at)) {
            first = &keys[i];
        }
    }
    return first;
}

}  // namespace

const placed_key<std::uint32_t>* sort_ids(std::vector<placed_key<std::uint32_t>>& ids) {
    return sort(ids);
}

void sort_names(std::vector<placed_key<std::string_view>>& names) {
    if (const auto* repeated = sort(names); repeated != nullptr) {
        refuse_duplicate({repeated->key, repeated->at});
    }
}

}  // namespace snapshot
