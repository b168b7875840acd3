#include "snapshot_tool/redaction_key.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <format>
#include <stdexcept>

namespace snapshot_tool {

std::string read_redaction_key(const std::string& path) {
    constexpr std::size_t shortest = 16;
    constexpr std::size_t longest = 4096;
    const auto failed = [&](const std::string& reason) {
        return std::runtime_error(path + ": " + reason);
    };
    // A FIFO without a writer is not waited for.
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        throw failed(std::strerror(errno));
    }
    struct stat status;
    const bool is_regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    std::string key(longest + 1, '\0');
    const ssize_t size = is_regular ? read(file, key.data(), key.size()) : 0;
    const int error = errno;
    close(file);
    if (!is_regular) {
        throw failed("is not a regular file");
    }
    if (size < 0) {
        throw failed(std::strerror(error));
    }
    key.resize(static_cast<std::size_t>(size));
    if (key.size() < shortest || key.size() > longest) {
        throw failed(std::format("a key has {} to {} bytes, this file {}", shortest, longest,
                                 key.size() > longest ? "more" : std::to_string(key.size())));
    }
    return key;
}

}  // namespace snapshot_tool
