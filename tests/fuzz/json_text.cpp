#include "fuzz/json_text.h"

#include <algorithm>
#include <cstdint>

namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

struct not_json {};

class parser {
  public:
    parser(std::string_view text, json_extensions extensions)
        : rest_(text), extensions_(extensions) {}

    json_text whole() {
        json_text value = read_value();
        skip_blanks();
        require(rest_.empty());
        return value;
    }

  private:
    static void require(bool condition) {
        if (!condition) {
            throw not_json{};
        }
    }

    bool take(std::string_view start) {
        if (!rest_.starts_with(start)) {
            return false;
        }
        rest_.remove_prefix(start.size());
        return true;
    }

    char next() {
        require(!rest_.empty());
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    void skip_blanks() {
        for (;;) {
            if (take(" ") || take("\t") || take("\n") || take("\r")) {
                continue;
            }
            if (extensions_.comments && take("//")) {
                while (!rest_.empty() && rest_.front() != '\n' && rest_.front() != '\r') {
                    next();
                }
                continue;
            }
            if (extensions_.comments && take("/*")) {
                while (!take("*/")) {
                    next();
                }
                continue;
            }
            return;
        }
    }

    json_text read_value() {
        skip_blanks();
        json_text value;
        if (take("{")) {
            value.kind = json_kind::object;
            read_list('}', [&] {
                skip_blanks();
                require(take("\""));
                value.names.push_back(read_string());
                skip_blanks();
                require(take(":"));
                value.elements.push_back(read_value());
            });
        } else if (take("[")) {
            value.kind = json_kind::array;
            read_list(']', [&] { value.elements.push_back(read_value()); });
        } else if (take("\"")) {
            value.kind = json_kind::string;
            value.text = read_string();
        } else if (take("true")) {
            value.text = "true";
        } else if (take("false")) {
            value.text = "false";
        } else if (take("null")) {
            value.text = "null";
        } else {
            value.kind = json_kind::number;
            value.text = read_number();
        }
        return value;
    }

    template <class Read>
    void read_list(char closing, const Read& read_element) {
        skip_blanks();
        if (take({&closing, 1})) {
            return;
        }
        for (;;) {
            read_element();
            skip_blanks();
            const char c = next();
            if (c == closing) {
                return;
            }
            require(c == ',');
        }
    }

    std::string read_number() {
        const std::string_view start = rest_;
        take("-");
        if (!take("0")) {
            read_digits();
        }
        if (take(".")) {
            read_digits();
        }
        if (take("e") || take("E")) {
            if (!take("+")) {
                take("-");
            }
            read_digits();
        }
        return std::string(start.substr(0, start.size() - rest_.size()));
    }

    void read_digits() {
        require(!rest_.empty() && is_digit(rest_.front()));
        while (!rest_.empty() && is_digit(rest_.front())) {
            next();
        }
    }

    std::string read_string() {
        std::string text;
        for (;;) {
            const char c = next();
            if (c == '"') {
                return text;
            }
            if (c == '\\') {
                read_escape(text);
                continue;
            }
            require(extensions_.control_bytes || static_cast<unsigned char>(c) >= 0x20);
            text += c;
        }
    }

    std::uint32_t read_unit() {
        std::uint32_t unit = 0;
        for (int i = 0; i < 4; ++i) {
            const char c = next();
            const char lower = static_cast<char>(c | 0x20);
            require(is_digit(c) || (lower >= 'a' && lower <= 'f'));
            unit = unit << 4 | static_cast<std::uint32_t>(is_digit(c) ? c - '0' : lower - 'a' + 10);
        }
        return unit;
    }

    void read_escape(std::string& text) {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view decoded = "\"\\/\b\f\n\r\t";
        const char c = next();
        if (c != 'u') {
            const std::size_t index = letters.find(c);
            require(index != std::string_view::npos);
            text += decoded[index];
            return;
        }
        std::uint32_t code = read_unit();
        if (code >= 0xD800 && code <= 0xDFFF && !extensions_.half_surrogates) {
            require(code <= 0xDBFF && take("\\u"));
            const std::uint32_t low = read_unit();
            require(low >= 0xDC00 && low <= 0xDFFF);
            code = 0x10000 + ((code - 0xD800) << 10 | (low - 0xDC00));
        }
        append_utf8(text, code);
    }

    static void append_utf8(std::string& text, std::uint32_t code) {
        if (code < 0x80) {
            text += static_cast<char>(code);
            return;
        }
        const int continuation_bytes = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        constexpr unsigned char lead[] = {0, 0xC0, 0xE0, 0xF0};
        text += static_cast<char>(lead[continuation_bytes] | code >> 6 * continuation_bytes);
        for (int i = continuation_bytes - 1; i >= 0; --i) {
            text += static_cast<char>(0x80 | (code >> 6 * i & 0x3F));
        }
    }

    std::string_view rest_;
    json_extensions extensions_;
};

}  // namespace

std::optional<json_text> parse_json(std::string_view text, json_extensions extensions) {
    try {
        return parser(text, extensions).whole();
    } catch (const not_json&) {
        return std::nullopt;
    }
}

std::size_t nesting(std::string_view json) {
    std::size_t open = 0;
    std::size_t deepest = 0;
    bool in_string = false;
    for (std::size_t at = 0; at < json.size(); ++at) {
        const char c = json[at];
        if (in_string && c == '\\') {
            ++at;
        } else if (c == '"') {
            in_string = !in_string;
        } else if (!in_string && (c == '[' || c == '{')) {
            deepest = std::max(deepest, ++open);
        } else if (!in_string && (c == ']' || c == '}')) {
            --open;
        }
    }
    return deepest;
}
