// Text for a person: fits into the width of a terminal, and shows what is alarming in colour.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace snapshot_tool {

// In a terminal of 80 columns, nothing wraps.
inline constexpr std::size_t page_columns = 79;

struct page_style {
    bool is_wide = false;  // lines may be longer
    bool has_colours = false;
};

class page {
  public:
    // If there is a file, the page is written to it piece by piece: it may be too long for memory.
    explicit page(const page_style& style, std::FILE* file = nullptr)
        : style_(style), file_(file) {}

    // Adds a printable text, in several lines if it must be. The first line begins with `mark`,
    // which is printable too, the others with as many blanks.
    void add(std::string_view mark, std::string_view text, bool is_alarming = false);
    // Adds to the current line, in red and bold if the text is alarming and the page has colours.
    void append(std::string_view text, bool is_alarming = false);
    void append_blanks(std::size_t count) { text_.append(count, ' '); }
    void end_line();

    // Writes the last piece.
    void flush();

    const page_style& style() const { return style_; }
    // Returns what was added and not yet written.
    const std::string& text() const { return text_; }

  private:
    page_style style_;
    std::FILE* file_;
    std::string text_;
};

}  // namespace snapshot_tool
