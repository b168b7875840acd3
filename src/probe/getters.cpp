// Each getter's value of its own kind, of other kinds, and its default.
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <format>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>
#include <variant>

#include <oru.h>

#include "probe/checks.h"
#include "probe/content.h"
#include "video/native.h"

namespace {

// --- The getters --------------------------------------------------------------------------------
//
// Each with two defaults, so that a value is never taken for one, the form in which its value is
// compared, and what it gives for a value of another kind that widens.

template <class Unsigned>
std::optional<native_value> from_unsigned(const native_value& value) {
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
    static native_value form(guint32 value) { return std::uint32_t{value}; }
    static std::optional<native_value> widened(const native_value& value) {
        return from_unsigned<std::uint32_t>(value);
    }
};

struct int64_getter {
    static constexpr gint64 defaults[] = {-3, 7};
    static constexpr auto get = oru_map_get_int64;
    static native_value form(gint64 value) { return std::int64_t{value}; }
    static std::optional<native_value> widened(const native_value& value) {
        return from_unsigned<std::int64_t>(value);
    }
};

struct double_getter {
    static constexpr gdouble defaults[] = {-0.5, 1e300};
    static constexpr auto get = oru_map_get_double;
    static native_value form(gdouble value) { return value; }
    static std::optional<native_value> widened(const native_value& value) {
        return from_unsigned<double>(value);
    }
};

struct nothing_widens {
    static std::optional<native_value> widened(const native_value&) { return std::nullopt; }
};

struct boolean_getter : nothing_widens {
    static constexpr gboolean defaults[] = {FALSE, TRUE};
    static constexpr auto get = oru_map_get_boolean;
    static native_value form(gboolean value) { return value != FALSE; }
};

struct string_getter : nothing_widens {
    static constexpr const gchar* defaults[] = {"a default", nullptr};
    static const gchar* get(OruMap* map, const gchar* key, const gchar* def) {
        return oru_map_get_string(map, key, nullptr, def);
    }
    static native_value form(const gchar* value) {
        return std::string(value != nullptr ? value : "NULL");
    }
};

struct pair_getter : nothing_widens {
    static constexpr guint64 defaults[] = {3, 0xFFFFFFFFFFFFFFFF};
    static constexpr auto get = oru_map_get_pair32u;
    static native_value form(guint64 value) { return halves_of(value); }
};

// --- What they give -----------------------------------------------------------------------------

struct given {
    bool is_default;    // the default as it is, whichever that was
    std::string value;  // in words, when it is the same for both defaults
    std::string in_words;
};

// A text that is the default is that very text; of doubles, the bits count.
template <class Value>
bool is_same(Value one, Value other) {
    if constexpr (std::is_same_v<Value, gdouble>) {
        return std::bit_cast<std::uint64_t>(one) == std::bit_cast<std::uint64_t>(other);
    } else {
        return one == other;
    }
}

template <class Getter>
given ask(OruMap* map, const std::string& key) {
    std::array<std::string, 2> values;
    bool is_default = true;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto value = Getter::get(map, key.c_str(), Getter::defaults[i]);
        is_default &= is_same(value, Getter::defaults[i]);
        values[i] = words_of(Getter::form(value));
    }
    const bool is_one = !is_default && values[0] == values[1];
    return {.is_default = is_default,
            .value = is_one ? values[0] : "",
            .in_words = is_default ? "the default"
                        : is_one
                            ? values[0]
                            : std::format("{}, and {} with another default", values[0], values[1])};
}

template <class Getter>
std::size_t kind_of() {
    return Getter::form(Getter::defaults[0]).index();
}

// Shows every value of the service's maps that can be asked for by its key.
template <class Look>
void for_each_entry(const std::vector<map_source>& maps, const Look& look) {
    for_each_map(maps, [&](const std::string& name, OruMap* map) {
        for (const native_entry& entry : entries_of(map)) {
            if (!entry.key.contains('\0')) {
                look(name, map, entry);
            }
        }
    });
}

// --- The checks ---------------------------------------------------------------------------------

// A value of the getter's own kind is the one in the native map.
template <class Getter>
void own_kind(const probed_service& service, verdict& told) {
    for_each_entry(service.every_map,
                   [&](const std::string& name, OruMap* map, const native_entry& entry) {
                       if (entry.value.index() == kind_of<Getter>()) {
                           const given got = ask<Getter>(map, entry.key);
                           const std::string wanted = words_of(entry.value);
                           told.expect(got.value == wanted, "{}: '{}': {}, in the native map {}",
                                       name, entry.key, got.in_words, wanted);
                       }
                   });
}

// For an absent key the default is given, as it is.
template <class Getter>
void absent(const probed_service& service, verdict& told) {
    for_each_map(service.every_map, [&](const std::string& name, OruMap* map) {
        const std::string key = absent_key(content_of(map));
        const given got = ask<Getter>(map, key);
        told.expect(got.is_default, "{}: absent '{}': {}", name, key, got.in_words);
    });
}

std::string list_of(const char* what, const std::set<std::string_view>& kinds) {
    std::string text;
    for (const std::string_view kind : kinds) {
        text += text.empty() ? what : ", ";
        text += kind;
    }
    return text;
}

// For a key of another kind so is it, or the value, widened: each kind always one way.
template <class Getter>
void other_kind(const probed_service& service, verdict& told) {
    std::set<std::string_view> widened;
    std::set<std::string_view> defaulted;
    for_each_entry(
        service.every_map, [&](const std::string& name, OruMap* map, const native_entry& entry) {
            if (entry.value.index() == kind_of<Getter>()) {
                return;
            }
            const given got = ask<Getter>(map, entry.key);
            const std::optional<native_value> value = Getter::widened(entry.value);
            const bool is_widened = value && got.value == words_of(*value);
            told.expect(got.is_default || is_widened, "{}: '{}': {} for {}", name, entry.key,
                        got.in_words, words_of(entry.value));
            const std::string_view kind = kind_name(entry.value);
            if (is_widened) {
                widened.insert(kind);
            } else if (got.is_default) {
                defaulted.insert(kind);
            }
            if (widened.contains(kind) && defaulted.contains(kind)) {
                told.departs(std::format("{}: '{}': {}, but not so for each value of the kind {}",
                                         name, entry.key, got.in_words, kind));
            }
        });
    const std::string wider = list_of("widened from ", widened);
    const std::string other = list_of("default for ", defaulted);
    told.adds(wider + (wider.empty() || other.empty() ? "" : "; ") + other);
}

constexpr probe_check checks[] = {
    {"oru_map_get_uint32", own_kind<uint32_getter>},
    {"oru_map_get_uint32 of an absent key", absent<uint32_getter>},
    {"oru_map_get_uint32 of another kind", other_kind<uint32_getter>},
    {"oru_map_get_int64", own_kind<int64_getter>},
    {"oru_map_get_int64 of an absent key", absent<int64_getter>},
    {"oru_map_get_int64 of another kind", other_kind<int64_getter>},
    {"oru_map_get_double", own_kind<double_getter>},
    {"oru_map_get_double of an absent key", absent<double_getter>},
    {"oru_map_get_double of another kind", other_kind<double_getter>},
    {"oru_map_get_boolean", own_kind<boolean_getter>},
    {"oru_map_get_boolean of an absent key", absent<boolean_getter>},
    {"oru_map_get_boolean of another kind", other_kind<boolean_getter>},
    {"oru_map_get_string", own_kind<string_getter>},
    {"oru_map_get_string of an absent key", absent<string_getter>},
    {"oru_map_get_string of another kind", other_kind<string_getter>},
    {"oru_map_get_pair32u", own_kind<pair_getter>},
    {"oru_map_get_pair32u of an absent key", absent<pair_getter>},
    {"oru_map_get_pair32u of another kind", other_kind<pair_getter>},
};

}  // namespace

std::span<const probe_check> getter_checks() {
    return checks;
}
