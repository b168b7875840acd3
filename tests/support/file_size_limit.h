// While an object of this class exists, programs started by the test cannot make a file longer than
// `bytes`: the system sends SIGXFSZ for a write beyond that, and the write fails. In the test
// itself, such a write only fails. Terminals, pipes and devices are exempt.
#pragma once

#include <signal.h>
#include <sys/resource.h>

#include <stdexcept>

class file_size_limit {
  public:
    explicit file_size_limit(rlim_t bytes) {
        // A program that the test starts inherits the limit, but not the handler.
        previous_handler_ = signal(SIGXFSZ, [](int) {});
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
