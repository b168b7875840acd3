#include "video/native.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>
#include <utility>

#include <qwire.h>

// --- The bus library's map ----------------------------------------------------------------------

namespace {

const qw::map& as_map(const void* map) {
    return *static_cast<const qw::map*>(map);
}

native_value value_of(const qw::tagged& value) {
    switch (value.tag) {
        case qw::tag_flag:
            return std::get<bool>(value.content);
        case qw::tag_text:
            return std::get<std::string>(value.content);
        case qw::tag_i64:
            return std::get<std::int64_t>(value.content);
        case qw::tag_real:
            return std::get<double>(value.content);
        case qw::tag_pair: {
            const auto [first, second] =
                std::get<std::pair<std::uint32_t, std::uint32_t>>(value.content);
            return native_pair{first, second};
        }
        case qw::tag_u16:
            return static_cast<std::uint16_t>(std::get<std::uint64_t>(value.content));
        case qw::tag_u32:
            return static_cast<std::uint32_t>(std::get<std::uint64_t>(value.content));
        default:
            return native_other{};
    }
}

std::string json_of(const qw::map& map) {
    std::string text;
    if (const auto error = map.to_json(text)) {
        throw std::runtime_error(*error);
    }
    return text;
}

}  // namespace

std::uint32_t native_map_get_uint(OruMap* map, const char* key, std::uint32_t def) {
    const qw::map& native = *oru_map_native_ref(map);
    const auto found = native.find(key);
    if (found == native.end()) {
        return def;
    }
    const auto& [tag, content] = found->second;
    return tag == qw::tag_u16 || tag == qw::tag_u32
               ? static_cast<std::uint32_t>(std::get<std::uint64_t>(content))
               : def;
}

native_map::native_map(OruMap* map) : map_(oru_map_native_ref(map)) {}

std::vector<std::string> native_map::keys() const {
    std::vector<std::string> keys;
    for (const auto& [key, value] : as_map(map_)) {
        keys.emplace_back(key);
    }
    return keys;
}

std::vector<native_entry> native_map::entries() const {
    std::vector<native_entry> entries;
    for (const auto& [key, value] : as_map(map_)) {
        entries.push_back({std::string{key}, value_of(value)});
    }
    return entries;
}

unsigned native_map::kind_code(std::string_view key) const {
    return as_map(map_).find(std::string{key})->second.tag;
}

std::string native_map::to_json() const {
    return json_of(as_map(map_));
}

struct native_table::content {
    struct row {
        std::string text;
        const qw::tagged* copied;  // used instead of the text unless NULL
    };
    std::map<std::string, row, std::less<>> rows;
};

native_table::native_table() : content_(std::make_unique<content>()) {}

native_table::~native_table() = default;

void native_table::assign(std::string_view name, std::string_view text) {
    content_->rows.insert_or_assign(std::string{name},
                                    content::row{.text = std::string{text}, .copied = nullptr});
}

void native_table::insert(std::string_view name, const native_map& from, std::string_view key) {
    content_->rows.try_emplace(
        std::string{name},
        content::row{.text = {}, .copied = &as_map(from.map_).find(std::string{key})->second});
}

std::string native_table::to_json() const {
    qw::map map;
    for (const auto& [name, row] : content_->rows) {
        map.emplace(name, row.copied != nullptr ? *row.copied : qw::tagged{qw::tag_text, row.text});
    }
    return json_of(map);
}

// --- Pairs and resolutions ----------------------------------------------------------------------

native_pair halves_of(std::uint64_t pair) {
    return {.first = static_cast<std::uint32_t>(pair),
            .second = static_cast<std::uint32_t>(pair >> 32)};
}

std::uint64_t native_resolution_count(const void* set) {
    std::uint64_t count = 0;
    std::memcpy(&count, set, sizeof count);
    return count;
}

std::vector<native_resolution> native_resolutions(const void* set, std::uint64_t most) {
    // The resolutions follow their count.
    const std::uint64_t count = std::min(native_resolution_count(set), most);
    std::vector<native_resolution> resolutions;
    if (count > resolutions.max_size()) {
        throw std::length_error("a set of " + std::to_string(count) + " resolutions");
    }
    resolutions.resize(static_cast<std::size_t>(count));
    if (!resolutions.empty()) {
        std::memcpy(resolutions.data(), static_cast<const char*>(set) + sizeof count,
                    resolutions.size() * sizeof(native_resolution));
    }
    return resolutions;
}
