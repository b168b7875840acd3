#include "replay/current.h"
#include "replay/object.h"

namespace {

GType register_formats() {
    const auto& loaded = replay::current();
    std::span<const snapshot::format_record> formats = snapshot::default_formats;
    if (loaded && (*loaded)->formats) {
        formats = *(*loaded)->formats;
    }
    // The type refers to its values until the process ends.
    auto* values = g_new0(GEnumValue, formats.size() + 1);
    for (GEnumValue* value = values; const auto& format : formats) {
        const char* nick = g_intern_string(format.nick.data());
        *value++ = {static_cast<gint>(format.code), nick, nick};
    }
    return g_enum_register_static("OruFormat", values);  // NOLINT(clang-analyzer-unix.Malloc)
}

}  // namespace

GType oru_format_get_type(void) {
    static const GType type = register_formats();
    return type;
}
