// Checks of the getters: for values of their own kind, values of other kinds, and absent keys.
#include <array>
#include <bit>
#include <cstdint>
#include <format>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>
#include <variant>

#include <oru.h>

#include "probe/checks.h"
#include "probe/map_contents.h"
#include "video/native.h"

namespace probe {
namespace {

// --- Getters ------------------------------------------------------------------------------------
//
// Each type describes one getter:
// - defaults: two, because a value in the map may be equal to one of them
// - get(): the getter
// - to_native(): converts the result for comparison with the native map
// - widen(): returns the result for a value of another kind that the getter may widen, or none

template <class Unsigned>
std::optional<native_value> widen_unsigned(const native_value& value) {
    if (const auto* narrow = std::get_if<std::uint16_t>(&value)) {
        return native_value(static_cast<Unsigned>(*narrow));
    }
    if (const auto* wide = std::get_if<std::uint32_t>(&value)) {
        return native_value(static_cast<Unsigned>(*wide));
    }
    return std::nullopt;
}

struct uint32_getter {
    static constexpr guint32 defaults[] = {3, 0xFFFFFFFF};
    static constexpr auto get = oru_map_get_uint32;
    static native_value to_native(guint32 value) { return std::uint32_t{value}; }
    static std::optional<native_value> widen(const native_value& value) {
        return widen_unsigned<std::uint32_t>(value);
    }
};

struct int64_getter {
    static constexpr gint64 defaults[] = {-3, 7};
    static constexpr auto get = oru_map_get_int64;
    static native_value to_native(gint64 value) { return std::int64_t{value}; }
    static std::optional<native_value> widen(const native_value& value) {
        return widen_unsigned<std::int64_t>(value);
    }
};

struct double_getter {
    static constexpr gdouble defaults[] = {-0.5, 1e300};
    static constexpr auto get = oru_map_get_double;
    static native_value to_native(gdouble value) { return value; }
    static std::optional<native_value> widen(const native_value& value) {
        return widen_unsigned<double>(value);
    }
};

struct widens_nothing {
    static std::optional<native_value> widen(const native_value&) { return std::nullopt; }
};

struct boolean_getter : widens_nothing {
    static constexpr gboolean defaults[] = {FALSE, TRUE};
    static constexpr auto get = oru_map_get_boolean;
    static native_value to_native(gboolean value) { return value != FALSE; }
};

struct string_getter : widens_nothing {
    static constexpr const gchar* defaults[] = {"a default", nullptr};
    static const gchar* get(OruMap* map, const gchar* key, const gchar* def) {
        return oru_map_get_string(map, key, nullptr, def);
    }
    static native_value to_native(const gchar* value) {
        return std::string(value != nullptr ? value : "NULL");
    }
};

struct pair_getter : widens_nothing {
    static constexpr guint64 defaults[] = {3, 0xFFFFFFFFFFFFFFFF};
    static constexpr auto get = oru_map_get_pair32u;
    static native_value to_native(guint64 value) { return halves_of(value); }
};

// --- Results ------------------------------------------------------------------------------------

struct getter_result {
    bool is_default;    // each call returned its default
    std::string value;  // as value_text() returns it; empty if is_default or if the calls differ
    std::string text;   // for messages
};

// Texts are compared as pointers: a copy of the default is not the default. Doubles are compared by
// their bits, so that NaN is identical to itself.
template <class Value>
bool is_identical(Value value, Value other) {
    if constexpr (std::is_same_v<Value, gdouble>) {
        return std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(other);
    } else {
        return value == other;
    }
}

// Calls the getter once with each default.
template <class Getter>
getter_result call(OruMap* map, const std::string& key) {
    std::array<std::string, 2> texts;
    bool is_default = true;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const auto value = Getter::get(map, key.c_str(), Getter::defaults[i]);
        is_default &= is_identical(value, Getter::defaults[i]);
        texts[i] = value_text(Getter::to_native(value));
    }
    if (is_default) {
        return {.is_default = true, .value = "", .text = "the default"};
    }
    if (texts[0] == texts[1]) {
        return {.is_default = false, .value = texts[0], .text = texts[0]};
    }
    return {.is_default = false,
            .value = "",
            .text = std::format("{}, and {} with another default", texts[0], texts[1])};
}

template <class Getter>
bool is_own_kind(const native_value& value) {
    return value.index() == Getter::to_native(Getter::defaults[0]).index();
}

// Calls visit(name, map, entry) for each entry whose key the getters can take.
template <class Visit>
void for_each_entry(const std::vector<map_source>& maps, const Visit& visit) {
    for_each_map(maps, [&](const std::string& name, OruMap* map) {
        for (const native_entry& entry : entries_of(map)) {
            if (is_c_text(entry.key)) {
                visit(name, map, entry);
            }
        }
    });
}

// --- Checks -------------------------------------------------------------------------------------

// For a value of its own kind, the getter returns the value in the native map.
template <class Getter>
void check_own_kind(const video_service& service, verdict& result) {
    for_each_entry(service.maps_and_new_map, [&](const std::string& name, OruMap* map,
                                                 const native_entry& entry) {
        if (is_own_kind<Getter>(entry.value)) {
            const getter_result actual = call<Getter>(map, entry.key);
            const std::string expected = value_text(entry.value);
            result.expect(actual.value == expected, "{}: '{}': {}, in the native map {}", name,
                          entry.key, actual.text, expected);
        }
    });
}

// For an absent key, the getter returns the default.
template <class Getter>
void check_absent_key(const video_service& service, verdict& result) {
    for_each_map(service.maps_and_new_map, [&](const std::string& name, OruMap* map) {
        const std::string key = absent_key(contents_of(map));
        const getter_result actual = call<Getter>(map, key);
        result.expect(actual.is_default, "{}: absent '{}': {}", name, key, actual.text);
    });
}

std::string list_text(const char* heading, const std::set<std::string_view>& kinds) {
    std::string text;
    for (const std::string_view kind : kinds) {
        text += text.empty() ? heading : ", ";
        text += kind;
    }
    return text;
}

// For a value of another kind, the getter returns the default or the widened value, and does the
// same for all values of that kind.
template <class Getter>
void check_other_kinds(const video_service& service, verdict& result) {
    std::set<std::string_view> widened_kinds;
    std::set<std::string_view> default_kinds;
    for_each_entry(service.maps_and_new_map, [&](const std::string& name, OruMap* map,
                                                 const native_entry& entry) {
        if (is_own_kind<Getter>(entry.value)) {
            return;
        }
        const getter_result actual = call<Getter>(map, entry.key);
        const std::optional<native_value> widened = Getter::widen(entry.value);
        const bool is_widened = widened && actual.value == value_text(*widened);
        result.expect(actual.is_default || is_widened, "{}: '{}': {} for {}", name, entry.key,
                      actual.text, value_text(entry.value));
        const std::string_view kind = kind_name(entry.value);
        if (is_widened) {
            widened_kinds.insert(kind);
        } else if (actual.is_default) {
            default_kinds.insert(kind);
        }
        if (widened_kinds.contains(kind) && default_kinds.contains(kind)) {
            result.depart(std::format("{}: '{}': {}, but not so for each value of the kind {}",
                                      name, entry.key, actual.text, kind));
        }
    });
    const std::string widened_text = list_text("widened from ", widened_kinds);
    const std::string default_text = list_text("default for ", default_kinds);
    const bool has_both = !widened_text.empty() && !default_text.empty();
    result.set_remark(widened_text + (has_both ? "; " : "") + default_text);
}

constexpr check getter_table[] = {
    {"oru_map_get_uint32", check_own_kind<uint32_getter>},
    {"oru_map_get_uint32 of an absent key", check_absent_key<uint32_getter>},
    {"oru_map_get_uint32 of another kind", check_other_kinds<uint32_getter>},
    {"oru_map_get_int64", check_own_kind<int64_getter>},
    {"oru_map_get_int64 of an absent key", check_absent_key<int64_getter>},
    {"oru_map_get_int64 of another kind", check_other_kinds<int64_getter>},
    {"oru_map_get_double", check_own_kind<double_getter>},
    {"oru_map_get_double of an absent key", check_absent_key<double_getter>},
    {"oru_map_get_double of another kind", check_other_kinds<double_getter>},
    {"oru_map_get_boolean", check_own_kind<boolean_getter>},
    {"oru_map_get_boolean of an absent key", check_absent_key<boolean_getter>},
    {"oru_map_get_boolean of another kind", check_other_kinds<boolean_getter>},
    {"oru_map_get_string", check_own_kind<string_getter>},
    {"oru_map_get_string of an absent key", check_absent_key<string_getter>},
    {"oru_map_get_string of another kind", check_other_kinds<string_getter>},
    {"oru_map_get_pair32u", check_own_kind<pair_getter>},
    {"oru_map_get_pair32u of an absent key", check_absent_key<pair_getter>},
    {"oru_map_get_pair32u of another kind", check_other_kinds<pair_getter>},
};

}  // namespace

std::span<const check> getter_checks() {
    return getter_table;
}

}  // namespace probe
