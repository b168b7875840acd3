#include "support/run.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace {

// Passed on from the environment of the test: variables of sanitizers, coverage, emulator and
// strict client.
constexpr std::array passed_through = {"ASAN_OPTIONS",   "LSAN_OPTIONS",      "UBSAN_OPTIONS",
                                       "G_SLICE",        "LLVM_PROFILE_FILE", "LD_LIBRARY_PATH",
                                       "QEMU_LD_PREFIX", "ORU_STRICT_EXACT"};

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

class descriptor {
  public:
    descriptor() = default;
    explicit descriptor(int fd) : fd_(fd) {}
    descriptor(descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    descriptor& operator=(descriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~descriptor() { reset(); }

    int get() const { return fd_; }
    void reset() {
        if (fd_ >= 0) {
            close(fd_);
            fd_ = -1;
        }
    }

  private:
    int fd_ = -1;
};

// One output stream of the program: the end it writes to and, if captured, the end read here.
struct output {
    descriptor ours;
    descriptor theirs;
    std::string* text;

    output(const std::string& to, std::string& captured) : text(&captured) {
        if (to == closed_stream) {
            return;
        }
        if (!to.empty()) {
            theirs = descriptor(open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
            if (theirs.get() < 0) {
                fail(to.c_str());
            }
            return;
        }
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            fail("pipe2");
        }
        ours = descriptor(ends[0]);
        theirs = descriptor(ends[1]);
    }
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    for (std::string& text : texts) {
        all.push_back(text.data());
    }
    all.push_back(nullptr);
    return all;
}

std::vector<std::string> environment_of(const command& what) {
    std::vector<std::string> all;
    for (const char* name : passed_through) {
        const std::string prefix = std::string(name) + "=";
        bool is_set = false;
        for (const std::string& entry : what.environment) {
            is_set = is_set || entry.starts_with(prefix);
        }
        if (const char* value = std::getenv(name); value != nullptr && !is_set) {
            all.push_back(prefix + value);
        }
    }
    all.insert(all.end(), what.environment.begin(), what.environment.end());
    return all;
}

// Called in the child, between fork and exec: replaces `stream` by `fd`, or closes it if `fd` is
// negative.
void place(int fd, int stream) {
    if (fd < 0) {
        close(stream);
    } else if (dup2(fd, stream) < 0) {
        _exit(126);
    }
}

// Returns 0 if the time has passed.
int milliseconds_until(std::chrono::steady_clock::time_point end) {
    const auto left = end - std::chrono::steady_clock::now();
    return std::max(0, static_cast<int>(left / std::chrono::milliseconds(1)));
}

// Reads both streams to their end. Returns false if the time limit passes first.
bool collect(output& out, output& err, std::chrono::steady_clock::time_point end) {
    const std::array all = {&out, &err};
    std::array<char, 65536> buffer;
    while (out.ours.get() >= 0 || err.ours.get() >= 0) {
        // poll() ignores negative descriptors.
        std::array<pollfd, 2> waiting = {
            {{out.ours.get(), POLLIN, 0}, {err.ours.get(), POLLIN, 0}}};
        const int left = milliseconds_until(end);
        const int ready = poll(waiting.data(), waiting.size(), left);
        if (ready < 0 && errno != EINTR) {
            fail("poll");
        }
        if (left == 0 || ready == 0) {
            return false;
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (waiting[i].revents == 0) {
                continue;
            }
            const ssize_t count = read(waiting[i].fd, buffer.data(), buffer.size());
            if (count > 0) {
                all[i]->text->append(buffer.data(), static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                all[i]->ours.reset();
            }
        }
    }
    return true;
}

// Waits for the child to end, which may be later than the end of its output. Returns false if the
// time limit passes first.
bool wait_until(pid_t child, int& status, std::chrono::steady_clock::time_point end) {
    const descriptor process(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
    if (process.get() < 0) {
        fail("pidfd_open");
    }
    pollfd waiting = {process.get(), POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&waiting, 1, milliseconds_until(end));
    } while (ready < 0 && errno == EINTR);
    if (ready < 0) {
        fail("poll");
    }
    return ready > 0 && waitpid(child, &status, 0) == child;
}

}  // namespace

result run(const command& what) {
    result got;
    output out(what.stdout_to, got.out);
    output err(what.stderr_to, got.err);
    std::vector<std::string> arguments = what.argv;
    std::vector<std::string> variables = environment_of(what);
    const std::vector<char*> argv = pointers(arguments);
    const std::vector<char*> envp = pointers(variables);
    const auto end = std::chrono::steady_clock::now() + what.time_limit;

    // The child shares our memory until it executes the program, so that nothing of it is copied.
    const pid_t child = vfork();
    if (child < 0) {
        fail("vfork");
    }
    if (child == 0) {
        place(open(what.stdin_from.c_str(), O_RDONLY), STDIN_FILENO);
        place(out.theirs.get(), STDOUT_FILENO);
        place(err.theirs.get(), STDERR_FILENO);
        execve(what.executable.c_str(), argv.data(), envp.data());
        _exit(127);
    }
    out.theirs.reset();
    err.theirs.reset();

    int status = 0;
    bool in_time = collect(out, err, end) && wait_until(child, status, end);
    if (!in_time) {
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
        got.err += "[killed: over the time limit]";
    }
    if (WIFEXITED(status)) {
        got.status = WEXITSTATUS(status);
    } else {
        got.signal = WTERMSIG(status);
    }
    if (got.status == 127) {
        throw std::runtime_error("cannot run " + what.executable);
    }
    return got;
}

std::ostream& operator<<(std::ostream& stream, const result& shown) {
    stream << "status " << shown.status;
    if (shown.signal != 0) {
        stream << ", signal " << shown.signal;
    }
    return stream << "\n--- stdout\n" << shown.out << "--- stderr\n" << shown.err << "---";
}
