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

// While it lives, no signal ends the process halfway, and a write beyond the largest size that the
// process may give a file fails by its result.
class signals_held {
  public:
    signals_held() : size_handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
            sigaddset(&ending, signal);
        }
        sigprocmask(SIG_BLOCK, &ending, &mask_);
    }
    ~signals_held() {
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
        std::signal(SIGXFSZ, size_handler_);
    }
    signals_held(const signals_held&) = delete;
    signals_held& operator=(const signals_held&) = delete;

  private:
    sigset_t mask_{};
    sighandler_t size_handler_;
};

// A new file under a name that nobody knows, gone again unless it is renamed.
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

    // Each returns whether it was done; errno says why not.
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
    const signals_held held;
    struct stat there;
    if (lstat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode)) {
        throw std::runtime_error(path + ": is not a regular file");
    }
    temporary_file file(path.substr(0, path.rfind('/') + 1));
    if (!file.is_open() || !file.allow(mode) || !file.fill(text) || !file.rename_to(path)) {
        throw std::runtime_error(path + ": " + std::strerror(errno));
    }
}

}  // namespace snapshot_tool
