#include "snapshot_tool/page.h"

#include <utility>

#include "snapshot_tool/columns.h"

namespace snapshot_tool {

void page::append(std::string_view text, bool is_alarming) {
    const bool is_coloured = is_alarming && style_.has_colours;
    text_ += is_coloured ? "\033[1;31m" : "";
    text_ += text;
    text_ += is_coloured ? "\033[0m" : "";
}

void page::end_line() {
    constexpr std::size_t piece = 65536;
    text_ += '\n';
    if (file_ != nullptr && text_.size() >= piece) {
        flush();
    }
}

void page::flush() {
    std::fwrite(text_.data(), 1, text_.size(), file_);
    text_.clear();
}

void page::add(std::string_view mark, std::string_view text, bool is_alarming) {
    const std::size_t indentation = columns_of(mark);
    const bool is_mark_alarming = mark.find_first_not_of(' ') != std::string_view::npos;
    std::string line;
    text_ += is_mark_alarming ? "" : mark;
    line += is_mark_alarming ? mark : "";
    while (true) {
        line +=
            style_.is_wide ? std::exchange(text, "") : take_line(page_columns - indentation, text);
        append(line, is_alarming);
        end_line();
        if (text.empty()) {
            return;
        }
        append_blanks(indentation);
        line.clear();
    }
}

}  // namespace snapshot_tool
