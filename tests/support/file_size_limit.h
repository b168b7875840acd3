// While an object of this class exists, programs started by the test cannot make a file longer than
// `bytes`: a write beyond that fails, as on a full file system. Terminals, pipes and devices are
// exempt.
#pragma once

#include <signal.h>
#include <sys/resource.h>

#include <stdexcept>

class file_size_limit {
  public:
    explicit file_size_limit(rlim_t bytes) {
        // A child process inherits both. If SIGXFSZ is ignored, the write returns an error.
        previous_handler_ = signal(SIGXFSZ, SIG_IGN);
        if (getrlimit(RLIMIT_FSIZE, &previous_) != 0) {
            throw std::runtime_error("getrlimit");
        }
        set({.rlim_cur = bytes, .rlim_max = previous_.rlim_max});
    }
    ~file_size_limit() {
        set(previous_);
        signal(SIGXFSZ, previous_handler_);
    }
    file_size_limit(const file_size_limit&) = delete;
    file_size_limit& operator=(const file_size_limit&) = delete;

  private:
    static void set(const rlimit& limit) {
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            throw std::runtime_error("setrlimit");
        }
    }

    rlimit previous_{};
    sighandler_t previous_handler_ = nullptr;
};
