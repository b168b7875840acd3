#include "snapshot/load.h"

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

}  // namespace

loaded load(const std::string& path, const source_limits& limits) {
    try {
        auto content = read_source(path, limits);
        if (!content) {
            return std::unexpected(path + ": " + content.error());
        }
        auto snapshot = std::make_shared<answers>();
        snapshot->text = std::move(*content);
        try {
            read(*snapshot);
        } catch (const complaint& complaint) {
            return std::unexpected(path + located(snapshot->text, complaint));
        }
        return snapshot;
    } catch (const std::bad_alloc&) {
        return std::unexpected(path + ": out of memory");
    }
}

}  // namespace snapshot
