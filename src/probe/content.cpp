#include "probe/content.h"

#include <algorithm>
#include <array>
#include <format>
#include <type_traits>
#include <utility>
#include <variant>

namespace {

constexpr std::array<std::string_view, std::variant_size_v<native_value>> kind_names = {
    "boolean", "string", "int64", "double", "pair", "uint16", "uint32", "other"};

// What can be passed as a key ends where its text does.
bool can_be_passed(const std::string& key) {
    return !key.contains('\0');
}

}  // namespace

std::string_view kind_name(std::size_t alternative) {
    return kind_names[alternative];
}

std::string_view kind_name(const native_value& value) {
    return kind_name(value.index());
}

std::string words_of(const native_value& value) {
    const std::string text = std::visit(
        []<class Held>(const Held& held) -> std::string {
            if constexpr (std::is_same_v<Held, native_other>) {
                return "";
            } else if constexpr (std::is_same_v<Held, native_pair>) {
                return std::format(" {} and {}", held.first, held.second);
            } else if constexpr (std::is_same_v<Held, std::string>) {
                return std::format(" '{}'", held);
            } else {
                return std::format(" {}", held);
            }
        },
        value);
    return std::string(kind_name(value)) + text;
}

std::vector<native_entry> entries_of(OruMap* map) {
    return oru_map_native_ref(map) != nullptr ? native_map(map).entries()
                                              : std::vector<native_entry>();
}

std::vector<worded_entry> content_of(OruMap* map) {
    std::vector<worded_entry> content;
    for (native_entry& entry : entries_of(map)) {
        content.push_back({std::move(entry.key), words_of(entry.value)});
    }
    return content;
}

std::string difference(const std::vector<worded_entry>& before,
                       const std::vector<worded_entry>& after) {
    const auto value_in = [](const std::vector<worded_entry>& content, const std::string& key) {
        const auto found = std::ranges::find(content, key, &worded_entry::key);
        return found != content.end() ? found->value : "none";
    };
    for (const auto& content : {before, after}) {
        for (const worded_entry& entry : content) {
            const std::string first = value_in(before, entry.key);
            const std::string second = value_in(after, entry.key);
            if (first != second) {
                return std::format("'{}': {}, then {}", entry.key, first, second);
            }
        }
    }
    return "the order of the keys";
}

std::string absent_key(const std::vector<worded_entry>& content) {
    std::string key = "absent";
    while (std::ranges::find(content, key, &worded_entry::key) != content.end()) {
        key += '!';
    }
    return key;
}

std::vector<std::string> some_keys(const std::vector<worded_entry>& content) {
    std::vector<std::string> keys;
    for (const std::size_t at : {std::size_t{0}, content.size() / 2, content.size() - 1}) {
        if (at < content.size() && can_be_passed(content[at].key) &&
            std::ranges::find(keys, content[at].key) == keys.end()) {
            keys.push_back(content[at].key);
        }
    }
    return keys;
}
