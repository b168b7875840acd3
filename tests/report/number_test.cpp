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

namespace {

std::string written(double value) {
    char text[max_number_size];
    return {text, write_number(value, text)};
}

// The same form from another source: the C library's 17 digits, spelt anew.
std::string respelt(double value) {
    if (value == 0) {
        return "0";
    }
    char scientific[32];
    std::snprintf(scientific, sizeof scientific, "%.16e", std::fabs(value));
    const std::string text = scientific;
    const std::size_t mark = text.find('e');
    const int exponent = std::atoi(text.c_str() + mark + 1);
    std::string digits = text.substr(0, 1) + text.substr(2, mark - 2);
    while (digits.size() > 1 && digits.back() == '0') {
        digits.pop_back();
    }
    const int count = static_cast<int>(digits.size());
    std::string result = value < 0 ? "-" : "";
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

TEST(Number, IsWrittenInTheReportsForm) {
    for (const auto& [value, text] : forms) {
        EXPECT_EQ(written(value), text);
    }
}

// Every exponent, with mantissas at both ends, in the middle, and by chance.
TEST(Number, AgreesWithTheCLibraryForEveryExponent) {
    std::mt19937_64 random(20261120);
    for (std::uint64_t exponent = 0; exponent < 2047; ++exponent) {
        for (int sample = 0; sample < 1000; ++sample) {
            constexpr std::uint64_t mantissa_bits = (std::uint64_t{1} << 52) - 1;
            std::uint64_t mantissa = random() & mantissa_bits;
            if (sample < 16) {
                mantissa = static_cast<std::uint64_t>(sample);
            } else if (sample < 32) {
                mantissa = mantissa_bits - static_cast<std::uint64_t>(sample - 16);
            }
            const double value = std::bit_cast<double>(exponent << 52 | mantissa);
            ASSERT_EQ(written(value), respelt(value)) << std::hexfloat << value;
            ASSERT_EQ(written(-value), respelt(-value)) << std::hexfloat << -value;
        }
    }
}

TEST(Number, AgreesWithTheCLibraryForShortDecimals) {
    for (int thousandths = 0; thousandths < 200000; ++thousandths) {
        const double value = thousandths / 1000.0;
        ASSERT_EQ(written(value), respelt(value)) << value;
    }
}

}  // namespace
