// Finds answers in a snapshot, and describes the queries that ask for them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot/answers.h"

namespace snapshot {

// A query, for messages: "stream 3: settings", "channel 0: resolutions 'available'".
struct query {
    const char* subject;
    std::optional<std::uint32_t> number = std::nullopt;
    const char* part = nullptr;
    const char* name = nullptr;  // of one of several answers
};

std::string text_of(const query& query);

// Returns the message of a query without an answer: "stream 3: settings not recorded".
std::string not_recorded(const query& query);

// These return NULL if there is none.
inline const value* find(map_entries map, std::string_view key) noexcept {
    // Most keys of a short map differ in length, so comparing for equality costs less than
    // ordering.
    constexpr std::size_t few = 16;
    while (map.size() > few) {
        const std::size_t half = map.size() / 2;
        map = map[half].key <= key ? map.subspan(half) : map.first(half);
    }
    const auto found = std::ranges::find(map, key, &entry::key);
    return found != map.end() ? &found->value : nullptr;
}

template <class T>
const answer<T>* find(std::span<const named_answer<T>> answers, std::string_view name) {
    const auto found = std::ranges::lower_bound(answers, name, {}, &named_answer<T>::name);
    return found != answers.end() && found->name == name ? &found->value : nullptr;
}

// For a list that ascends by id.
template <class Record>
const Record* find(const std::vector<Record>& records, std::uint32_t id) {
    const auto found = std::ranges::lower_bound(records, id, {}, &Record::id);
    return found != records.end() && found->id == id ? &*found : nullptr;
}

// Returns whether the snapshot answers any query. Those of a stream, a channel or an input count
// through the lists and maps that lead to them.
bool is_answered(const answers& answers);

// Returns whether the map contains this text under `key`.
bool has_text(map_entries map, std::string_view key, std::string_view text);

}  // namespace snapshot
