// Reads the text of a snapshot from a file, a FIFO, a character device or a Unix stream socket.
#pragma once

#include <chrono>
#include <cstddef>
#include <expected>
#include <string>

namespace snapshot {

// How much to read, and how long to wait.
struct source_limits {
    std::size_t bytes = std::size_t{128} * 1024 * 1024;
    std::chrono::milliseconds socket_silence = std::chrono::seconds(5);
    std::chrono::milliseconds socket_total = std::chrono::seconds(30);
    // A person at the other end may first have to type a password.
    std::chrono::milliseconds pipe_silence = std::chrono::seconds(60);
};

// Return everything up to the end, or in one line why it cannot be read, without the path. An open
// file is read from its current position, and a socket is not connected.
std::expected<std::string, std::string> read_source(const std::string& path,
                                                    const source_limits& limits);
std::expected<std::string, std::string> read_source(int file, const source_limits& limits);

}  // namespace snapshot
