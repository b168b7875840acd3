// A directory that its destructor removes with all contents. It is in $TMPDIR unless the test names
// another parent.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include <stdlib.h>

class temp_directory {
  public:
    explicit temp_directory(
        const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        std::string pattern = parent / "oru-test-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("mkdtemp " + pattern);
        }
        path_ = pattern;
    }
    temp_directory(const temp_directory&) = delete;
    temp_directory& operator=(const temp_directory&) = delete;
    ~temp_directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    std::string path() const { return path_; }

    // Writes the file `name` and returns its path.
    std::string write(std::string_view name, std::string_view text) const {
        const std::string path = path_ / name;
        // If a file is truncated and rewritten instead, some file systems flush it to the disk.
        std::filesystem::remove(path);
        std::ofstream file(path, std::ios::binary);
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
        file.close();
        if (!file) {
            throw std::runtime_error("cannot write " + path);
        }
        return path;
    }

  private:
    std::filesystem::path path_;
};

// A directory for sockets: the path of a socket has at most 107 bytes, and $TMPDIR may be longer.
struct socket_directory : temp_directory {
    socket_directory() : temp_directory("/tmp") {}
};
