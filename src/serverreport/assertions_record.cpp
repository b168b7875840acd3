#include "serverreport/assertions_record.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

#include "report/json.h"

namespace {

constexpr std::size_t cut_off = std::string_view::npos;

// Returns the end of the string, comment or single byte that begins at `start`, or cut_off if the
// text ends within a block comment.
std::size_t end_of_token(std::string_view text, std::size_t start) {
    const std::string_view rest = text.substr(start);
    if (rest.starts_with('"')) {
        std::size_t end = start + 1;
        while (end < text.size() && text[end] != '"') {
            end += text[end] == '\\' ? 2 : 1;
        }
        return std::min(end + 1, text.size());
    }
    if (rest.starts_with("//")) {
        return std::min(text.find_first_of("\r\n", start), text.size());
    }
    if (rest.starts_with("/*")) {
        const std::size_t end = text.find("*/", start + 2);
        return end == std::string_view::npos ? cut_off : end + 2;
    }
    return start + 1;
}

// Returns the text with every comment replaced by a blank, or nothing if it ends within a block
// comment.
std::optional<std::string> without_comments(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = end_of_token(text, start);
        if (end == cut_off) {
            return std::nullopt;
        }
        const std::string_view token = text.substr(start, end - start);
        result += token.starts_with("//") || token.starts_with("/*") ? " " : token;
        start = end;
    }
    return result;
}

}  // namespace

std::string compact_record(std::string record) {
    // The minifier stops at a comment without an error.
    std::optional<std::string> plain = without_comments(record);
    if (!plain || glz::validate_json(*plain)) {
        return record;
    }
    return glz::minify_json(*plain);
}
