// Reads the tokens of a JSON text and says where something is wrong with it. The text is worked on
// in place: comments become blanks, and strings end in a NUL.
#ifndef ORU_SNAPSHOT_JSON_READER_H
#define ORU_SNAPSHOT_JSON_READER_H

#include <cstdint>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>

namespace oru {

// What is wrong, and the byte of the text that is to blame.
struct complaint {
    const char* at;
    std::string reason;
};

// A string of the text, and where its opening quote stands.
struct word {
    std::string_view text;  // decoded, holds no NUL, and a NUL follows it
    const char* at;
};

// A number of the text in its written form.
struct number {
    std::string_view text;
    bool whole;  // without fraction and exponent
};

// Every function leaves by a complaint when the text is not as it must be.
class json_reader {
  public:
    // Checks that `text` is UTF-8 without NUL bytes and blanks out its comments. Strings that hold
    // escapes are decoded into `arena`.
    json_reader(std::string& text, std::pmr::memory_resource& arena);

    // Skips blanks. Returns the byte that begins the next token, or NUL at the end of the text.
    char peek() noexcept;

    // Where the token that peek() saw begins.
    const char* place() const noexcept { return at_; }

    // Complains about the next token: `what` was expected.
    [[noreturn]] void unexpected(std::string_view what);

    void take(char punctuation, std::string_view what);
    word string(std::string_view what);
    bool boolean(std::string_view what);
    oru::number number(std::string_view what);

    // The value of a number that number() returned, which must fit.
    std::int64_t whole_value(const oru::number& written) const;
    double double_value(const oru::number& written) const;

    // A value of any form, whatever it holds. Returns its text without the blanks between the
    // tokens; a NUL follows it.
    std::string_view any_value();

    // Returns a copy of the text that lives as long as the document; a NUL follows it.
    std::string_view keep(std::string_view text) const;

    // A whole number from 0 to `max`.
    std::uint32_t natural(std::uint32_t max = UINT32_MAX);

    // Reads an object of any member names: `member(name)` reads each member's value.
    template <class Member>
    void object(std::string_view what, Member&& member) {
        take('{', what);
        if (peek() == '}') {
            ++at_;
            return;
        }
        do {
            const word name = string("a member name");
            take(':', "':'");
            peek();
            member(name);
        } while (another('}', "',' or '}'"));
    }

    // Reads an object of the given members, each at most once: `member(which, name)` reads the
    // value of names[which].
    template <class Member>
    void object(std::string_view what, std::span<const std::string_view> names, Member&& member) {
        std::uint32_t seen = 0;
        object(what, [&](const word& name) { member(which(name, names, seen), name); });
    }

    // Reads an array: `element()` reads each element.
    template <class Element>
    void array(std::string_view what, Element&& element) {
        take('[', what);
        if (peek() == ']') {
            ++at_;
            return;
        }
        do {
            peek();
            element();
        } while (another(']', "',' or ']'"));
    }

    // Complains unless the text ends here.
    void finish();

  private:
    bool another(char closing, std::string_view what);
    std::size_t which(const word& name, std::span<const std::string_view> names,
                      std::uint32_t& seen) const;
    void check_string_byte(const char* opening) const;
    std::string_view decode(const char* begin);
    void decode_escape();
    char read_short_escape();
    std::uint32_t read_code_unit(const char* escape);
    void copy_name_in(char closing);
    void copy_scalar();
    void copy_string();

    char* at_;
    char* end_;
    std::pmr::memory_resource& arena_;
    std::string decoded_;  // of the string or value being read
};

// The name as it is written in the text, for a complaint: never more than one short line.
std::string quoted(std::string_view text);

}  // namespace oru

#endif
