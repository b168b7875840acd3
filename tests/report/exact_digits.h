// The decimal digits of a double, computed by whole-number arithmetic alone, without floating-point
// operations or formatting.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct exact_digits {
    std::string digits;  // 17, rounded to nearest, ties to even
    int exponent;        // the first digit counts 10^exponent
};

// A natural number as groups of nine decimal digits, the lowest first.
class natural {
  public:
    explicit natural(std::uint64_t value) {
        for (; value != 0; value /= base) {
            groups_.push_back(static_cast<std::uint32_t>(value % base));
        }
    }

    void multiply(std::uint32_t factor) {
        std::uint64_t carry = 0;
        for (std::uint32_t& group : groups_) {
            carry += std::uint64_t{group} * factor;
            group = static_cast<std::uint32_t>(carry % base);
            carry /= base;
        }
        for (; carry != 0; carry /= base) {
            groups_.push_back(static_cast<std::uint32_t>(carry % base));
        }
    }

    std::string decimal() const {
        std::string text;
        for (std::size_t i = groups_.size(); i-- > 0;) {
            std::string group = std::to_string(groups_[i]);
            if (!text.empty()) {
                group.insert(0, 9 - group.size(), '0');
            }
            text += group;
        }
        return text;
    }

  private:
    static constexpr std::uint32_t base = 1'000'000'000;
    std::vector<std::uint32_t> groups_;
};

// Returns the digits of the positive finite double that `bits` represents.
inline exact_digits digits_of(std::uint64_t bits) {
    const auto exponent_bits = static_cast<int>(bits >> 52);
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
    const bool is_normal = exponent_bits != 0;
    int power = (is_normal ? exponent_bits : 1) - 1075;  // the value is significand * 2^power

    // m * 2^-k is m * 5^k / 10^k, so m * 5^k has all digits of the value, with k decimals.
    natural value(is_normal ? fraction | std::uint64_t{1} << 52 : fraction);
    const int decimals = power < 0 ? -power : 0;
    for (int left = decimals; left > 0; left -= 13) {
        std::uint32_t factor = 1;
        for (int i = 0; i < std::min(left, 13); ++i) {
            factor *= 5;
        }
        value.multiply(factor);
    }
    for (; power > 0; power -= 31) {
        value.multiply(std::uint32_t{1} << std::min(power, 31));
    }
    const std::string all = value.decimal();

    constexpr std::size_t precision = 17;
    exact_digits result{all.substr(0, precision), static_cast<int>(all.size()) - 1 - decimals};
    result.digits.resize(precision, '0');
    if (all.size() <= precision) {
        return result;
    }
    const std::string rest = all.substr(precision);
    const std::string tie = "5" + std::string(rest.size() - 1, '0');
    const bool is_odd = (result.digits.back() - '0') % 2 != 0;
    if (rest < tie || (rest == tie && !is_odd)) {
        return result;
    }
    std::size_t at = precision;
    while (at > 0 && result.digits[at - 1] == '9') {
        result.digits[--at] = '0';
    }
    if (at > 0) {
        ++result.digits[at - 1];
    } else {
        result.digits = "1" + result.digits.substr(0, precision - 1);
        ++result.exponent;
    }
    return result;
}
