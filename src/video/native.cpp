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

native_value value_of(const qw::value& value) {
    switch (value.kind()) {
        case qw::kind::boolean:
            return *value.get_if<bool>();
        case qw::kind::string:
            return std::string{*value.get_if<std::string_view>()};
        case qw::kind::int64:
            return *value.get_if<std::int64_t>();
        case qw::kind::float64:
            return *value.get_if<double>();
        case qw::kind::pair32u: {
            const auto [first, second] = *value.get_if<qw::pair32u>();
            return native_pair{first, second};
        }
        case qw::kind::uint16:
            return *value.get_if<std::uint16_t>();
        case qw::kind::uint32:
            return *value.get_if<std::uint32_t>();
        default:
            return native_other{};
    }
}

std::string json_of(const qw::map& map) {
    std::string text;
    if (const auto written = map.to_json(text); !written) {
        throw std::runtime_error(written.error());
    }
    return text;
}

}  // namespace

std::uint32_t native_map_get_uint(OruMap* map, const char* key, std::uint32_t def) {
    const qw::value* value = oru_map_native_ref(map)->find(key);
    if (value == nullptr) {
        return def;
    }
    if (const auto narrow_value = value->get_if<std::uint16_t>()) {
        return *narrow_value;
    }
    return value->get_if<std::uint32_t>().value_or(def);
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
    entries.reserve(as_map(map_).size());
    for (const auto& [key, value] : as_map(map_)) {
        entries.push_back({std::string{key}, value_of(value)});
    }
    return entries;
}

unsigned native_map::kind_code(std::string_view key) const {
    return static_cast<unsigned>(as_map(map_).find(key)->kind());
}

std::string native_map::to_json() const {
    return json_of(as_map(map_));
}

// Sorted by name, so that to_json() appends each entry at the end of the bus's map. An insertion
// before others would take time in proportion to their number.
struct native_table::content {
    struct row {
        std::string text;
        const qw::value* copied;  // replaces the text unless NULL
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
    content_->rows.try_emplace(std::string{name},
                               content::row{.text = {}, .copied = as_map(from.map_).find(key)});
}

std::string native_table::to_json() const {
    qw::map map;
    for (const auto& [name, row] : content_->rows) {
        map.insert(name,
                   row.copied != nullptr ? *row.copied : qw::value(std::string_view{row.text}));
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
