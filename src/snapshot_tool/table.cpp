#include "snapshot_tool/table.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "snapshot_tool/columns.h"

namespace snapshot_tool {
namespace {

constexpr std::string_view gap = "  ";  // between columns
constexpr std::string_view no_mark = "  ";
constexpr std::string_view note_indentation = "    ";  // of lines that are not rows

// Makes columns narrower, always the widest, until all fit into the page. None becomes narrower
// than its title.
void fit(std::vector<std::size_t>& widths, const std::vector<table_column>& columns) {
    for (std::size_t& width : widths) {
        width = std::min(width, page_columns);
    }
    const std::size_t gaps = no_mark.size() + gap.size() * (widths.size() - 1);
    for (auto all = std::reduce(widths.begin(), widths.end(), gaps); all > page_columns; --all) {
        std::size_t* widest = nullptr;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (!columns[i].is_whole && widths[i] > columns[i].title.size() &&
                (widest == nullptr || widths[i] > *widest)) {
                widest = &widths[i];
            }
        }
        if (widest == nullptr) {
            return;
        }
        --*widest;
    }
}

}  // namespace

table::table(const page_style& style, const std::vector<table_column>& columns) {
    for (const table_column& column : columns) {
        is_shown_.push_back(style.is_wide || !column.is_wide);
        if (is_shown_.back()) {
            columns_.push_back(column);
        }
    }
}

void table::add_cell(std::string_view text, bool is_alarming) {
    texts_ += text;
    cells_.push_back({.bytes = static_cast<std::uint32_t>(text.size()),
                      .columns = static_cast<std::uint32_t>(columns_of(text)) & 0x7FFFFFFF,
                      .is_alarming = is_alarming});
}

void table::add_row(bool has_problem, std::initializer_list<table_cell> cells) {
    lines_.push_back(has_problem ? line_kind::row_with_problem : line_kind::row);
    for (auto is_shown = is_shown_.begin(); const table_cell& cell : cells) {
        if (*is_shown++) {
            add_cell(cell.text, cell.is_alarming);
        }
    }
}

void table::add_failure(std::string_view text) {
    lines_.push_back(line_kind::failure);
    add_cell(text, true);
}

// Returns the width of each column.
std::vector<std::size_t> table::widths(bool is_wide) const {
    std::vector<std::size_t> widths;
    widths.reserve(columns_.size());
    for (const table_column& column : columns_) {
        widths.push_back(column.title.size());
    }
    for (const cell* cell = cells_.data(); const line_kind line : lines_) {
        if (line == line_kind::failure) {
            ++cell;
            continue;
        }
        for (std::size_t& width : widths) {
            width = std::max<std::size_t>(width, cell++->columns);
        }
    }
    if (!is_wide) {
        fit(widths, columns_);
    }
    return widths;
}

void table::print(page& page) const {
    const std::vector<std::size_t> widths = this->widths(page.style().is_wide);
    std::size_t blanks = 0;  // written before the next text only: no line ends with blanks
    const auto print_cell = [&](std::size_t index, std::string_view text, std::size_t columns,
                                bool is_alarming) {
        std::string cut;
        if (columns > widths[index]) {
            cut = cut_to(widths[index], text);
            text = cut;
            columns = columns_of(text);
        }
        const bool is_right = columns_[index].side == align::right;
        const std::size_t padding = widths[index] - columns;
        if (!text.empty()) {
            page.append_blanks(blanks + (is_right ? padding : 0));
            page.append(text, is_alarming);
            blanks = is_right ? 0 : padding;
        } else {
            blanks += padding;
        }
        blanks += gap.size();
    };
    const auto end_line = [&] {
        page.end_line();
        blanks = 0;
    };

    blanks = no_mark.size();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        print_cell(i, columns_[i].title, columns_[i].title.size(), false);
    }
    end_line();
    if (lines_.empty()) {
        page.add(note_indentation, "none");
    }
    std::string_view texts = texts_;
    const auto next_text = [&](const cell& cell) {
        const std::string_view text = texts.substr(0, cell.bytes);
        texts.remove_prefix(cell.bytes);
        return text;
    };
    for (const cell* cell = cells_.data(); const line_kind line : lines_) {
        if (line == line_kind::failure) {
            page.add(note_indentation, next_text(*cell++), true);
            continue;
        }
        if (line == line_kind::row_with_problem) {
            page.append("!", true);
            blanks = 1;
        } else {
            blanks = no_mark.size();
        }
        for (std::size_t i = 0; i < columns_.size(); ++i, ++cell) {
            print_cell(i, next_text(*cell), cell->columns, cell->is_alarming != 0);
        }
        end_line();
    }
}

}  // namespace snapshot_tool
