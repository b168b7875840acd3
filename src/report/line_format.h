// A text with one {} for a value. std::format would add a quarter to the size of a tool, mapped and
// relocated at each start: tables of locales, and writers for every type of number.
#pragma once

#include <string>
#include <string_view>

class line_format {
  public:
    // Does not compile if `text` has no {} or another brace. `text` must outlive the object.
    consteval line_format(const char* text) : text_(text), place_(text_.find("{}")) {
        if (place_ == std::string_view::npos || text_.find_first_of("{}") != place_ ||
            text_.find_first_of("{}", place_ + 2) != std::string_view::npos) {
            throw "a line format has one {}";
        }
    }

    // Returns the text with its {} replaced by `value`.
    std::string with(std::string_view value) const {
        return std::string(text_.substr(0, place_)).append(value).append(text_.substr(place_ + 2));
    }

  private:
    std::string_view text_;
    std::size_t place_;
};
