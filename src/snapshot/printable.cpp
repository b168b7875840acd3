#include "snapshot/printable.h"

#include <format>

#include <glib.h>

namespace {

// A character that a terminal shows as itself, in its place.
bool is_shown(gunichar character) {
    switch (g_unichar_type(character)) {
        case G_UNICODE_LINE_SEPARATOR:
        case G_UNICODE_PARAGRAPH_SEPARATOR:
            return false;
        default:
            return g_unichar_isprint(character) != FALSE;
    }
}

std::string written_out(gunichar character) {
    switch (character) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return character < 0x80      ? std::format("\\x{:02x}", character)
                   : character < 0x10000 ? std::format("\\u{:04x}", character)
                                         : std::format("\\U{:08x}", character);
    }
}

}  // namespace

std::string printable(std::string_view text) {
    constexpr gunichar invalid = 0xFFFFFFFE;  // or one more: broken off
    std::string shown;
    while (!text.empty()) {
        const gunichar character =
            g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
        if (character >= invalid) {
            shown += std::format("\\x{:02x}", static_cast<unsigned char>(text.front()));
            text.remove_prefix(1);
            continue;
        }
        const auto length = static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
        shown += is_shown(character) ? std::string{text.substr(0, length)} : written_out(character);
        text.remove_prefix(length);
    }
    return shown;
}
