// The service's enumeration of video formats.
#include <algorithm>
#include <array>
#include <cstdint>
#include <format>
#include <memory>
#include <string>

#include <oru.h>

#include "probe/checks.h"
#include "video/owned.h"

namespace {

// Returns the enumeration, or NULL, having said so, when it is none.
owned_class<GEnumClass> formats(verdict& told) {
    const GType type = oru_format_get_type();
    if (!G_TYPE_IS_ENUM(type)) {
        const gchar* name = g_type_name(type);
        told.departs(std::format("the type '{}' is no enumeration", name != nullptr ? name : ""));
        return nullptr;
    }
    return owned_class<GEnumClass>{static_cast<GEnumClass*>(g_type_class_ref(type))};
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

void nicks(const probed_service&, verdict& told) {
    const owned_class<GEnumClass> all = formats(told);
    for (guint i = 0; all != nullptr && i < all->n_values; ++i) {
        const gint number = all->values[i].value;
        const auto code = static_cast<std::uint32_t>(number);
        const GEnumValue* found = g_enum_get_value(all.get(), number);
        const gchar* nick = found != nullptr ? found->value_nick : nullptr;
        if (nick == nullptr) {
            told.departs(std::format("format {} has no nick", code));
        } else {
            told.expect(is_lower_case(nick), "format {} is '{}'", code, nick);
        }
    }
}

void unknown_number(const probed_service&, verdict& told) {
    const owned_class<GEnumClass> all = formats(told);
    if (all == nullptr) {
        return;
    }
    const auto is_known = [&](std::uint32_t code) {
        return std::any_of(all->values, all->values + all->n_values, [&](const GEnumValue& value) {
            return static_cast<std::uint32_t>(value.value) == code;
        });
    };
    // The nearest that is not known, and one far from all.
    std::uint32_t low = 0;
    std::uint32_t high = 0xFFFFFFFF;
    while (is_known(low)) {
        ++low;
    }
    while (is_known(high)) {
        --high;
    }
    for (const std::uint32_t code : {low, high}) {
        const GEnumValue* found = g_enum_get_value(all.get(), static_cast<gint>(code));
        if (found == nullptr) {
            told.is_right();
        } else {
            told.departs(std::format("format {} is '{}'", code,
                                     found->value_nick != nullptr ? found->value_nick : ""));
        }
    }
}

constexpr probe_check checks[] = {
    {"nicks of formats", nicks},
    {"nick of an unknown format", unknown_number},
};

}  // namespace

std::span<const probe_check> format_checks() {
    return checks;
}
