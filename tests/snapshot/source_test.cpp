// Where our client library finds its snapshot, and how it reads it.
#include "snapshot/source.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <latch>
#include <string>
#include <string_view>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>

#include "snapshot/load.h"
#include "support/run.h"
#include "support/snapshot_file.h"
#include "support/temp_directory.h"
#include "support/tools.h"

namespace {

using namespace std::chrono_literals;

// Returns the complaint about the snapshot at `path`, without the path, or "".
std::string complaint(const std::string& path, const snapshot::source_limits& limits = {}) {
    const auto loaded = snapshot::load(path, limits);
    if (loaded) {
        return "";
    }
    EXPECT_TRUE(loaded.error().starts_with(path + ":")) << loaded.error();
    return loaded.error().substr(path.size() + 1);
}

// The reader may close its end before the writer is finished.
const auto sigpipe_before = signal(SIGPIPE, SIG_IGN);

// Returns false if the reader has closed its end.
bool send_all(int to, std::string_view text) {
    while (!text.empty()) {
        const ssize_t sent = write(to, text.data(), text.size());
        if (sent < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

// Sends one byte at a time.
void send_slowly(int to, std::string_view text, std::chrono::milliseconds pause) {
    for (std::size_t i = 0; i < text.size() && send_all(to, text.substr(i, 1)); ++i) {
        std::this_thread::sleep_for(pause);
    }
}

// The current directory as long as it exists. Its files can be opened even by users who may not
// search the directories above it.
class current_directory {
  public:
    explicit current_directory(const std::filesystem::path& now)
        : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(now);
    }
    ~current_directory() { std::filesystem::current_path(before_); }
    current_directory(const current_directory&) = delete;
    current_directory& operator=(const current_directory&) = delete;

  private:
    std::filesystem::path before_;
};

// Returns the time that a call takes.
std::chrono::milliseconds time_of(const std::function<void()>& call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 begin);
}

// --- Files --------------------------------------------------------------------------------------

TEST(file, reports_why_it_cannot_be_read) {
    const snapshot_file file;
    EXPECT_EQ(complaint(file.path()), " No such file or directory");
    EXPECT_EQ(complaint(file.directory()), " is a directory");
    EXPECT_EQ(complaint(""), " No such file or directory");
    EXPECT_EQ(complaint(file.path() + "/x"), " No such file or directory");
    file.write("");
    EXPECT_EQ(complaint(file.path()), " the file is empty");
    EXPECT_EQ(complaint(file.path() + "/x"), " Not a directory");
}

TEST(file, requires_permission) {
    const snapshot_file file("{}");
    ASSERT_EQ(chmod(file.directory().c_str(), 0755), 0);
    const current_directory inside(file.directory());
    const auto complaint_about_mode = [&](mode_t mode) {
        EXPECT_EQ(chmod(file.path().c_str(), mode), 0);
        const bool root = geteuid() == 0;  // may read everything, so be someone else
        EXPECT_EQ(seteuid(root ? 65534 : geteuid()), 0);
        const std::string said = complaint("snapshot.json");
        EXPECT_EQ(seteuid(root ? 0 : geteuid()), 0);
        return said;
    };
    EXPECT_EQ(complaint_about_mode(0644), "");
    EXPECT_EQ(complaint_about_mode(0), " Permission denied");
}

TEST(file, is_at_most_128_mib) {
    const snapshot_file file;
    file.write("{}");
    std::filesystem::resize_file(file.path(), 134217729);
    EXPECT_EQ(complaint(file.path()),
              " is 134217729 bytes long, and the limit of a snapshot is 134217728");
    std::filesystem::resize_file(file.path(), 134217728);
    EXPECT_EQ(complaint(file.path()), "1:3: this is a NUL byte");
    // In 32 bits, these lengths would be 2 and 0.
    ASSERT_EQ(truncate(file.path().c_str(), 4294967298), 0);
    EXPECT_EQ(complaint(file.path()),
              " is 4294967298 bytes long, and the limit of a snapshot is 134217728");
    ASSERT_EQ(truncate(file.path().c_str(), 2147483648), 0);
    EXPECT_EQ(complaint(file.path()),
              " is 2147483648 bytes long, and the limit of a snapshot is 134217728");
}

TEST(file, can_have_any_time_of_modification) {
    const snapshot_file file("{}");
    ASSERT_EQ(
        run({.executable = "/usr/bin/touch", .argv = {"touch", "--date=@4294967296", file.path()}}),
        ended(0, ""));
    EXPECT_EQ(complaint(file.path()),
              sizeof(time_t) == 4 ? " Value too large for defined data type" : "");
}

// Waiting for these takes a minute. The tests below have shorter limits.
TEST(source_limits, are_128_mib_and_half_a_minute) {
    using namespace std::chrono_literals;
    const snapshot::source_limits limits;
    EXPECT_EQ(limits.bytes, 134217728U);
    EXPECT_EQ(limits.socket_silence, 5s);
    EXPECT_EQ(limits.socket_total, 30s);
    EXPECT_EQ(limits.pipe_silence, 60s);
}

TEST(file, is_read_through_a_link) {
    const snapshot_file file("{}");
    const std::string link = file.directory() / "link";
    std::filesystem::create_symlink(file.path(), link);
    EXPECT_EQ(complaint(link), "");
}

// Repeats a function in a thread of its own, as long as it exists.
class repetition {
  public:
    explicit repetition(std::function<void()> function)
        : thread_([this, function = std::move(function)] {
              while (!over_) {
                  function();
              }
          }) {}
    ~repetition() {
        over_ = true;
        thread_.join();
    }
    repetition(const repetition&) = delete;
    repetition& operator=(const repetition&) = delete;

  private:
    std::atomic<bool> over_ = false;
    std::thread thread_;
};

constexpr std::size_t long_file = 2'000'000;  // takes long enough for changes in the meantime

// Each change stands for a write that keeps the length, a nanosecond after the one before.
TEST(file, is_rejected_if_it_is_modified_while_it_is_read) {
    const snapshot_file file(std::string(long_file, 'x'));
    const auto modify = [&](long nanoseconds) {
        const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT},
                                  {.tv_sec = 1, .tv_nsec = nanoseconds}};
        utimensat(AT_FDCWD, file.path().c_str(), times, 0);
    };
    long nanoseconds = 0;
    modify(nanoseconds);
    const repetition writer([&] {
        nanoseconds = (nanoseconds + 1) % 1000;
        modify(nanoseconds);
    });
    std::string reason;
    for (int attempts = 0; attempts < 1000 && reason.empty(); ++attempts) {
        reason = snapshot::read_source(file.path(), {}).error_or("");
    }
    EXPECT_EQ(reason, "changed while it was read");
}

TEST(file, is_read_whole_if_another_is_renamed_over_it) {
    const temp_directory directory;
    const std::string texts[] = {std::string(long_file, 'x'), std::string(long_file, 'y')};
    const std::string files[] = {directory.write("x", texts[0]), directory.write("y", texts[1])};
    const std::string path = directory.write("snapshot", texts[1]);
    std::size_t which = 0;
    const repetition writer([&] {
        const std::string next = directory.path() + "/next";
        link(files[which].c_str(), next.c_str());
        rename(next.c_str(), path.c_str());
        which = 1 - which;
    });
    for (int i = 0; i < 100; ++i) {
        const auto read = snapshot::read_source(path, {});
        ASSERT_TRUE(read) << read.error();
        EXPECT_TRUE(*read == texts[0] || *read == texts[1]);
    }
}

// --- FIFOs and character devices ----------------------------------------------------------------

// A FIFO to which a thread writes.
class fifo {
  public:
    explicit fifo(std::function<void(int to)> writer) : writer_(std::move(writer)) {
        EXPECT_EQ(mkfifo(path().c_str(), 0600), 0);
        thread_ = std::thread([this] {
            const int to = open(path().c_str(), O_WRONLY);
            writer_(to);
            close(to);
        });
    }
    ~fifo() {
        // If nobody opened it for reading, the writer is still waiting.
        const int from = open(path().c_str(), O_RDONLY | O_NONBLOCK);
        thread_.join();
        close(from);
    }

    std::string path() const { return directory_.path() + "/fifo"; }

  private:
    temp_directory directory_;
    std::function<void(int to)> writer_;
    std::thread thread_;
};

TEST(fifo, is_read_until_the_writer_closes_it) {
    const fifo at_once([](int to) { send_all(to, R"({"mode": {}})"); });
    EXPECT_EQ(complaint(at_once.path()), "");
    const fifo in_parts([](int to) {
        send_all(to, R"({"mode")");
        std::this_thread::sleep_for(50ms);
        send_all(to, ": {}}\n");
        std::this_thread::sleep_for(50ms);
    });
    EXPECT_EQ(complaint(in_parts.path()), "");
    const std::string long_text = R"({"about": ")" + std::string(3'000'000, 'x') + "\"}";
    const fifo much([&](int to) { send_all(to, long_text); });
    EXPECT_EQ(complaint(much.path()), "");
}

TEST(fifo, is_read_once_a_writer_opens_it) {
    const temp_directory directory;
    const std::string path = directory.path() + "/fifo";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread late([&] {
        std::this_thread::sleep_for(100ms);
        const int to = open(path.c_str(), O_WRONLY);
        send_all(to, "{}");
        close(to);
    });
    EXPECT_EQ(complaint(path), "");
    late.join();
}

TEST(fifo, reports_errors_in_its_text) {
    const fifo nothing([](int) {});
    EXPECT_EQ(complaint(nothing.path()), " the file is empty");
    const fifo half([](int to) { send_all(to, "{\n\"mode\": {"); });
    EXPECT_EQ(complaint(half.path()), "2:10: expected a member name, found the end of the file");
}

TEST(fifo, can_be_silent_for_a_limited_time) {
    const temp_directory directory;
    const std::string path = directory.path() + "/fifo";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(complaint(path, {.pipe_silence = 50ms}), " sent no byte for 0.05 seconds");

    // The time begins again with each byte.
    const fifo slow([](int to) { send_slowly(to, "{" + std::string(60, ' ') + "}", 20ms); });
    EXPECT_EQ(complaint(slow.path(),
                        {.socket_silence = 1ms, .socket_total = 1ms, .pipe_silence = 1000ms}),
              "");
    std::latch over(1);
    const fifo silent([&](int to) {
        send_all(to, "{");
        over.wait();
    });
    EXPECT_EQ(complaint(silent.path(), {.pipe_silence = 100ms}), " sent no byte for 0.1 seconds");
    over.count_down();
}

TEST(fifo, is_at_most_as_long_as_a_file) {
    const fifo just([](int to) { send_all(to, "{}" + std::string(998, ' ')); });
    EXPECT_EQ(complaint(just.path(), {.bytes = 1000}), "");
    const fifo longer([](int to) { send_all(to, "{}" + std::string(999, ' ')); });
    EXPECT_EQ(complaint(longer.path(), {.bytes = 1000}),
              " is longer than 1000 bytes, the limit of a snapshot");
}

TEST(device, is_read_to_its_end_or_to_the_limit) {
    EXPECT_EQ(complaint("/dev/null"), " the file is empty");
    EXPECT_EQ(complaint("/dev/zero"), " is longer than 134217728 bytes, the limit of a snapshot");
    EXPECT_EQ(complaint("/dev/full"), " is longer than 134217728 bytes, the limit of a snapshot");
}

// --- Sockets ------------------------------------------------------------------------------------

sockaddr_un address_of(std::string_view path) {
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

// Returns a socket of that name that does not listen yet.
int bound_socket(const std::string& path, int type = SOCK_STREAM) {
    const int made = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    const sockaddr_un address = address_of(path);
    EXPECT_EQ(bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
        << std::strerror(errno);
    return made;
}

// A listener that calls a function for each connection.
class listener {
  public:
    explicit listener(std::function<void(int to)> answer, const std::string& path = "")
        : path_(path.empty() ? directory_.path() + "/sock" : path),
          answer_(std::move(answer)),
          socket_(bound_socket(path_)) {
        EXPECT_EQ(listen(socket_, 10), 0);
        thread_ = std::thread([this] {
            for (int to = accept(socket_, nullptr, nullptr); to >= 0;
                 to = accept(socket_, nullptr, nullptr)) {
                answer_(to);
                close(to);
            }
        });
    }
    ~listener() {
        shutdown(socket_, SHUT_RDWR);
        thread_.join();
        close(socket_);
    }

    const std::string& path() const { return path_; }

  private:
    socket_directory directory_;
    std::string path_;
    std::function<void(int to)> answer_;
    int socket_;
    std::thread thread_;
};

TEST(listener, sends_a_snapshot_over_each_connection) {
    int asked = 0;
    const listener service([&](int to) {
        send_all(to, R"({"stream": {"quota": {"asked": )");
        std::this_thread::sleep_for(20ms);
        send_all(to, std::to_string(++asked) + "}}}\n");
        shutdown(to, SHUT_WR);
        char sent = 0;
        EXPECT_EQ(read(to, &sent, 1), 0);  // the reader has sent nothing when it closes
    });
    for (std::uint32_t i = 1; i <= 3; ++i) {
        const auto loaded = snapshot::load(service.path());
        ASSERT_TRUE(loaded) << loaded.error();
        const auto quota = std::get<snapshot::map_entries>((*loaded)->stream_quota);
        EXPECT_EQ(quota[0].value.get_if<std::uint32_t>(), i);
    }
    const std::string long_text = R"({"about": ")" + std::string(3'000'000, 'x') + "\"}";
    const listener much([&](int to) { send_all(to, long_text); });
    EXPECT_EQ(complaint(much.path()), "");
}

TEST(listener, can_reject_every_connection) {
    const socket_directory directory;
    const std::string path = directory.path() + "/sock";
    const int unused = bound_socket(path);
    EXPECT_EQ(complaint(path), " Connection refused");
    close(unused);
    EXPECT_EQ(complaint(path), " Connection refused");
}

TEST(listener, can_use_another_protocol) {
    const socket_directory directory;
    const int other = bound_socket(directory.path() + "/sock", SOCK_DGRAM);
    EXPECT_EQ(complaint(directory.path() + "/sock"), " Protocol wrong type for socket");
    close(other);
}

TEST(listener, requires_permission) {
    const listener service([](int to) { send_all(to, "{}"); });
    ASSERT_EQ(chmod(service.path().c_str(), 0), 0);
    const bool root = geteuid() == 0;
    if (root) {
        ASSERT_EQ(chmod(std::filesystem::path(service.path()).parent_path().c_str(), 0755), 0);
        ASSERT_EQ(seteuid(65534), 0);
    }
    EXPECT_EQ(complaint(service.path()), " Permission denied");
    if (root) {
        ASSERT_EQ(seteuid(0), 0);
    }
}

TEST(listener, requires_a_short_path) {
    const temp_directory directory;
    const std::string deep = directory.path() + "/" + std::string(100, 'd');
    std::filesystem::create_directory(deep);
    const current_directory inside(deep);
    const int made = bound_socket("sock");
    EXPECT_EQ(listen(made, 1), 0);
    EXPECT_EQ(complaint(deep + "/sock"), " the path of a socket has at most 107 bytes");
    close(made);
}

TEST(listener, can_be_silent_for_a_limited_time) {
    const listener silent([](int to) {
        pollfd gone{to, POLLRDHUP, 0};
        poll(&gone, 1, 10'000);
    });
    EXPECT_EQ(complaint(silent.path(), {.socket_silence = 100ms}), " sent no byte for 0.1 seconds");
    const listener stops([](int to) {
        send_all(to, "{");
        pollfd gone{to, POLLRDHUP, 0};
        poll(&gone, 1, 10'000);
    });
    EXPECT_EQ(complaint(stops.path(), {.socket_silence = 100ms}), " sent no byte for 0.1 seconds");
}

TEST(listener, has_a_limited_total_time) {
    const listener slow([](int to) { send_slowly(to, "{" + std::string(1000, ' '), 10ms); });
    const auto took = time_of([&] {
        EXPECT_EQ(complaint(slow.path(), {.socket_silence = 5s, .socket_total = 200ms}),
                  " did not end within 0.2 seconds");
    });
    EXPECT_GE(took, 200ms);
    EXPECT_LT(took, 5s);
}

TEST(listener, can_close_the_connection_early) {
    const listener half([](int to) { send_all(to, R"({"mode": {"info": {"a")"); });
    EXPECT_EQ(complaint(half.path()), "1:23: expected ':', found the end of the file");
    const listener nothing([](int) {});
    EXPECT_EQ(complaint(nothing.path()),
              " the server closed the connection without sending anything");
}

TEST(listener, can_be_too_busy_to_accept) {
    const socket_directory directory;
    const std::string path = directory.path() + "/sock";
    const int busy = bound_socket(path);
    ASSERT_EQ(listen(busy, 0), 0);
    const int first = socket(AF_UNIX, SOCK_STREAM, 0);  // takes the one place
    const sockaddr_un address = address_of(path);
    ASSERT_EQ(connect(first, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(complaint(path, {.socket_silence = 100ms}),
              " accepted no connection within 0.1 seconds");
    close(first);
    close(busy);
}

TEST(listener, can_send_without_end) {
    const listener endless([](int to) {
        const std::string blanks(65536, ' ');
        while (send_all(to, blanks)) {
        }
    });
    EXPECT_EQ(complaint(endless.path()),
              " is longer than 134217728 bytes, the limit of a snapshot");
}

// --- Standard input -----------------------------------------------------------------------------

// Replaces standard input as long as it exists.
class standard_input {
  public:
    explicit standard_input(int from) : before_(dup(STDIN_FILENO)) { dup2(from, STDIN_FILENO); }
    ~standard_input() {
        dup2(before_, STDIN_FILENO);
        close(before_);
    }
    standard_input(const standard_input&) = delete;
    standard_input& operator=(const standard_input&) = delete;

  private:
    int before_;
};

TEST(standard_input, can_be_a_pipe) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const standard_input input(ends[0]);
    std::thread writer([&] {
        std::this_thread::sleep_for(50ms);
        send_all(ends[1], R"({"mode": {}})");
        close(ends[1]);
    });
    EXPECT_EQ(complaint("/dev/stdin"), "");
    writer.join();
    EXPECT_EQ(complaint("/dev/stdin"), " the file is empty");
    EXPECT_EQ(snapshot::load_standard_input().error(), "/dev/stdin: the file is empty");
    close(ends[0]);
}

// Opened anew, it would be read from its beginning, or not at all: its path is gone.
TEST(standard_input, can_be_a_file_that_is_read_from_where_it_is) {
    const snapshot_file file("not this {\"mode\": 1}");
    const int opened = open(file.path().c_str(), O_RDONLY);
    ASSERT_EQ(unlink(file.path().c_str()), 0);
    ASSERT_EQ(lseek(opened, 9, SEEK_SET), 9);
    const standard_input input(opened);
    close(opened);
    EXPECT_EQ(snapshot::load_standard_input().error(),
              "/dev/stdin:1:10: expected the mode (an object), found '1'");
    EXPECT_EQ(snapshot::load_standard_input().error(), "/dev/stdin: the file is empty");
}

TEST(standard_input, can_be_closed_or_a_directory) {
    const temp_directory directory;
    const int opened = open(directory.path().c_str(), O_RDONLY);
    const standard_input input(opened);
    close(opened);
    EXPECT_EQ(snapshot::load_standard_input().error(), "/dev/stdin: is a directory");
    close(STDIN_FILENO);
    EXPECT_EQ(snapshot::load_standard_input().error(), "/dev/stdin: Bad file descriptor");
}

TEST(standard_input, can_be_open_only_for_writing) {
    const int opened = open("/dev/null", O_WRONLY);
    const standard_input input(opened);
    close(opened);
    EXPECT_EQ(snapshot::load_standard_input().error(), "/dev/stdin: Bad file descriptor");
}

TEST(standard_input, can_be_a_socket) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const standard_input input(ends[0]);
    const snapshot::source_limits limits{
        .socket_silence = 1ms, .socket_total = 1ms, .pipe_silence = 1000ms};
    std::thread writer([&] {
        send_slowly(ends[1], R"({"mode": {}})", 20ms);
        shutdown(ends[1], SHUT_WR);
    });
    EXPECT_EQ(complaint("/dev/stdin", limits), "");
    writer.join();
    close(ends[0]);
    close(ends[1]);
}

TEST(standard_input, has_the_limits_of_a_pipe_if_it_is_a_socket) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const standard_input input(ends[0]);
    EXPECT_EQ(complaint("/dev/stdin", {.pipe_silence = 100ms}), " sent no byte for 0.1 seconds");
    send_all(ends[1], "{}" + std::string(999, ' '));
    EXPECT_EQ(complaint("/dev/stdin", {.bytes = 1000}),
              " is longer than 1000 bytes, the limit of a snapshot");
    close(ends[0]);
    close(ends[1]);
}

// --- The place ----------------------------------------------------------------------------------

// Runs `look` in a process with an empty /run. Returns false if that is not permitted.
bool with_a_run_of_its_own(const std::function<void()>& look) {
    const pid_t child = fork();
    if (child == 0) {
        const int apart = geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS;
        if (unshare(apart) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", "/run", "tmpfs", 0, nullptr) != 0 || mkdir("/run/oru", 0755) != 0) {
            _exit(77);
        }
        look();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_TRUE(WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 77);
    return WEXITSTATUS(status) != 77;
}

std::string peak() {
    return run({.executable = program("oru-tlm-tool"), .argv = {"oru-tlm-tool", "-q"}})
        .out.substr(0, sizeof "MaxBufferBytes=N" - 1);
}

TEST(place, is_the_default_socket_if_it_exists_otherwise_the_default_file) {
    const bool ran = with_a_run_of_its_own([] {
        EXPECT_EQ(peak(), "MaxBufferBytes=-");
        std::filesystem::create_symlink("snapshot.json", "/run/oru/snapshot.sock");
        std::ofstream("/run/oru/snapshot.json")
            << R"({"stream": {"debug": {"global.capacity.peak": 1}}})";
        EXPECT_EQ(peak(), "MaxBufferBytes=1");  // what has the name of the socket is a file
        unlink("/run/oru/snapshot.sock");
        EXPECT_EQ(peak(), "MaxBufferBytes=1");
        {
            const listener service(
                [](int to) {
                    send_all(to, R"({"stream": {"debug": {"global.capacity.peak": 2}}})");
                },
                "/run/oru/snapshot.sock");
            EXPECT_EQ(peak(), "MaxBufferBytes=2");
        }
        // It still exists and has precedence over the file.
        EXPECT_EQ(peak(), "MaxBufferBytes=-");
        EXPECT_EQ(
            run({.executable = program("oru-serverreport-tool"),
                 .argv = {"oru-serverreport-tool", "-c"}}),
            ended(0, "Failed to get all channels: /run/oru/snapshot.sock: Connection refused\n"));
        unlink("/run/oru/snapshot.sock");
        EXPECT_EQ(peak(), "MaxBufferBytes=1");
    });
    if (!ran) {
        GTEST_SKIP() << "no permission for a separate /run";
    }
}

// A user who starts a program with more rights must not choose what it reads.
TEST(place, is_not_taken_from_the_environment_by_a_privileged_program) {
    const temp_directory scratch;
    struct statvfs system{};
    ASSERT_EQ(statvfs(scratch.path().c_str(), &system), 0);
    if (geteuid() != 0 || (system.f_flag & ST_NOSUID) != 0) {
        GTEST_SKIP() << "only root can create such a program, and not on every file system";
    }
    const std::string copy = scratch.path() + "/oru-tlm-tool";
    std::filesystem::copy_file(program("oru-tlm-tool"), copy);
    const std::string snapshot =
        scratch.write("snapshot.json", R"({"stream": {"debug": {"global.capacity.peak": 7}}})");
    const current_directory inside(scratch.path());
    const command what{.executable = copy,
                       .argv = {"oru-tlm-tool", "-q"},
                       .environment = {"ORU_SNAPSHOT=snapshot.json"}};
    ASSERT_TRUE(run(what).out.starts_with("MaxBufferBytes=7\n"));

    // Any user may read the snapshot.
    ASSERT_EQ(chmod(scratch.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(snapshot.c_str(), 0644), 0);
    ASSERT_EQ(chown(copy.c_str(), 65534, 65534), 0);
    ASSERT_EQ(chmod(copy.c_str(), 04755), 0);
    EXPECT_FALSE(run(what).out.starts_with("MaxBufferBytes=7\n"));
}

}  // namespace
