// Reads the text of a snapshot from wherever one may come: a file, a FIFO, a character device, or
// whoever listens on a Unix stream socket.
#pragma once

#include <chrono>
#include <cstddef>
#include <expected>
#include <string>

namespace snapshot {

// How much is read, and how long it is waited for.
struct source_limits {
    std::size_t bytes = std::size_t{128} * 1024 * 1024;
    std::chrono::milliseconds socket_silence = std::chrono::seconds(5);
    std::chrono::milliseconds socket_total = std::chrono::seconds(30);
    // At the other end may be a person who first has to type a password.
    std::chrono::milliseconds pipe_silence = std::chrono::seconds(60);
};

// Returns all that `path` gives until its end, or in one line why that cannot be had, without the
// path.
std::expected<std::string, std::string> read_source(const std::string& path,
                                                    const source_limits& limits);

}  // namespace snapshot
