#include "snapshot.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <format>
#include <new>

#include "document_reader.h"
#include "json_reader.h"

namespace oru {
namespace {

constexpr auto default_path = "/run/oru/snapshot.json";
constexpr std::size_t largest_file = std::size_t{128} * 1024 * 1024;

class file_descriptor {
  public:
    explicit file_descriptor(int number) : number_(number) {}
    ~file_descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    file_descriptor(const file_descriptor&) = delete;
    file_descriptor& operator=(const file_descriptor&) = delete;
    int get() const { return number_; }

  private:
    int number_;
};

// Reads up to `size` bytes. Returns how many came before the end of the file, or -1 with errno set.
ssize_t read_fully(int file, char* to, std::size_t size) {
    std::size_t got = 0;
    while (got < size) {
        const ssize_t now = read(file, to + got, size - got);
        if (now < 0 && errno == EINTR) {
            continue;
        }
        if (now < 0) {
            return -1;
        }
        if (now == 0) {
            break;
        }
        got += static_cast<std::size_t>(now);
    }
    return static_cast<ssize_t>(got);
}

// The whole content of a regular file, or the reason why there is none.
std::expected<std::string, std::string> read_file(const std::string& path) {
    const auto system_reason = [] { return std::unexpected(std::string(std::strerror(errno))); };

    // Opening must not wait for the other end of a FIFO.
    const file_descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status;
    if (file.get() < 0 || fstat(file.get(), &status) != 0) {
        return system_reason();
    }
    if (S_ISDIR(status.st_mode)) {
        return std::unexpected("is a directory");
    }
    if (!S_ISREG(status.st_mode)) {
        return std::unexpected("is not a regular file");
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > largest_file) {
        return std::unexpected(
            std::format("is {} bytes long, more than the {} of a snapshot", size, largest_file));
    }

    std::string content;
    ssize_t got = 0;
    content.resize_and_overwrite(size, [&](char* to, std::size_t length) {
        got = read_fully(file.get(), to, length);
        return static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    });
    char beyond = 0;
    const ssize_t more = got < 0 ? got : read_fully(file.get(), &beyond, 1);
    if (more < 0) {
        return system_reason();
    }
    if (content.size() != size || more > 0) {
        return std::unexpected("changed while it was read");
    }
    return content;
}

std::string in_place(const std::string& text, const complaint& wrong) {
    if (!wrong.at) {
        return wrong.reason;
    }
    const char* begin = text.data();
    const auto line = 1 + std::count(begin, wrong.at, '\n');
    const char* line_begin = wrong.at;
    while (line_begin != begin && line_begin[-1] != '\n') {
        --line_begin;
    }
    return std::format("{}:{}: {}", line, wrong.at - line_begin + 1, wrong.reason);
}

snapshot* current_snapshot = nullptr;

}  // namespace

snapshot load(const std::string& path) {
    try {
        auto content = read_file(path);
        if (!content) {
            return std::unexpected(std::format("{}: {}", path, content.error()));
        }
        auto doc = std::make_shared<document>();
        doc->text = std::move(*content);
        try {
            read_document(*doc);
        } catch (const complaint& wrong) {
            const char* colon = wrong.at ? ":" : ": ";
            return std::unexpected(path + colon + in_place(doc->text, wrong));
        }
        return doc;
    } catch (const std::bad_alloc&) {
        return std::unexpected(path + ": out of memory");
    }
}

const snapshot& current() {
    if (!current_snapshot) {
        const char* named = secure_getenv("ORU_SNAPSHOT");
        current_snapshot = new snapshot(load(named && *named ? named : default_path));
    }
    return *current_snapshot;
}

void reset() {
    delete current_snapshot;
    current_snapshot = nullptr;
}

}  // namespace oru
