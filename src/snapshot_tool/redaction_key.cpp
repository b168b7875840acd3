#include "snapshot_tool/redaction_key.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <format>
#include <stdexcept>

#include "snapshot/file_descriptor.h"

namespace snapshot_tool {

std::string read_redaction_key(const std::string& path) {
    constexpr std::size_t shortest = 16;
    constexpr std::size_t longest = 4096;
    const auto failed = [&](const std::string& reason) {
        return std::runtime_error(path + ": " + reason);
    };
    // A FIFO without a writer is not waited for.
    const snapshot::file_descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0) {
        throw failed(std::strerror(errno));
    }
    struct stat status;
    if (fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        throw failed("is not a regular file");
    }
    std::string key(longest + 1, '\0');
    const ssize_t size = read(file.get(), key.data(), key.size());
    if (size < 0) {
        throw failed(std::strerror(errno));
    }
    key.resize(static_cast<std::size_t>(size));
    if (key.size() < shortest || key.size() > longest) {
        throw failed(std::format("has {}{} bytes, but a key must have {} to {}",
                                 key.size() > longest ? "more than " : "",
                                 std::min(key.size(), longest), shortest, longest));
    }
    return key;
}

}  // namespace snapshot_tool
