// A snapshot written by a test, in a directory of its own that goes when the test is over.
#ifndef ORU_TESTS_VIDEO_SNAPSHOT_FILE_H
#define ORU_TESTS_VIDEO_SNAPSHOT_FILE_H

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <stdlib.h>

class snapshot_file {
  public:
    snapshot_file() {
        std::string name = (std::filesystem::temp_directory_path() / "oru-test-XXXXXX").string();
        if (!mkdtemp(name.data())) {
            abort();
        }
        directory_ = name;
    }
    explicit snapshot_file(std::string_view text) : snapshot_file() { write(text); }
    ~snapshot_file() { std::filesystem::remove_all(directory_); }
    snapshot_file(const snapshot_file&) = delete;
    snapshot_file& operator=(const snapshot_file&) = delete;

    void write(std::string_view text) const {
        std::ofstream file(path(), std::ios::binary | std::ios::trunc);
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
        file.close();
        if (!file) {
            abort();
        }
    }

    std::string path() const { return directory_ / "snapshot.json"; }
    const std::filesystem::path& directory() const { return directory_; }

  private:
    std::filesystem::path directory_;
};

#endif
