// Compares what the report number writer writes for whole numbers with decimal digits computed by
// integer arithmetic alone.
//
//   every-number            all 4,294,967,296 unsigned 32-bit values
//   every-number STEP       every STEP-th of them, and the last one

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "report/number.h"

namespace {

char* put_integer(char* out, std::uint32_t value) {
    char reversed[10];
    int count = 0;
    do {
        reversed[count++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    while (count > 0) {
        *out++ = reversed[--count];
    }
    return out;
}

// A whole number that ends in zeros has the exponent form, any other its plain digits.
char* expected(char* out, std::uint32_t value) {
    if (value % 10 != 0 || value == 0) {
        return put_integer(out, value);
    }
    std::uint32_t exponent = 0;
    for (std::uint32_t rest = value; rest >= 10; rest /= 10) {
        ++exponent;
    }
    while (value % 10 == 0) {
        value /= 10;
    }
    char digits[10];
    const auto count = static_cast<std::size_t>(put_integer(digits, value) - digits);
    *out++ = digits[0];
    if (count > 1) {
        *out++ = '.';
        std::memcpy(out, digits + 1, count - 1);
        out += count - 1;
    }
    *out++ = 'e';
    *out++ = '+';
    return put_integer(out, exponent);
}

bool agrees(std::uint32_t value) {
    char written[max_number_size];
    char correct[max_number_size];
    const std::string_view got{written, write_number(value, written)};
    const std::string_view want{correct, expected(correct, value)};
    if (got == want) {
        return true;
    }
    std::printf("%u is written %.*s, not %.*s\n", value, static_cast<int>(got.size()), got.data(),
                static_cast<int>(want.size()), want.data());
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const std::uint64_t step = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1;
    if (step == 0) {
        std::fputs("every-number: the step must be a whole number of at least 1\n", stderr);
        return 2;
    }
    std::uint64_t checked = 0;
    for (std::uint64_t value = 0; value <= UINT32_MAX; value += step) {
        if (!agrees(static_cast<std::uint32_t>(value))) {
            return EXIT_FAILURE;
        }
        ++checked;
    }
    if (!agrees(UINT32_MAX)) {
        return EXIT_FAILURE;
    }
    std::printf("%llu values and the last agree\n", static_cast<unsigned long long>(checked));
}
