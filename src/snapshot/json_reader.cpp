#include "snapshot/json_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include <glaze/json/read.hpp>

#include "snapshot/printable.h"

namespace snapshot {
namespace {

constexpr glz::opts json{.null_terminated = true, .comments = false};

// The bytes that end the plain text of a string.
constexpr auto ends_plain_text = [] {
    std::array<bool, 256> table{};
    for (unsigned c = 0; c < 0x20; ++c) {
        table[c] = true;
    }
    table['"'] = table['\\'] = true;
    return table;
}();

// The same for eight bytes at once, the first one in the lowest bits. The lowest bit that is set in
// the result is the high bit of the first byte that ends the plain text.
std::uint64_t ends_of_plain_text(std::uint64_t bytes) {
    constexpr auto each = [](unsigned char c) { return c * std::uint64_t{0x0101010101010101}; };
    // A borrow changes only higher bytes than the first one found.
    const std::uint64_t quote = (bytes ^ each('"')) - each(1);
    const std::uint64_t backslash = (bytes ^ each('\\')) - each(1);
    const std::uint64_t control = bytes - each(0x20);
    return (quote | backslash | control) & ~bytes & each(0x80);
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Returns whether a number cannot end before this byte.
bool goes_on_in_number(char c) {
    return is_digit(c) || c == '.' || c == '+' || c == '-' || (c >= 'A' && c <= 'Z') ||
           (c >= 'a' && c <= 'z');
}

void check_utf8(const char* begin, const char* end) {
    if (glz::validate_utf8(begin, static_cast<std::size_t>(end - begin))) {
        return;
    }
    // Find the place: check one sequence after the other, each as long as its first byte says.
    const char* at = begin;
    while (at != end) {
        const int ones = std::countl_one(static_cast<unsigned char>(*at));
        const auto length = std::min<std::ptrdiff_t>(std::max(ones, 1), end - at);
        if (!glz::validate_utf8(at, static_cast<std::size_t>(length))) {
            break;
        }
        at += length;
    }
    throw complaint{at, "this is not valid UTF-8"};
}

// Replaces the comment at `at` by blanks, except its line breaks. Returns its end.
char* blank_comment(char* at, char* end) {
    char* begin = at;
    if (at[1] == '/') {
        at = std::find_if(at, end, [](char c) { return c == '\n' || c == '\r'; });
    } else {
        const std::string_view rest(at + 2, end);
        const auto length = rest.find("*/");
        if (length == std::string_view::npos) {
            throw complaint{begin, "this comment is not closed"};
        }
        at += 2 + length + 2;
    }
    std::replace_if(begin, at, [](char c) { return c != '\n' && c != '\r'; }, ' ');
    return at;
}

void blank_comments(char* begin, char* end) {
    if (std::memchr(begin, '/', static_cast<std::size_t>(end - begin)) == nullptr) {
        return;
    }
    bool in_string = false;
    for (char* at = begin; at < end; ++at) {
        if (*at == '"') {
            in_string = !in_string;
        } else if (in_string && *at == '\\') {
            ++at;  // an escaped quote does not close the string
        } else if (in_string && *at == '\n') {
            return;  // the string is not closed; reading it will complain
        } else if (!in_string && *at == '/' && (at[1] == '/' || at[1] == '*')) {
            at = blank_comment(at, end) - 1;
        }
    }
}

// Returns the name of the format in which the text is compressed, or NULL.
const char* compression_of(std::string_view text) {
    using namespace std::string_view_literals;
    constexpr std::pair<std::string_view, const char*> formats[] = {
        {"\x1f\x8b"sv, "gzip"}, {"\xfd\x37zXZ\0"sv, "xz"}, {"\x28\xb5\x2f\xfd"sv, "zstd"}};
    for (const auto& [beginning, name] : formats) {
        if (text.starts_with(beginning)) {
            return name;
        }
    }
    return nullptr;
}

}  // namespace

std::string expected(std::string_view what) {
    return std::string("expected ").append(what);
}

void refuse_unknown(const word& name) {
    throw complaint{name.at, "unknown member " + quoted(name.text)};
}

void refuse_duplicate(const word& name) {
    throw complaint{name.at, "duplicate member " + quoted(name.text)};
}

json_reader::json_reader(std::string& text, snapshot::arena& arena)
    : at_(text.data()), end_(text.data() + text.size()), arena_(arena) {
    if (text.empty()) {
        throw complaint{nullptr, "the file is empty"};
    }
    if (const char* compression = compression_of(text); compression != nullptr) {
        throw complaint{nullptr, std::string("is compressed with ") + compression +
                                     "; a snapshot must be decompressed first"};
    }
    if (text.starts_with("\xEF\xBB\xBF")) {
        throw complaint{at_, "the text begins with a byte order mark"};
    }
    if (const void* nul = std::memchr(at_, '\0', text.size()); nul != nullptr) {
        throw complaint{static_cast<const char*>(nul), "this is a NUL byte"};
    }
    check_utf8(at_, end_);
    blank_comments(at_, end_);
}

char json_reader::peek() noexcept {
    glz::context context{};
    glz::skip_ws<json>(context, at_, end_);
    return *at_;
}

void json_reader::unexpected(std::string_view what) {
    const char found = peek();
    if (at_ == end_) {
        throw complaint{at_, expected(what) + ", found the end of the file"};
    }
    if (found > ' ' && found < 0x7f) {
        throw complaint{at_, expected(what) + ", found '" + found + '\''};
    }
    throw complaint{at_, expected(what)};
}

void json_reader::take(char punctuation, std::string_view what) {
    if (peek() != punctuation) {
        unexpected(what);
    }
    ++at_;
}

word json_reader::string(std::string_view what) {
    if (peek() != '"') {
        unexpected(what);
    }
    const char* opening = at_++;
    char* begin = at_;
    skip_plain_text();
    if (*at_ != '"') {
        return {decode(begin), opening};
    }
    *at_++ = '\0';
    return {{begin, at_ - 1}, opening};
}

// Advances to the byte that ends the plain text of a string.
void json_reader::skip_plain_text() {
    while (end_ - at_ >= 8) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, at_, sizeof bytes);
        if constexpr (std::endian::native == std::endian::big) {
            bytes = std::byteswap(bytes);
        }
        if (const std::uint64_t ends = ends_of_plain_text(bytes); ends != 0) {
            at_ += std::countr_zero(ends) / 8;
            return;
        }
        at_ += 8;
    }
    while (!ends_plain_text[static_cast<unsigned char>(*at_)]) {
        ++at_;
    }
}

// Reads the rest of a string from its first byte that is not plain text. Escapes are not decoded in
// place: a decoded line break would change the line numbers of later complaints.
std::string_view json_reader::decode(const char* begin) {
    decoded_.assign(begin, static_cast<const char*>(at_));
    while (*at_ != '"') {
        check_string_byte(begin - 1);
        if (*at_ == '\\') {
            decode_escape();
        } else {
            decoded_ += *at_++;
        }
    }
    ++at_;
    return keep(decoded_);
}

// Complains unless the next byte may be part of the string that begins at `opening`.
void json_reader::check_string_byte(const char* opening) const {
    if (at_ == end_ || (*at_ == '\\' && at_ + 1 == end_)) {
        throw complaint{opening, "this string is not closed"};
    }
    if (static_cast<unsigned char>(*at_) < 0x20) {
        throw complaint{at_, "a string must escape this control character"};
    }
}

void json_reader::decode_escape() {
    const char* escape = at_;
    if (const char meant = read_short_escape(); meant != '\0') {
        decoded_ += meant;
        return;
    }
    const auto is_low_surrogate = [](std::uint32_t unit) { return (unit & 0xFC00) == 0xDC00; };
    std::uint32_t code = read_code_unit(escape);
    if ((code & 0xF800) == 0xD800) {
        std::uint32_t low = 0;
        if (!is_low_surrogate(code) && at_[0] == '\\' && at_[1] == 'u') {
            at_ += 2;
            low = read_code_unit(escape);
        }
        if (!is_low_surrogate(low)) {
            throw complaint{escape, "this surrogate has no partner"};
        }
        code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    }
    if (code == 0) {
        throw complaint{escape, "a text cannot contain a NUL"};
    }
    std::array<char, 4> utf8;
    decoded_.append(utf8.data(), glz::code_point_to_utf8(code, utf8.data()));
}

// Reads a backslash and a letter. Returns the character that they mean, or NUL if four digits
// follow.
char json_reader::read_short_escape() {
    const char letter = at_[1];
    const char meant = glz::char_unescape_table[static_cast<unsigned char>(letter)];
    if (meant == '\0' && letter != 'u') {
        throw complaint{at_, "JSON has no such escape"};
    }
    at_ += 2;
    return meant;
}

// Reads the four digits of the escape.
std::uint32_t json_reader::read_code_unit(const char* escape) {
    const auto value = end_ - at_ < 4 ? UINT32_MAX : glz::hex_to_u32(at_);
    if (value == UINT32_MAX) {
        throw complaint{escape, "\\u needs four hexadecimal digits"};
    }
    at_ += 4;
    return value;
}

std::string_view json_reader::any_value() {
    constexpr std::size_t deepest = 256;
    std::string open;  // the closing bracket of each open array and object
    decoded_.clear();
    do {
        const char first = peek();
        if (first == '{' || first == '[') {
            if (open.size() == deepest) {
                throw complaint{at_, "more than " + std::to_string(deepest) + " levels of nesting"};
            }
            open += first == '{' ? '}' : ']';
            decoded_ += *at_++;
            if (peek() != open.back()) {
                copy_name_in(open.back());
                continue;
            }
        } else {
            copy_scalar();
        }
        while (!open.empty() && peek() == open.back()) {
            decoded_ += *at_++;
            open.pop_back();
        }
        if (!open.empty()) {
            take(',', open.back() == '}' ? "',' or '}'" : "',' or ']'");
            decoded_ += ',';
            copy_name_in(open.back());
        }
    } while (!open.empty());
    return keep(decoded_);
}

// In an object, copies the name of a member and the colon.
void json_reader::copy_name_in(char closing) {
    if (closing == ']') {
        return;
    }
    if (peek() != '"') {
        unexpected("a member name");
    }
    copy_string();
    take(':', "':'");
    decoded_ += ':';
}

void json_reader::copy_scalar() {
    if (*at_ == '"') {
        copy_string();
        return;
    }
    const std::string_view rest(at_, end_);
    for (const std::string_view literal : {"true", "false", "null"}) {
        if (rest.starts_with(literal)) {
            decoded_ += literal;
            at_ += literal.size();
            return;
        }
    }
    decoded_ += number("a JSON value").text;
}

void json_reader::copy_string() {
    const char* opening = at_++;
    while (*at_ != '"') {
        check_string_byte(opening);
        const char* begin = at_;
        if (*at_ != '\\') {
            ++at_;
        } else if (read_short_escape() == '\0') {
            read_code_unit(begin);
        }
    }
    ++at_;
    decoded_.append(opening, static_cast<const char*>(at_));
}

bool json_reader::boolean(std::string_view what) {
    bool value = false;
    glz::context context{};
    peek();
    const char* it = at_;
    glz::parse<glz::JSON>::op<json>(value, context, it, static_cast<const char*>(end_));
    if (context.error != glz::error_code::none) {
        unexpected(what);
    }
    at_ += it - at_;
    return value;
}

written_number json_reader::number(std::string_view what) {
    const char first = peek();
    if (first != '-' && !is_digit(first)) {
        unexpected(what);
    }
    // Nearly every number is a whole one with few enough digits for 64 bits.
    constexpr std::ptrdiff_t certain_digits = 18;
    const char* begin = at_;
    const char* digits = first == '-' ? begin + 1 : begin;
    const char* it = digits;
    std::int64_t value = 0;
    while (is_digit(*it) && it - digits < certain_digits) {
        value = 10 * value + (*it++ - '0');
    }
    if (it == digits || (*digits == '0' && it - digits > 1) || goes_on_in_number(*it)) {
        return long_number();
    }
    at_ += it - begin;
    return {{begin, it}, true, first == '-' ? -value : value};
}

written_number json_reader::long_number() {
    const char* begin = at_;
    const char* it = at_;
    glz::context context{};
    glz::skip_number_with_validation(context, it, static_cast<const char*>(end_));
    if (context.error != glz::error_code::none || goes_on_in_number(*it)) {
        throw complaint{begin, "this is not a JSON number"};
    }
    at_ += it - begin;
    const std::string_view text(begin, it);
    if (text.find_first_of(".eE") != std::string_view::npos) {
        return {text, false, std::nullopt};
    }
    std::int64_t value = 0;
    const bool fits = std::from_chars(begin, it, value).ec == std::errc();
    return {text, true, fits ? std::optional(value) : std::nullopt};
}

std::uint32_t json_reader::natural(std::uint32_t max) {
    const auto what = [max] { return "a whole number from 0 to " + std::to_string(max); };
    const char first = peek();
    if (first != '-' && !is_digit(first)) {
        unexpected(what());
    }
    const char* begin = at_;
    const auto value = number("").value;
    if (!value || *value < 0 || *value > max) {
        throw complaint{begin, expected(what())};
    }
    return static_cast<std::uint32_t>(*value);
}

std::int64_t json_reader::whole_value(const written_number& written) const {
    if (!written.whole) {
        throw complaint{written.text.data(), "expected a whole number"};
    }
    if (!written.value) {
        throw complaint{written.text.data(),
                        "this whole number is outside the signed 64-bit range"};
    }
    return *written.value;
}

double json_reader::double_value(const written_number& written) const {
    double value = 0;
    glz::fast_float::from_chars(written.text.data(), written.text.data() + written.text.size(),
                                value);
    if (std::isinf(value)) {
        throw complaint{written.text.data(), "this number is too large for a double"};
    }
    return value;
}

bool json_reader::first_member(std::string_view what, word& name) {
    take('{', what);
    if (peek() == '}') {
        ++at_;
        return false;
    }
    read_name(name);
    return true;
}

bool json_reader::next_member(word& name) {
    if (!another('}', "',' or '}'")) {
        return false;
    }
    read_name(name);
    return true;
}

void json_reader::read_name(word& name) {
    peek();
    name = string("a member name");
    take(':', "':'");
    peek();
}

bool json_reader::first_element(std::string_view what) {
    take('[', what);
    if (peek() == ']') {
        ++at_;
        return false;
    }
    return true;
}

bool json_reader::next_element() {
    if (!another(']', "',' or ']'")) {
        return false;
    }
    peek();
    return true;
}

// Reads a comma, or the end of a list. Returns whether it is a comma.
bool json_reader::another(char closing, std::string_view what) {
    const char next = peek();
    if (next != ',' && next != closing) {
        unexpected(what);
    }
    ++at_;
    return next == ',';
}

void json_reader::finish() {
    if (peek() != '\0' || at_ != end_) {
        unexpected("nothing more");
    }
}

std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 60;
    std::size_t length = std::min(text.size(), longest);
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
        --length;  // whole characters only
    }
    return '\'' + printable(text.substr(0, length)) + (length < text.size() ? "...'" : "'");
}

}  // namespace snapshot
