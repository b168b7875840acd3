#include "snapshot_tool/columns.h"

#include <glib.h>

namespace snapshot_tool {
namespace {

std::size_t columns_of_character(gunichar character) {
    if (character < 0x80) {
        return 1;  // nearly every character is one
    }
    if (g_unichar_iszerowidth(character) != FALSE) {
        return 0;
    }
    return g_unichar_iswide(character) != FALSE ? 2 : 1;
}

}  // namespace

std::size_t columns_of(std::string_view text) {
    std::size_t columns = 0;
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end; at = g_utf8_next_char(at)) {
        columns += columns_of_character(g_utf8_get_char(at));
    }
    return columns;
}

std::string cut_to(std::size_t columns, std::string_view text) {
    if (columns_of(text) <= columns) {
        return std::string{text};
    }
    std::size_t taken = 1;  // by the ellipsis
    const char* at = text.data();
    while (true) {
        taken += columns_of_character(g_utf8_get_char(at));
        if (taken > columns) {
            return std::string{text.data(), at} + "…";
        }
        at = g_utf8_next_char(at);
    }
}

}  // namespace snapshot_tool
