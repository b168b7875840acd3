#include "snapshot/load.h"

#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

#include "snapshot/json_reader.h"
#include "snapshot/reader.h"

namespace snapshot {
namespace {

// Returns the message after the path: ":LINE:COLUMN: REASON", or ": REASON" for a complaint without
// a place.
std::string located(const std::string& text, const complaint& complaint) {
    if (complaint.at == nullptr) {
        return ": " + complaint.reason;
    }
    const char* begin = text.data();
    const auto line = 1 + std::count(begin, complaint.at, '\n');
    const char* line_begin = complaint.at;
    while (line_begin != begin && line_begin[-1] != '\n') {
        --line_begin;
    }
    return ':' + std::to_string(line) + ':' + std::to_string(complaint.at - line_begin + 1) + ": " +
           complaint.reason;
}

// Reads the text with `read_text()`. Messages begin with `name`.
template <class Read>
loaded load_with(const std::string& name, const Read& read_text) {
    try {
        auto content = read_text();
        if (!content) {
            return std::unexpected(name + ": " + content.error());
        }
        auto snapshot = std::make_shared<answers>();
        snapshot->text = std::move(*content);
        try {
            read(*snapshot);
        } catch (const complaint& complaint) {
            return std::unexpected(name + located(snapshot->text, complaint));
        }
        return snapshot;
    } catch (const std::bad_alloc&) {
        return std::unexpected(name + ": out of memory");
    }
}

}  // namespace

loaded load(const std::string& path, const source_limits& limits) {
    return load_with(path, [&] { return read_source(path, limits); });
}

loaded load_standard_input() {
    return load_with("/dev/stdin", [] { return read_source(STDIN_FILENO, {}); });
}

}  // namespace snapshot
