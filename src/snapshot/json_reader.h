// Reads the tokens of a JSON text and says where something is wrong with it. The text is worked on
// in place: comments become blanks, and strings end in a NUL.
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

// What is wrong, and the byte of the text that is to blame.
struct complaint {
    const char* at;
    std::string reason;
};

// A string of the text, and where its opening quote stands.
struct word {
    std::string_view text;  // decoded, holds no NUL, and a NUL follows it
    const char* at = nullptr;
};

// The beginning of many a complaint.
std::string expected(std::string_view what);

// These complain about the name of a member.
[[noreturn]] void refuse_unknown(const word& name);
[[noreturn]] void refuse_duplicate(const word& name);

// A number of the text in its written form.
struct written_number {
    std::string_view text;
    bool whole;                         // without fraction and exponent
    std::optional<std::int64_t> value;  // of a whole number that fits
};

// Every function leaves by a complaint when the text is not as it must be.
class json_reader {
  public:
    // Checks that `text` is UTF-8 without NUL bytes and blanks out its comments. Strings that hold
    // escapes are decoded into `arena`.
    json_reader(std::string& text, snapshot::arena& arena);

    // Skips blanks. Returns the byte that begins the next token, or NUL at the end of the text.
    char peek() noexcept;

    // Where the token that peek() saw begins.
    const char* place() const noexcept { return at_; }

    // Complains about the next token: `what` was expected.
    [[noreturn]] void unexpected(std::string_view what);

    void take(char punctuation, std::string_view what);
    word string(std::string_view what);
    bool boolean(std::string_view what);
    written_number number(std::string_view what);

    // The value of a number that number() returned, which must fit.
    std::int64_t whole_value(const written_number& written) const;
    double double_value(const written_number& written) const;

    // A value of any form, whatever it holds. Returns its text without the blanks between the
    // tokens; a NUL follows it.
    std::string_view any_value();

    // A whole number from 0 to `max`.
    std::uint32_t natural(std::uint32_t max = UINT32_MAX);

    // An array of N whole numbers from 0 to 4294967295.
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

    // Reads an object of any member names: `member(name)` reads each member's value.
    template <class Member>
    void object(std::string_view what, Member&& member) {
        word name;
        for (bool more = first_member(what, name); more; more = next_member(name)) {
            member(name);
        }
    }

    // Reads an object of the members that are `known` by their `name`, each at most once:
    // `member(known[i], name)` reads a member's value.
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

    // Reads an array: `element()` reads each element.
    template <class Element>
    void array(std::string_view what, Element&& element) {
        for (bool more = first_element(what); more; more = next_element()) {
            element();
        }
    }

    // Complains unless the text ends here.
    void finish();

    // Returns a copy that lives as long as the arena.
    std::string_view keep(std::string_view text) { return arena_.keep(text); }

  private:
    // These read up to the value of a member, or up to an element. They return whether there is
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

// The name as it is written in the text, for a complaint: never more than one short line.
std::string quoted(std::string_view text);

}  // namespace snapshot
