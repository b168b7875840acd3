#include "snapshot_tool/replace_file.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <gtest/gtest.h>
#include <sched.h>

#include "support/file_size_limit.h"
#include "support/temp_directory.h"

namespace {

bool kills_in_fsync = false;

}  // namespace

// In place of the system's: ends the process at the last moment before the file is complete.
int fsync(int file) {
    if (kills_in_fsync) {
        raise(SIGKILL);
    }
    return fdatasync(file);
}

namespace {

using namespace snapshot_tool;

std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

mode_t mode_of(const std::string& path) {
    struct stat status{};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

std::string refusal(const std::string& path) {
    try {
        replace_file(path, "new", 0640);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

std::size_t entries_in(const temp_directory& directory) {
    const std::filesystem::directory_iterator all(directory.path());
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

TEST(replace_file, sets_the_mode_whatever_the_umask) {
    const temp_directory scratch;
    const std::string path = scratch.path() + "/new.json";
    for (const mode_t mask : {0000U, 0022U, 0077U}) {
        const mode_t previous = umask(mask);
        replace_file(path, "one\n", 0640);
        EXPECT_EQ(mode_of(path), 0640U);
        replace_file(path, "two\n", 0644);
        EXPECT_EQ(mode_of(path), 0644U);
        umask(previous);
    }
    EXPECT_EQ(content(path), "two\n");
    EXPECT_EQ(entries_in(scratch), 1U);
}

TEST(replace_file, leaves_the_old_file_to_programs_that_have_it_open) {
    const temp_directory scratch;
    const std::string path = scratch.write("file", "old text");
    std::ifstream reader(path, std::ios::binary);
    replace_file(path, "new", 0640);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "old text");
    EXPECT_EQ(content(path), "new");
}

TEST(replace_file, accepts_a_path_in_the_current_directory) {
    const temp_directory scratch;
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.path());
    replace_file("plain", "text", 0640);
    std::filesystem::current_path(before);
    EXPECT_EQ(content(scratch.path() + "/plain"), "text");
}

TEST(replace_file, rejects_a_path_that_is_not_a_regular_file) {
    const socket_directory scratch;
    const std::string at = scratch.path();
    ASSERT_EQ(mkdir((at + "/directory").c_str(), 0755), 0);
    ASSERT_EQ(mkfifo((at + "/fifo").c_str(), 0644), 0);
    ASSERT_EQ(symlink("/dev/null", (at + "/device").c_str()), 0);
    ASSERT_EQ(symlink("nothing", (at + "/nothing").c_str()), 0);
    scratch.write("file", "old");
    ASSERT_EQ(symlink("file", (at + "/link").c_str()), 0);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (at + "/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(listener);

    for (const char* name : {"directory", "fifo", "device", "nothing", "link", "socket"}) {
        const std::string path = at + '/' + name;
        EXPECT_EQ(refusal(path), path + ": is not a regular file");
    }
    EXPECT_EQ(content(at + "/file"), "old");
    EXPECT_EQ(entries_in(scratch), 7U);
}

TEST(replace_file, reports_why_it_fails) {
    EXPECT_EQ(refusal("/nowhere/file"), "/nowhere/file: No such file or directory");
    EXPECT_EQ(refusal(""), ": No such file or directory");
    const temp_directory scratch;
    const std::string path = scratch.path() + '/' + std::string(300, 'x');
    EXPECT_EQ(refusal(path), path + ": File name too long");
    EXPECT_EQ(entries_in(scratch), 0U);
}

TEST(replace_file, changes_nothing_if_the_disk_is_full) {
    const temp_directory scratch;
    const std::string path = scratch.write("file", "old");
    {
        const file_size_limit full(2);
        EXPECT_EQ(refusal(path), path + ": File too large");
    }
    EXPECT_EQ(content(path), "old");
    EXPECT_EQ(entries_in(scratch), 1U);
}

// Calls the function in a child process. Returns the status of the child, as waitpid() does.
template <class Function>
int status_of_child(const Function& function) {
    const pid_t child = fork();
    if (child == 0) {
        function();
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

TEST(replace_file, leaves_nothing_behind_if_it_is_killed) {
    const temp_directory scratch;
    const int unnamed = open(scratch.path().c_str(), O_TMPFILE | O_WRONLY, 0600);
    if (unnamed < 0) {
        GTEST_SKIP() << "this file system has no unnamed files";
    }
    close(unnamed);
    const std::string path = scratch.write("file", "old");
    const int status = status_of_child([&] {
        kills_in_fsync = true;
        replace_file(path, "new", 0640);
    });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    EXPECT_EQ(content(path), "old");
    EXPECT_EQ(entries_in(scratch), 1U);
}

TEST(replace_file, works_without_proc) {
    const temp_directory scratch;
    const std::string path = scratch.write("file", "old");
    const int status = status_of_child([&] {
        if ((geteuid() != 0 && unshare(CLONE_NEWUSER) != 0) ||
            chroot(scratch.path().c_str()) != 0 || chdir("/") != 0) {
            _exit(77);
        }
        replace_file("/file", "new text", 0640);
        {
            const file_size_limit full(2);
            EXPECT_EQ(refusal("/file"), "/file: File too large");
        }
        _exit(testing::Test::HasFailure() ? 1 : 0);
    });
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == 77) {
        GTEST_SKIP() << "no permission to change the root directory";
    }
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(content(path), "new text");
    EXPECT_EQ(mode_of(path), 0640U);
    EXPECT_EQ(entries_in(scratch), 1U);
}

}  // namespace
