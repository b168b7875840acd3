#include "report/number.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

constexpr int significant_digits = 17;

char* put(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// Writes `digits`, which have no trailing zeros. The first one has the place value 10^exponent.
char* put_digits(char* out, std::string_view digits, int exponent) {
    const int count = static_cast<int>(digits.size());
    if (exponent >= count || exponent < -4) {
        *out++ = digits.front();
        if (count > 1) {
            *out++ = '.';
            out = put(out, digits.substr(1));
        }
        out = put(out, exponent < 0 ? "e-" : "e+");
        return std::to_chars(out, out + 3, std::abs(exponent)).ptr;
    }
    if (exponent < 0) {
        out =
            put(out, std::string_view("0.0000").substr(0, static_cast<std::size_t>(1 - exponent)));
        return put(out, digits);
    }
    const auto whole = static_cast<std::size_t>(exponent) + 1;
    out = put(out, digits.substr(0, whole));
    if (whole < digits.size()) {
        *out++ = '.';
        out = put(out, digits.substr(whole));
    }
    return out;
}

std::string_view without_trailing_zeros(std::string_view digits) {
    return digits.substr(0, digits.find_last_not_of('0') + 1);
}

}  // namespace

char* write_number(double value, char* out) {
    if (!std::isfinite(value)) {
        return put(out, "null");
    }
    if (value == 0) {
        return put(out, "0");
    }
    if (value < 0) {
        *out++ = '-';
        value = -value;
    }

    char text[significant_digits + 8];  // d.ddddddddddddddddde-ddd
    // Most numbers are whole and have at most 17 digits, so that nothing has to be rounded.
    if (constexpr double first_longer = 1e17; value < first_longer) {
        const auto whole = static_cast<std::uint64_t>(value);
        if (static_cast<double>(whole) == value) {
            const char* end = std::to_chars(text, text + sizeof text, whole).ptr;
            return put_digits(out, without_trailing_zeros({text, end}),
                              static_cast<int>(end - text) - 1);
        }
    }
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific,
                                    significant_digits - 1)
                          .ptr;
    const char* mark = text + significant_digits + 1;
    int exponent = 0;
    std::from_chars(mark + 2, end, exponent);
    if (mark[1] == '-') {
        exponent = -exponent;
    }
    text[1] = text[0];  // removes the point
    return put_digits(out, without_trailing_zeros({text + 1, significant_digits}), exponent);
}
