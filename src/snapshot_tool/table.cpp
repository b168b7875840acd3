#include "snapshot_tool/table.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "snapshot_tool/columns.h"

namespace snapshot_tool {
namespace {

// Returns the text in red and bold.
std::string alarming(const std::string& text, bool has_colours) {
    return has_colours ? "\033[1;31m" + text + "\033[0m" : text;
}

}  // namespace

table::table(std::vector<table_column> columns) : columns_(std::move(columns)) {}

void table::add_row(std::vector<table_cell> cells) {
    lines_.push_back({.cells = std::move(cells)});
}

void table::add_failure(const std::string& text) {
    lines_.push_back({.cells = {{.text = text, .is_alarming = true}}, .is_failure = true});
}

std::string table::text(bool has_colours) const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::size_t width = columns_of(columns_[i].title);
        for (const line& row : lines_) {
            if (!row.is_failure) {
                width = std::max(width, columns_of(row.cells[i].text));
            }
        }
        widths.push_back(width);
    }

    std::string text;
    const auto add = [&](const std::vector<table_cell>& cells) {
        std::string blanks;  // written before the next text only: no line ends with blanks
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string padding(widths[i] - columns_of(cells[i].text), ' ');
            if (columns_[i].side == align::right) {
                blanks += padding;
            }
            if (!cells[i].text.empty()) {
                text += std::exchange(blanks, "");
                text += cells[i].is_alarming ? alarming(cells[i].text, has_colours) : cells[i].text;
            }
            if (columns_[i].side == align::left) {
                blanks += padding;
            }
            blanks += "  ";
        }
        text += '\n';
    };

    std::vector<table_cell> titles;
    titles.reserve(columns_.size());
    for (const table_column& column : columns_) {
        titles.push_back({.text = column.title});
    }
    add(titles);
    if (lines_.empty()) {
        text += "    none\n";
    }
    for (const line& row : lines_) {
        if (row.is_failure) {
            text += "    " + alarming(row.cells.front().text, has_colours) + '\n';
        } else {
            add(row.cells);
        }
    }
    return text;
}

}  // namespace snapshot_tool
