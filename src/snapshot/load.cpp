#include "snapshot/load.h"

#include <algorithm>
#include <new>
#include <utility>

#include "snapshot/json_reader.h"
#include "snapshot/reader.h"

namespace snapshot {
namespace {

// Returns what follows the path in the message: ":LINE:COLUMN: REASON", or ": REASON" where no
// place is to blame.
std::string located(const std::string& text, const complaint& wrong) {
    if (wrong.at == nullptr) {
        return ": " + wrong.reason;
    }
    const char* begin = text.data();
    const auto line = 1 + std::count(begin, wrong.at, '\n');
    const char* line_begin = wrong.at;
    while (line_begin != begin && line_begin[-1] != '\n') {
        --line_begin;
    }
    return ':' + std::to_string(line) + ':' + std::to_string(wrong.at - line_begin + 1) + ": " +
           wrong.reason;
}

}  // namespace

loaded load(const std::string& path, const source_limits& limits) {
    try {
        auto content = read_source(path, limits);
        if (!content) {
            return std::unexpected(path + ": " + content.error());
        }
        auto all = std::make_shared<answers>();
        all->text = std::move(*content);
        try {
            read(*all);
        } catch (const complaint& wrong) {
            return std::unexpected(path + located(all->text, wrong));
        }
        return all;
    } catch (const std::bad_alloc&) {
        return std::unexpected(path + ": out of memory");
    }
}

}  // namespace snapshot
