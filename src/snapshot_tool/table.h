// A table of texts whose columns line up on a terminal, wide characters included.
#pragma once

#include <string>
#include <vector>

namespace snapshot_tool {

enum class align { left, right };

struct table_column {
    std::string title;
    align side;
};

// A printable text. What is alarming stands out where there are colours.
struct table_cell {
    std::string text;
    bool is_alarming = false;
};

class table {
  public:
    explicit table(std::vector<table_column> columns);

    // Adds a row with a cell for each column.
    void add_row(std::vector<table_cell> cells);
    // Adds a line about the row before it: what went wrong with that.
    void add_failure(const std::string& text);

    // Returns the lines, the titles' first; "none" after these when there is nothing else.
    std::string text(bool has_colours) const;

  private:
    struct line {
        std::vector<table_cell> cells;  // of a failure, one
        bool is_failure = false;
    };

    std::vector<table_column> columns_;
    std::vector<line> lines_;
};

}  // namespace snapshot_tool
