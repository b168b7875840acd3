// A table of texts whose columns are aligned on a terminal, even with wide characters.
#pragma once

#include <string>
#include <vector>

namespace snapshot_tool {

enum class align { left, right };

struct table_column {
    std::string title;
    align side;
};

// A printable text. An alarming one is coloured if the output has colours.
struct table_cell {
    std::string text;
    bool is_alarming = false;
};

class table {
  public:
    explicit table(std::vector<table_column> columns);

    // Adds a row with a cell for each column.
    void add_row(std::vector<table_cell> cells);
    // Adds a line about a failure that concerns the row before it.
    void add_failure(const std::string& text);

    // Returns the lines, the titles first. If there are no others, the next line is "none".
    std::string text(bool has_colours) const;

  private:
    struct line {
        std::vector<table_cell> cells;  // one if it is a failure
        bool is_failure = false;
    };

    std::vector<table_column> columns_;
    std::vector<line> lines_;
};

}  // namespace snapshot_tool
