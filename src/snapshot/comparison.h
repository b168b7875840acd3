// Compares answers by what they say: two are the same if the writer writes both in the same form.
#pragma once

#include <algorithm>
#include <cstring>
#include <span>
#include <variant>

#include "snapshot/answers.h"
#include "snapshot/value.h"

namespace snapshot {

// A value is not the same as one of another kind. Of doubles, the sign counts, even of zero or NaN.
bool is_same(const value& one, const value& other);

bool is_same(map_entries one, map_entries other);

inline bool is_same(const rectangle& one, const rectangle& other) {
    return one == other;
}

inline bool is_same(const resolution& one, const resolution& other) {
    return one == other;
}

inline bool is_same(std::span<const resolution> one, std::span<const resolution> other) {
    return std::ranges::equal(one, other);
}

template <class T>
bool is_same(const answer<T>& one, const answer<T>& other);

template <class T>
bool is_same(std::span<const named_answer<T>> one, std::span<const named_answer<T>> other) {
    return std::ranges::equal(one, other, [](const auto& left, const auto& right) {
        return left.name == right.name && is_same(left.value, right.value);
    });
}

template <class T>
bool is_same(const answer<T>& one, const answer<T>& other) {
    if (one.index() != other.index()) {
        return false;
    }
    if (const auto* failure = std::get_if<snapshot::failure>(&one)) {
        return std::strcmp(failure->message, std::get<snapshot::failure>(other).message) == 0;
    }
    const auto* value = std::get_if<T>(&one);
    return value == nullptr || is_same(*value, std::get<T>(other));
}

// Returns whether all answers of the two records are the same. Their ids may differ.
template <class Record>
bool has_same_answers(const Record& one, const Record& other) {
    bool is_equal = true;
    Record::each_answer([&](const char*, auto member) {
        is_equal = is_equal && is_same(one.*member, other.*member);
    });
    return is_equal;
}

}  // namespace snapshot
