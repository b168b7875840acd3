// Pairs the records of two lists that describe the same object of a device.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace snapshot_tool {

// One of the two is NULL if the other has no partner.
template <class Record>
struct pair_of {
    const Record* older;
    const Record* newer;
};

// Each call takes time in proportion to the lists, which must outlive the object and the pairs.
template <class Record>
class pairing {
  public:
    pairing(std::span<const Record> older, std::span<const Record> newer)
        : older_(older), newer_(newer), partners_(older.size()), is_paired_(newer.size()) {}

    // Pairs, in list order, those of the remaining records for which `key_of(record)` returns the
    // same key, an optional, and `is_pair(older, newer)` agrees.
    template <class KeyOf, class IsPair>
    void pair_by(const KeyOf& key_of, const IsPair& is_pair) {
        using key = std::invoke_result_t<KeyOf, const Record&>::value_type;
        struct queue {
            std::vector<std::size_t> items;
            std::size_t next = 0;
        };
        if (std::ranges::find(partners_, nullptr) == partners_.end()) {
            return;
        }
        std::unordered_map<key, queue> remaining;
        for (std::size_t i = 0; i < newer_.size(); ++i) {
            if (const auto key = is_paired_[i] ? std::nullopt : key_of(newer_[i])) {
                remaining[*key].items.push_back(i);
            }
        }
        for (std::size_t i = 0; i < older_.size() && !remaining.empty(); ++i) {
            const auto key = partners_[i] != nullptr ? std::nullopt : key_of(older_[i]);
            const auto found = key ? remaining.find(*key) : remaining.end();
            if (found == remaining.end()) {
                continue;
            }
            auto& [items, next] = found->second;
            if (next < items.size() && is_pair(older_[i], newer_[items[next]])) {
                partners_[i] = &newer_[items[next]];
                is_paired_[items[next]] = true;
                ++next;
            }
        }
    }

    // Returns all records: first those of the older list, then those that only the newer contains.
    std::vector<pair_of<Record>> pairs() const {
        std::vector<pair_of<Record>> pairs;
        pairs.reserve(older_.size());
        for (std::size_t i = 0; i < older_.size(); ++i) {
            pairs.push_back({&older_[i], partners_[i]});
        }
        for (std::size_t i = 0; i < newer_.size(); ++i) {
            if (!is_paired_[i]) {
                pairs.push_back({nullptr, &newer_[i]});
            }
        }
        return pairs;
    }

  private:
    std::span<const Record> older_, newer_;
    std::vector<const Record*> partners_;  // of the older ones
    std::vector<bool> is_paired_;          // the newer ones
};

}  // namespace snapshot_tool
