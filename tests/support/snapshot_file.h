// A snapshot written by a test, in a temporary directory of its own.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "support/temp_directory.h"

class snapshot_file {
  public:
    snapshot_file() = default;
    explicit snapshot_file(std::string_view text) { write(text); }

    void write(std::string_view text) const { directory_.write("snapshot.json", text); }

    std::string path() const { return directory_.path() + "/snapshot.json"; }
    std::filesystem::path directory() const { return directory_.path(); }

  private:
    temp_directory directory_;
};
