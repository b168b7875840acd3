// A text with one {} for a value. std::format would do, but brings the tables of locales and the
// writing of every kind of number: a quarter of a tool, mapped and relocated at each start.
#pragma once

#include <string>
#include <string_view>

class line_format {
  public:
    // Does not compile for a text without a {} or with another brace. Keeps `text`.
    consteval line_format(const char* text) : text_(text), place_(text_.find("{}")) {
        if (place_ == std::string_view::npos || text_.find_first_of("{}") != place_ ||
            text_.find_first_of("{}", place_ + 2) != std::string_view::npos) {
            throw "a line format has one {}";
        }
    }

    // Returns the text with `value` in place of its {}.
    std::string with(std::string_view value) const {
        return std::string(text_.substr(0, place_)).append(value).append(text_.substr(place_ + 2));
    }

  private:
    std::string_view text_;
    std::size_t place_;
};
