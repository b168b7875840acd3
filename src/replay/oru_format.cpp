#include "replay/object.h"
#include "replay/snapshot.h"

namespace {

constexpr oru::format_record usual_formats[] = {
    {"h264", 0}, {"h265", 1}, {"jpeg", 2}, {"raw", 3}, {"av1", 10}};

GType register_formats() {
    const auto& now = oru::current();
    std::span<const oru::format_record> formats = usual_formats;
    if (now && (*now)->formats) {
        formats = *(*now)->formats;
    }
    // The type refers to its values for as long as the process lives.
    auto* values = g_new0(GEnumValue, formats.size() + 1);
    for (GEnumValue* value = values; const auto& format : formats) {
        const char* nick = g_intern_string(format.nick);
        *value++ = {static_cast<gint>(format.code), nick, nick};
    }
    return g_enum_register_static("OruFormat", values);  // NOLINT(clang-analyzer-unix.Malloc)
}

}  // namespace

GType oru_format_get_type(void) {
    static const GType type = register_formats();
    return type;
}
