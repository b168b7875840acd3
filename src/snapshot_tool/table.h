// A table of texts whose columns are aligned on a terminal, even with wide characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "snapshot_tool/page.h"

namespace snapshot_tool {

enum class align { left, right };

struct table_column {
    std::string_view title;
    align side = align::right;
    bool is_wide = false;   // only on a wide page
    bool is_whole = false;  // never cut: numbers that identify the rows
};

// A printable text. An alarming one is coloured if the page has colours.
struct table_cell {
    std::string text;
    bool is_alarming = false;
};

// Before the first column are two of the page, with a mark in each row that has a problem. If the
// page is not wide, columns are cut until they fit.
class table {
  public:
    table(const page_style& style, const std::vector<table_column>& columns);

    // Adds a row with a cell for each column, those of a wide page included.
    void add_row(bool has_problem, std::initializer_list<table_cell> cells);
    // Adds a printable line about a failure that concerns the row before it.
    void add_failure(std::string_view text);

    // Adds the lines to a page, the titles first. If there are no others, the next line is "none".
    void print(page& page) const;

  private:
    // Cells are kept in few bytes: there may be millions.
    struct cell {
        std::uint32_t bytes;
        std::uint32_t columns : 31;
        std::uint32_t is_alarming : 1;
    };
    enum class line_kind : std::uint8_t { row, row_with_problem, failure };

    void add_cell(std::string_view text, bool is_alarming);
    std::vector<std::size_t> widths(bool is_wide) const;

    std::vector<bool> is_shown_;         // of the columns given
    std::vector<table_column> columns_;  // those that are shown
    std::vector<line_kind> lines_;
    std::vector<cell> cells_;  // one for a failure, otherwise one for each column
    std::string texts_;        // of the cells, one after the other
};

}  // namespace snapshot_tool
