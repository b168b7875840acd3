// The record of earlier assertions, from any file content: only blanks and comments may disappear,
// and JSON becomes the same JSON on one line.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <glib.h>

#include "fuzz/json_text.h"
#include "fuzz/require.h"
#include "serverreport/assertions_record.h"

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Returns the text without comments and without blanks outside strings. An unclosed comment counts
// as text.
std::string essence(std::string_view text) {
    std::string kept;
    bool in_string = false;
    while (!text.empty()) {
        std::size_t length = 1;
        bool keep = true;
        if (in_string) {
            length = text[0] == '\\' && text.size() > 1 ? 2 : 1;
            in_string = text[0] != '"';
        } else if (text.starts_with("//")) {
            while (length < text.size() && text[length] != '\n' && text[length] != '\r') {
                ++length;
            }
            keep = false;
        } else if (text.starts_with("/*") && text.find("*/", 2) != text.npos) {
            length = text.find("*/", 2) + 2;
            keep = false;
        } else {
            in_string = text[0] == '"';
            keep = !is_blank(text[0]);
        }
        if (keep) {
            kept += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return kept;
}

// A record that nests deeper is printed unchanged.
constexpr std::size_t deepest_json = 256;

// Returns the nesting depth of a JSON value.
std::size_t depth(const json_text& value) {
    std::size_t deepest = 0;
    for (const json_text& element : value.elements) {
        deepest = std::max(deepest, depth(element));
    }
    return deepest + 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string record(reinterpret_cast<const char*>(data), size);
    const std::string compact = compact_record(record);

    require(essence(compact) == essence(record), "every byte outside comments is printed", compact);
    require(compact == record || compact == essence(record), "compact or unchanged", compact);
    const auto before = parse_json(record, {.comments = true});
    const bool is_utf8 = g_utf8_validate_len(record.data(), record.size(), nullptr) != FALSE;
    if (before && is_utf8 && depth(*before) < deepest_json) {
        require(compact == essence(record), "JSON becomes compact", compact);
        const auto after = parse_json(compact);
        require(after && *after == *before, "compact JSON has the same value", compact);
    }
    if (!before) {
        require(compact == record, "text that is not JSON stays unchanged", compact);
    }
    return 0;
}
