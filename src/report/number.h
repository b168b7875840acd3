// The text form of a double in the reports' JSON.
#pragma once

#include <cstddef>

// What the longest number takes: a sign, 17 digits, a point, and an exponent such as e-308.
inline constexpr std::size_t max_number_size = 24;

// Writes `value` at `out`, where max_number_size bytes are free, and returns the end of the text,
// which has no NUL. The digits are the value's first 17 significant ones, correctly rounded and
// without trailing zeros. A whole number that ends in zeros takes the exponent form (1200 is
// 1.2e+3), as does one below 0.0001; zero of either sign is 0; what is not finite is null.
char* write_number(double value, char* out);
