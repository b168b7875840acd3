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

std::string_view take_line(std::size_t columns, std::string_view& text) {
    std::size_t taken = 0;
    std::size_t after_word = 0;  // the end of the last word that fits
    std::size_t at = 0;
    for (; at < text.size();
         at = static_cast<std::size_t>(g_utf8_next_char(&text[at]) - &text[0])) {
        if (text[at] == ' ') {
            after_word = at;
        }
        taken += columns_of_character(g_utf8_get_char(&text[at]));
        if (taken > columns) {
            break;
        }
    }
    const bool is_whole = at == text.size();
    const std::size_t end = is_whole || after_word == 0 ? at : after_word;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + (end < text.size() && text[end] == ' ' ? 1 : 0));
    return line;
}

}  // namespace snapshot_tool
