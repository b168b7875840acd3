// Reads the tokens of a JSON text and finds the place of an error. It changes the text: comments
// become blanks, and the closing quotes of strings NULs.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "snapshot/arena.h"

namespace snapshot {

// An error and its place.
struct complaint {
    const char* at;  // in the text; NULL if it concerns no place
    std::string reason;
};

// A string of the text.
struct word {
    std::string_view text;     // decoded, without a NUL, but followed by one
    const char* at = nullptr;  // its opening quote
};

// Returns "expected WHAT", with which many complaints begin.
std::string expected(std::string_view what);

// Complain about the name of a member.
[[noreturn]] void refuse_unknown(const word& name);
[[noreturn]] void refuse_duplicate(const word& name);

// A number as it is written in the text.
struct written_number {
    std::string_view text;
    bool whole;                         // without fraction and exponent
    std::optional<std::int64_t> value;  // of a whole number that fits
};

// Every function throws a complaint if the text is not as it must be.
class json_reader {
  public:
    // Checks that `text` is UTF-8 without NUL bytes and blanks out its comments. Strings with
    // escapes are decoded into `arena`.
    json_reader(std::string& text, snapshot::arena& arena);

    // Skips blanks. Returns the byte that begins the next token, or NUL at the end of the text.
    char peek() noexcept;

    // Returns the place of the token that peek() saw.
    const char* place() const noexcept { return at_; }

    // Complains about the next token: `what` was expected.
    [[noreturn]] void unexpected(std::string_view what);

    void take(char punctuation, std::string_view what);
    word string(std::string_view what);
    bool boolean(std::string_view what);
    written_number number(std::string_view what);

    // Return the value of a number, which must be in range.
    std::int64_t whole_value(const written_number& written) const;
    double double_value(const written_number& written) const;

    // Reads a value of any form. Returns its text without blanks between the tokens, followed by a
    // NUL.
    std::string_view any_value();

    // Reads a whole number from 0 to `max`.
    std::uint32_t natural(std::uint32_t max = UINT32_MAX);

    // Reads an array of N whole numbers from 0 to 4294967295.
    template <std::size_t N>
    std::array<std::uint32_t, N> naturals(std::string_view what) {
        std::array<std::uint32_t, N> numbers;
        take('[', what);
        for (std::size_t i = 0; i < N; ++i) {
            if (i > 0) {
                take(',', "','");
            }
            numbers[i] = natural();
        }
        take(']', "']'");
        return numbers;
    }

    // Reads an object of any member names, with `member(name)` for the value of each.
    template <class Member>
    void object(std::string_view what, Member&& member) {
        word name;
        for (bool more = first_member(what, name); more; more = next_member(name)) {
            member(name);
        }
    }

    // Reads an object whose members are among `known`, each at most once, with
    // `member(known[i], name)` for the value of each.
    template <class Known, std::size_t N, class Member>
    void object(std::string_view what, const Known (&known)[N], Member&& member) {
        static_assert(N <= 32);
        std::uint32_t seen = 0;
        object(what, [&](const word& name) {
            const Known* found = std::ranges::find(known, name.text, &Known::name);
            if (found == std::end(known)) {
                refuse_unknown(name);
            }
            const std::uint32_t bit = std::uint32_t{1} << (found - known);
            if ((seen & bit) != 0) {
                refuse_duplicate(name);
            }
            seen |= bit;
            member(*found, name);
        });
    }

    // Reads an array, with `element()` for each element.
    template <class Element>
    void array(std::string_view what, Element&& element) {
        for (bool more = first_element(what); more; more = next_element()) {
            element();
        }
    }

    // Complains unless the text ends here.
    void finish();

    // Returns a copy in the arena.
    std::string_view keep(std::string_view text) { return arena_.keep(text); }

  private:
    // Read up to the value of the next member, or up to the next element. Return whether there is
    // one.
    bool first_member(std::string_view what, word& name);
    bool next_member(word& name);
    bool first_element(std::string_view what);
    bool next_element();
    bool another(char closing, std::string_view what);
    void read_name(word& name);
    written_number long_number();
    void check_string_byte(const char* opening) const;
    void skip_plain_text();
    std::string_view decode(const char* begin);
    void decode_escape();
    char read_short_escape();
    std::uint32_t read_code_unit(const char* escape);
    void copy_name_in(char closing);
    void copy_scalar();
    void copy_string();

    char* at_;
    char* end_;
    snapshot::arena& arena_;
    std::string decoded_;  // of the string or value being read
};

// Returns the text in quotes for a complaint: printable, and at most one short line.
std::string quoted(std::string_view text);

}  // namespace snapshot
