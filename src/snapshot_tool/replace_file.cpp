#include "snapshot_tool/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <format>
#include <stdexcept>

#include <glib.h>

#include "snapshot/file_descriptor.h"

namespace snapshot_tool {
namespace {

using snapshot::file_descriptor;

// As long as it exists, the process receives no signal that can be blocked.
class signal_guard {
  public:
    signal_guard() {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_SETMASK, &all, &mask_);
    }
    ~signal_guard() { sigprocmask(SIG_SETMASK, &mask_, nullptr); }
    signal_guard(const signal_guard&) = delete;
    signal_guard& operator=(const signal_guard&) = delete;

  private:
    sigset_t mask_{};
};

// What replaces a file, and where.
struct replacement {
    const std::string& path;
    std::string_view text;
    mode_t mode;

    std::string directory() const { return path.substr(0, path.rfind('/') + 1); }
};

// Writes text and mode to an empty file. Returns false with errno set if that fails.
bool fill(int file, const replacement& replacement) {
    for (std::string_view text = replacement.text; !text.empty();) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return fchmod(file, replacement.mode) == 0 && fsync(file) == 0;
}

// Renames a file to the path, or deletes it. Returns 0, or an error number.
int move(const std::string& temporary_name, const std::string& path) {
    if (rename(temporary_name.c_str(), path.c_str()) == 0) {
        return 0;
    }
    const int code = errno;
    unlink(temporary_name.c_str());
    return code;
}

// Gives an unnamed file a name. Returns false if that is not possible.
bool link_at(int file, const std::string& name) {
    const std::string opened = std::format("/proc/self/fd/{}", file);
    return linkat(AT_FDCWD, opened.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

constexpr int not_possible = -1;

// Uses a file that has no name until it is complete, so that the system deletes it if the process
// is killed. Returns 0, an error number, or not_possible: not every file system has such files, and
// they get a name through /proc.
int replace_by_unnamed_file(const replacement& replacement) {
    const std::string directory = replacement.directory();
    const file_descriptor file(
        open(directory.empty() ? "." : directory.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600));
    if (file.get() < 0) {
        return not_possible;
    }
    if (!fill(file.get(), replacement)) {
        return errno;
    }
    const signal_guard guard;
    for (;;) {
        const std::string name = std::format("{}.oru-snapshot-{:08x}", directory, g_random_int());
        if (link_at(file.get(), name)) {
            return move(name, replacement.path);
        }
        if (errno != EEXIST) {
            return not_possible;
        }
    }
}

// Uses a file with a name. Returns 0 or an error number.
int replace_by_named_file(const replacement& replacement) {
    const signal_guard guard;
    std::string name = replacement.directory() + ".oru-snapshot-XXXXXX";
    const file_descriptor file(mkostemp(name.data(), O_CLOEXEC));
    if (file.get() < 0) {
        return errno;
    }
    if (!fill(file.get(), replacement)) {
        const int code = errno;
        unlink(name.c_str());
        return code;
    }
    return move(name, replacement.path);
}

}  // namespace

void replace_file(const std::string& path, std::string_view text, mode_t mode) {
    struct stat existing;
    if (lstat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) {
        throw std::runtime_error(path + ": is not a regular file");
    }
    const replacement replacement{.path = path, .text = text, .mode = mode};
    int code = replace_by_unnamed_file(replacement);
    if (code == not_possible) {
        code = replace_by_named_file(replacement);
    }
    if (code != 0) {
        throw std::runtime_error(path + ": " + std::strerror(code));
    }
}

}  // namespace snapshot_tool
