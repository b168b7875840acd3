#include "report/number.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "report/exact_digits.h"

namespace {

std::string written(double value) {
    char text[max_number_size];
    return {text, write_number(value, text)};
}

// Returns the reports' form of a number with these digits, of which the first counts 10^exponent.
std::string report_form(bool negative, std::string digits, int exponent) {
    while (digits.size() > 1 && digits.back() == '0') {
        digits.pop_back();
    }
    const int count = static_cast<int>(digits.size());
    std::string result = negative ? "-" : "";
    if (exponent >= count || exponent < -4) {
        result += digits[0];
        if (count > 1) {
            result += "." + digits.substr(1);
        }
        return result + (exponent < 0 ? "e-" : "e+") + std::to_string(std::abs(exponent));
    }
    if (exponent < 0) {
        return result + "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
    }
    const auto whole = static_cast<std::size_t>(exponent) + 1;
    result += digits.substr(0, whole);
    return whole < digits.size() ? result + "." + digits.substr(whole) : result;
}

// Returns the reports' form, made from the C library's 17 digits.
std::string c_library_form(double value) {
    if (value == 0) {
        return "0";
    }
    char scientific[32];
    std::snprintf(scientific, sizeof scientific, "%.16e", std::fabs(value));
    const std::string text = scientific;
    const std::size_t mark = text.find('e');
    return report_form(value < 0, text.substr(0, 1) + text.substr(2, mark - 2),
                       std::atoi(text.c_str() + mark + 1));
}

struct form {
    double value;
    const char* text;
};

constexpr form forms[] = {{0.0, "0"},
                          {-0.0, "0"},
                          {1, "1"},
                          {7, "7"},
                          {12, "12"},
                          {101, "101"},
                          {31, "31"},
                          {1234, "1234"},
                          {4294967295.0, "4294967295"},
                          {10, "1e+1"},
                          {20, "2e+1"},
                          {30, "3e+1"},
                          {100, "1e+2"},
                          {120, "1.2e+2"},
                          {1000, "1e+3"},
                          {1080, "1.08e+3"},
                          {1200, "1.2e+3"},
                          {1500, "1.5e+3"},
                          {1920, "1.92e+3"},
                          {2000000, "2e+6"},
                          {29.97, "29.969999999999999"},
                          {0.1, "0.10000000000000001"},
                          {0.5, "0.5"},
                          {2.5, "2.5"},
                          {0.0001, "0.0001"},
                          {0.00001, "1.0000000000000001e-5"},
                          {-1, "-1"},
                          {-120, "-1.2e+2"},
                          {-0.25, "-0.25"},
                          {1e17, "1e+17"},
                          {12345678901234567.0, "12345678901234568"},
                          {5e-324, "4.9406564584124654e-324"},
                          {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
                          {std::numeric_limits<double>::infinity(), "null"},
                          {-std::numeric_limits<double>::infinity(), "null"},
                          {std::numeric_limits<double>::quiet_NaN(), "null"}};

TEST(number, is_written_in_the_reports_form) {
    for (const auto& [value, text] : forms) {
        EXPECT_EQ(written(value), text);
    }
}

constexpr std::uint64_t mantissa_bits = (std::uint64_t{1} << 52) - 1;

// Every exponent, with the smallest, the largest and random mantissas.
TEST(number, agrees_with_the_c_library_for_every_exponent) {
    std::mt19937_64 random(20261120);
    for (std::uint64_t exponent = 0; exponent < 2047; ++exponent) {
        for (int sample = 0; sample < ORU_NUMBER_SAMPLES; ++sample) {
            std::uint64_t mantissa = random() & mantissa_bits;
            if (sample < 16) {
                mantissa = static_cast<std::uint64_t>(sample);
            } else if (sample < 32) {
                mantissa = mantissa_bits - static_cast<std::uint64_t>(sample - 16);
            }
            const double value = std::bit_cast<double>(exponent << 52 | mantissa);
            ASSERT_EQ(written(value), c_library_form(value)) << std::hexfloat << value;
            ASSERT_EQ(written(-value), c_library_form(-value)) << std::hexfloat << -value;
        }
    }
}

// Every exponent, compared with digits computed without floating-point operations.
TEST(number, agrees_with_whole_number_arithmetic_for_every_exponent) {
    std::mt19937_64 random(20261121);
    for (std::uint64_t exponent = 0; exponent < 2047; ++exponent) {
        for (const std::uint64_t mantissa :
             {std::uint64_t{0}, std::uint64_t{1}, mantissa_bits, mantissa_bits / 2 + 1,
              random() & mantissa_bits, random() & mantissa_bits}) {
            const std::uint64_t bits = exponent << 52 | mantissa;
            if (bits == 0) {
                continue;
            }
            const auto [digits, first] = digits_of(bits);
            ASSERT_EQ(written(std::bit_cast<double>(bits)), report_form(false, digits, first))
                << std::hex << bits;
        }
    }
}

// Some fractions of large whole numbers have exactly 18 digits, the last of which is 5: a tie,
// which rounds to the even digit.
TEST(number, agrees_with_whole_number_arithmetic_for_ties) {
    constexpr std::uint64_t large = std::uint64_t{1} << 52;
    for (std::uint64_t whole = large; whole < large + 2000; ++whole) {
        for (const double divisor : {1.0, 2.0, 4.0, 8.0, 16.0, 32.0, 64.0}) {
            const double value = static_cast<double>(whole) / divisor;
            const auto [digits, first] = digits_of(std::bit_cast<std::uint64_t>(value));
            ASSERT_EQ(written(value), report_form(false, digits, first))
                << whole << " / " << divisor;
        }
    }
}

TEST(number, agrees_with_the_c_library_for_short_decimals) {
    for (int thousandths = 0; thousandths < 200000; ++thousandths) {
        const double value = thousandths / 1000.0;
        ASSERT_EQ(written(value), c_library_form(value)) << value;
    }
}

}  // namespace
