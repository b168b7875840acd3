#include <algorithm>

#include "replay/current.h"
#include "replay/object.h"

namespace {

GType register_formats() {
    const auto& loaded = replay::current();
    std::span<const snapshot::format_record> formats = snapshot::default_formats;
    if (loaded && (*loaded)->formats) {
        formats = *(*loaded)->formats;
    }
    std::size_t length = 0;
    for (const auto& format : formats) {
        length += format.nick.size() + 1;
    }
    // The type refers to its values and to their nicks until the process ends.
    auto* values = g_new0(GEnumValue, formats.size() + 1);
    auto* nicks = g_new0(char, length);
    for (GEnumValue* value = values; const auto& format : formats) {
        std::ranges::copy(format.nick, nicks);
        *value++ = {static_cast<gint>(format.code), nicks, nicks};
        nicks += format.nick.size() + 1;
    }
    return g_enum_register_static("OruFormat", values);  // NOLINT(clang-analyzer-unix.Malloc)
}

}  // namespace

GType oru_format_get_type(void) {
    static const GType type = register_formats();
    return type;
}
