// Checks of the service's enumeration of video formats.
#include <algorithm>
#include <array>
#include <cstdint>
#include <format>
#include <map>
#include <string>

#include <oru.h>

#include "probe/checks.h"
#include "video/owned.h"

namespace probe {
namespace {

// Returns the class of the enumeration. If the type is not an enumeration, departs and returns
// NULL.
owned_class<GEnumClass> format_class(verdict& result) {
    const GType type = oru_format_get_type();
    if (!G_TYPE_IS_ENUM(type)) {
        const gchar* name = g_type_name(type);
        result.depart(
            std::format("the type '{}' is not an enumeration", name != nullptr ? name : ""));
        return nullptr;
    }
    return owned_class<GEnumClass>{static_cast<GEnumClass*>(g_type_class_ref(type))};
}

// Returns the nick of each code: the first of several, as g_enum_get_value() does. That function
// would search the whole table for each code.
std::map<std::uint32_t, const gchar*> nicks_by_code(const GEnumClass& formats) {
    std::map<std::uint32_t, const gchar*> nicks;
    for (guint i = 0; i < formats.n_values; ++i) {
        nicks.try_emplace(static_cast<std::uint32_t>(formats.values[i].value),
                          formats.values[i].value_nick);
    }
    return nicks;
}

bool is_lower_case(const gchar* text) {
    if (g_utf8_validate(text, -1, nullptr) == FALSE) {
        return std::ranges::none_of(std::string_view(text),
                                    [](char c) { return g_ascii_isupper(c) != FALSE; });
    }
    for (; *text != '\0'; text = g_utf8_next_char(text)) {
        if (g_unichar_isupper(g_utf8_get_char(text)) != FALSE) {
            return false;
        }
    }
    return true;
}

void check_nicks(const video_service&, verdict& result) {
    const owned_class<GEnumClass> formats = format_class(result);
    if (formats == nullptr) {
        return;
    }
    const auto nicks = nicks_by_code(*formats);
    for (guint i = 0; i < formats->n_values; ++i) {
        const auto code = static_cast<std::uint32_t>(formats->values[i].value);
        const gchar* nick = nicks.at(code);
        if (nick == nullptr) {
            result.depart(std::format("format {} has no nick", code));
        } else {
            result.expect(is_lower_case(nick), "format {} is '{}'", code, nick);
        }
    }
}

void check_unknown_codes(const video_service&, verdict& result) {
    const owned_class<GEnumClass> formats = format_class(result);
    if (formats == nullptr) {
        return;
    }
    const auto nicks = nicks_by_code(*formats);
    std::uint32_t lowest = 0;
    std::uint32_t highest = 0xFFFFFFFF;
    while (nicks.contains(lowest)) {
        ++lowest;
    }
    while (nicks.contains(highest)) {
        --highest;
    }
    for (const std::uint32_t code : {lowest, highest}) {
        const GEnumValue* value = g_enum_get_value(formats.get(), static_cast<gint>(code));
        if (value == nullptr) {
            result.pass();
        } else {
            result.depart(std::format("format {} is '{}'", code,
                                      value->value_nick != nullptr ? value->value_nick : ""));
        }
    }
}

constexpr check format_table[] = {
    {"nicks of formats", check_nicks},
    {"nick of an unknown format", check_unknown_codes},
};

}  // namespace

std::span<const check> format_checks() {
    return format_table;
}

}  // namespace probe
