// Text for a person: fits into the width of a terminal, and shows what is alarming in colour.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace snapshot_tool {

// So many that nothing wraps in a terminal of 80.
inline constexpr std::size_t page_columns = 79;

struct page_style {
    bool is_wide = false;  // lines may be longer
    bool has_colours = false;
};

class page {
  public:
    explicit page(const page_style& style) : style_(style) {}

    // Adds a printable text, in several lines if it must be. The first line begins with `mark`,
    // which is printable too, the others with as many blanks.
    void add(std::string_view mark, std::string_view text, bool is_alarming = false);
    void add_empty_line() { text_ += '\n'; }

    const page_style& style() const { return style_; }
    // Returns what was added so far. Appending to it adds to the page.
    std::string& text() { return text_; }
    // Appends to what was added, in red and bold if it is alarming and the page has colours.
    void append(std::string_view text, bool is_alarming);

  private:
    page_style style_;
    std::string text_;
};

}  // namespace snapshot_tool
