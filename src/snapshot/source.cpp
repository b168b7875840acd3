#include "snapshot/source.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>

#include "snapshot/file_descriptor.h"

namespace snapshot {
namespace {

using namespace std::chrono_literals;
using clock = std::chrono::steady_clock;
using content_or_reason = std::expected<std::string, std::string>;

std::unexpected<std::string> system_reason(int code = errno) {
    return std::unexpected(std::string(std::strerror(code)));
}

// --- Regular files ------------------------------------------------------------------------------

// Reads up to `size` bytes, fewer at the end of the file. Returns their number, or -1 with errno
// set.
ssize_t read_fully(int file, char* to, std::size_t size) {
    std::size_t got = 0;
    while (got < size) {
        const ssize_t count = ::read(file, to + got, size - got);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        got += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(got);
}

// Reads the rest of the file. `before` is its status.
content_or_reason read_file(int file, const struct stat& before, const source_limits& limits) {
    const off_t begin = lseek(file, 0, SEEK_CUR);
    if (begin < 0) {
        return system_reason();
    }
    const auto length = static_cast<std::uint64_t>(std::max<off_t>(before.st_size - begin, 0));
    if (length > limits.bytes) {
        return std::unexpected("is " + std::to_string(length) +
                               " bytes long, and the limit of a snapshot is " +
                               std::to_string(limits.bytes));
    }
    const auto size = static_cast<std::size_t>(length);
    std::string content;
    ssize_t got = 0;
    content.resize_and_overwrite(size, [&](char* to, std::size_t) {
        got = read_fully(file, to, size);
        return static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    });
    char beyond = 0;
    const ssize_t more = got < 0 ? got : read_fully(file, &beyond, 1);
    struct stat after{};
    if (more < 0 || fstat(file, &after) != 0) {
        return system_reason();
    }
    // The time of change is not compared: a rename over the file changes it, but not the content.
    if (content.size() != size || more > 0 || after.st_size != before.st_size ||
        after.st_mtim.tv_sec != before.st_mtim.tv_sec ||
        after.st_mtim.tv_nsec != before.st_mtim.tv_nsec) {
        return std::unexpected("changed while it was read");
    }
    return content;
}

// --- Pipes, devices, sockets --------------------------------------------------------------------

struct timeouts {
    std::chrono::milliseconds silence;               // between two bytes
    std::optional<std::chrono::milliseconds> total;  // none: no limit
};

// Waits until data, the end or an error can be read. Returns false if the time is over first.
bool wait_for(int file, clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - clock::now());
        pollfd waiting{file, POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(std::max(left, 0ms).count()));
        if (ready >= 0) {
            return ready > 0;
        }
        if (errno != EINTR) {
            return true;
        }
    }
}

std::string in_seconds(std::chrono::milliseconds time) {
    char text[32];
    const auto written =
        std::to_chars(text, text + sizeof text, static_cast<double>(time.count()) / 1000);
    return std::string(text, written.ptr) + " seconds";
}

// Reads to the end with `receive(to, size)`, which returns what read() returns.
template <class Receive>
content_or_reason read_stream(int file, const timeouts& timeouts, std::size_t most,
                              const Receive& receive) {
    constexpr std::size_t step = std::size_t{256} * 1024;
    std::string content;
    const auto begin = clock::now();
    auto last = begin;
    for (;;) {
        const bool in_all = timeouts.total && begin + *timeouts.total < last + timeouts.silence;
        if (!wait_for(file, in_all ? begin + *timeouts.total : last + timeouts.silence)) {
            return std::unexpected(in_all ? "did not end within " + in_seconds(*timeouts.total)
                                          : "sent no byte for " + in_seconds(timeouts.silence));
        }
        ssize_t got = 0;
        const std::size_t before = content.size();
        content.resize_and_overwrite(before + step, [&](char* text, std::size_t) {
            got = receive(text + before, step);
            return before + static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        });
        if (got == 0) {
            return content;
        }
        if (got > 0) {
            last = clock::now();
        } else if (errno != EINTR && errno != EAGAIN) {
            return system_reason();
        }
        if (content.size() > most) {
            return std::unexpected("is longer than " + std::to_string(most) +
                                   " bytes, the limit of a snapshot");
        }
    }
}

content_or_reason read_pipe(int file, const source_limits& limits) {
    return read_stream(file, {limits.pipe_silence, std::nullopt}, limits.bytes,
                       [file](char* to, std::size_t size) { return ::read(file, to, size); });
}

content_or_reason read_socket(int file, const timeouts& timeouts, const source_limits& limits) {
    return read_stream(file, timeouts, limits.bytes, [file](char* to, std::size_t size) {
        return recv(file, to, size, MSG_DONTWAIT);
    });
}

// Connects, which may have to wait until the listener accepts.
content_or_reason read_from_listener(const std::string& path, const source_limits& limits) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    if (path.size() >= sizeof address.sun_path) {
        return std::unexpected("the path of a socket has at most " +
                               std::to_string(sizeof address.sun_path - 1) + " bytes");
    }
    std::ranges::copy(path, address.sun_path);

    const file_descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto silence = limits.socket_silence.count();
    timeval wait{};
    wait.tv_sec = static_cast<decltype(wait.tv_sec)>(silence / 1000);
    wait.tv_usec = static_cast<decltype(wait.tv_usec)>(silence % 1000 * 1000);
    if (socket.get() < 0 ||
        setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait) != 0) {
        return system_reason();
    }
    while (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
           0) {
        if (errno == EAGAIN) {
            return std::unexpected("accepted no connection within " +
                                   in_seconds(limits.socket_silence));
        }
        if (errno != EINTR) {
            return system_reason();
        }
    }
    auto content = read_socket(socket.get(), {limits.socket_silence, limits.socket_total}, limits);
    if (content && content->empty()) {
        return std::unexpected("the server closed the connection without sending anything");
    }
    return content;
}

// Returns whether this is the socket that is standard input.
bool is_standard_input(const struct stat& status) {
    struct stat input{};
    return fstat(STDIN_FILENO, &input) == 0 && input.st_dev == status.st_dev &&
           input.st_ino == status.st_ino;
}

}  // namespace

content_or_reason read_source(int file, const source_limits& limits) {
    struct stat status{};
    if (fstat(file, &status) != 0) {
        return system_reason();
    }
    switch (status.st_mode & S_IFMT) {
        case S_IFREG:
            return read_file(file, status, limits);
        case S_IFIFO:
        case S_IFCHR:
            return read_pipe(file, limits);
        case S_IFSOCK:
            return read_socket(file, {limits.pipe_silence, std::nullopt}, limits);
        case S_IFDIR:
            return std::unexpected("is a directory");
        default:
            return std::unexpected("is not a regular file, a FIFO, a character device or a socket");
    }
}

content_or_reason read_source(const std::string& path, const source_limits& limits) {
    // Opening a FIFO would wait for its other end.
    const file_descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (file.get() >= 0) {
        return read_source(file.get(), limits);
    }
    const int code = errno;
    struct stat status{};
    if (code != ENXIO || stat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) {
        return system_reason(code);
    }
    return is_standard_input(status) ? read_source(STDIN_FILENO, limits)
                                     : read_from_listener(path, limits);
}

}  // namespace snapshot
