#include "replay/snapshot.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>

#include "snapshot/document_reader.h"
#include "snapshot/json_reader.h"

namespace oru {
namespace {

constexpr auto default_socket = "/run/oru/snapshot.sock";
constexpr auto default_file = "/run/oru/snapshot.json";

// Returns where the snapshot is.
const char* find() {
    const char* named = secure_getenv("ORU_SNAPSHOT");
    if (named != nullptr && *named != '\0') {
        return named;
    }
    struct stat status{};
    return stat(default_socket, &status) == 0 && S_ISSOCK(status.st_mode) ? default_socket
                                                                          : default_file;
}

std::string in_place(const std::string& text, const complaint& wrong) {
    if (wrong.at == nullptr) {
        return wrong.reason;
    }
    const char* begin = text.data();
    const auto line = 1 + std::count(begin, wrong.at, '\n');
    const char* line_begin = wrong.at;
    while (line_begin != begin && line_begin[-1] != '\n') {
        --line_begin;
    }
    return std::to_string(line) + ':' + std::to_string(wrong.at - line_begin + 1) + ": " +
           wrong.reason;
}

snapshot* current_snapshot = nullptr;

}  // namespace

snapshot load(const std::string& path, const source_limits& limits) {
    try {
        auto content = read_source(path, limits);
        if (!content) {
            return std::unexpected(path + ": " + content.error());
        }
        auto doc = std::make_shared<document>();
        doc->text = std::move(*content);
        try {
            read_document(*doc);
        } catch (const complaint& wrong) {
            const char* colon = wrong.at != nullptr ? ":" : ": ";
            return std::unexpected(path + colon + in_place(doc->text, wrong));
        }
        return doc;
    } catch (const std::bad_alloc&) {
        return std::unexpected(path + ": out of memory");
    }
}

const snapshot& current() {
    if (current_snapshot == nullptr) {
        current_snapshot = new snapshot(load(find()));
    }
    return *current_snapshot;
}

void reset() {
    delete current_snapshot;
    current_snapshot = nullptr;
}

}  // namespace oru
