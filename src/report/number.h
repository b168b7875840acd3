// The text form of a double in the reports' JSON.
#pragma once

#include <cstddef>

// Bytes of the longest number: a sign, 17 digits, a point, and an exponent such as e-308.
inline constexpr std::size_t max_number_size = 24;

// Writes `value` to `out`, which must have room for max_number_size bytes. Returns the end of the
// text; no NUL follows it. The text has up to 17 significant digits, correctly rounded, without
// trailing zeros. A whole number that ends in zeros (1200 becomes 1.2e+3) and a number below 0.0001
// are written with an exponent. Zero of either sign becomes 0, a value that is not finite null.
char* write_number(double value, char* out);
