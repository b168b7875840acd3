#include "probe/map_contents.h"

#include <algorithm>
#include <array>
#include <format>
#include <map>
#include <type_traits>
#include <utility>
#include <variant>

namespace probe {

std::string_view kind_name(const native_value& value) {
    constexpr std::array<std::string_view, std::variant_size_v<native_value>> names = {
        "boolean", "string", "int64", "double", "pair", "uint16", "uint32", "other"};
    return names[value.index()];
}

std::string value_text(const native_value& value) {
    const std::string text = std::visit(
        []<class Value>(const Value& alternative) -> std::string {
            if constexpr (std::is_same_v<Value, native_other>) {
                return "";
            } else if constexpr (std::is_same_v<Value, native_pair>) {
                return std::format(" {} and {}", alternative.first, alternative.second);
            } else if constexpr (std::is_same_v<Value, std::string>) {
                return std::format(" '{}'", alternative);
            } else {
                return std::format(" {}", alternative);
            }
        },
        value);
    return std::string(kind_name(value)) + text;
}

std::vector<native_entry> entries_of(OruMap* map) {
    return oru_map_native_ref(map) != nullptr ? native_map(map).entries()
                                              : std::vector<native_entry>();
}

map_contents contents_of(OruMap* map) {
    std::vector<native_entry> entries = entries_of(map);
    map_contents contents;
    contents.reserve(entries.size());
    for (native_entry& entry : entries) {
        contents.push_back({std::move(entry.key), value_text(entry.value)});
    }
    return contents;
}

std::string first_difference(const map_contents& before, const map_contents& after) {
    using values = std::map<std::string_view, std::string_view>;
    const auto by_key = [](const map_contents& contents) {
        values by_key;
        for (const text_entry& entry : contents) {
            by_key.try_emplace(entry.key, entry.value);
        }
        return by_key;
    };
    const auto value_in = [](const values& by_key, std::string_view key) {
        const auto found = by_key.find(key);
        return found != by_key.end() ? found->second : "none";
    };
    const values values_before = by_key(before);
    const values values_after = by_key(after);
    for (const map_contents* contents : {&before, &after}) {
        for (const text_entry& entry : *contents) {
            const std::string_view first = value_in(values_before, entry.key);
            const std::string_view second = value_in(values_after, entry.key);
            if (first != second) {
                return std::format("'{}': {}, then {}", entry.key, first, second);
            }
        }
    }
    return "the order of the keys";
}

std::string absent_key(const map_contents& contents) {
    std::string key = "absent";
    while (std::ranges::find(contents, key, &text_entry::key) != contents.end()) {
        key += '!';
    }
    return key;
}

bool is_c_text(std::string_view key) {
    return !key.contains('\0');
}

std::vector<std::string> sample_keys(const map_contents& contents) {
    std::vector<std::string> keys;
    for (const std::size_t index : {std::size_t{0}, contents.size() / 2, contents.size() - 1}) {
        if (index < contents.size() && is_c_text(contents[index].key) &&
            std::ranges::find(keys, contents[index].key) == keys.end()) {
            keys.push_back(contents[index].key);
        }
    }
    return keys;
}

}  // namespace probe
