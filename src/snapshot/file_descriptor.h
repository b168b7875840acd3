// The owner of an open file.
#pragma once

#include <unistd.h>

namespace snapshot {

// Closes the file, unless the number is negative: opening it failed.
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

}  // namespace snapshot
