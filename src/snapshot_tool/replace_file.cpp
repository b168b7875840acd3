#include "snapshot_tool/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <stdexcept>

namespace snapshot_tool {
namespace {

// As long as it exists, no signal ends the process halfway, and a write that exceeds the limit on
// file sizes returns an error.
class signal_guard {
  public:
    signal_guard() : size_handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
            sigaddset(&ending, signal);
        }
        sigprocmask(SIG_BLOCK, &ending, &mask_);
    }
    ~signal_guard() {
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
        std::signal(SIGXFSZ, size_handler_);
    }
    signal_guard(const signal_guard&) = delete;
    signal_guard& operator=(const signal_guard&) = delete;

  private:
    sigset_t mask_{};
    sighandler_t size_handler_;
};

// A new file under a random name, deleted again unless it is renamed.
class temporary_file {
  public:
    explicit temporary_file(const std::string& directory)
        : path_(directory + ".oru-snapshot-XXXXXX"), number_(mkostemp(path_.data(), O_CLOEXEC)) {}
    ~temporary_file() {
        if (number_ >= 0) {
            close(number_);
            if (!path_.empty()) {
                unlink(path_.c_str());
            }
        }
    }
    temporary_file(const temporary_file&) = delete;
    temporary_file& operator=(const temporary_file&) = delete;

    // Return whether they succeeded; errno has the reason if not.
    bool is_open() const { return number_ >= 0; }

    bool fill(std::string_view text) {
        while (!text.empty()) {
            const ssize_t written = write(number_, text.data(), text.size());
            if (written < 0) {
                return false;
            }
            text.remove_prefix(static_cast<std::size_t>(written));
        }
        return fsync(number_) == 0;
    }

    bool allow(mode_t mode) { return fchmod(number_, mode) == 0; }

    bool rename_to(const std::string& path) {
        if (rename(path_.c_str(), path.c_str()) != 0) {
            return false;
        }
        path_.clear();
        return true;
    }

  private:
    std::string path_;
    int number_;
};

}  // namespace

void replace_file(const std::string& path, std::string_view text, mode_t mode) {
    const signal_guard guard;
    struct stat existing;
    if (lstat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) {
        throw std::runtime_error(path + ": is not a regular file");
    }
    temporary_file file(path.substr(0, path.rfind('/') + 1));
    if (!file.is_open() || !file.allow(mode) || !file.fill(text) || !file.rename_to(path)) {
        throw std::runtime_error(path + ": " + std::strerror(errno));
    }
}

}  // namespace snapshot_tool
