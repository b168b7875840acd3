// Reads a snapshot from a file, pipe, device or socket.
#pragma once

#include <expected>
#include <memory>
#include <string>

#include "snapshot/answers.h"
#include "snapshot/source.h"

namespace snapshot {

// A snapshot, or why it cannot be read: "PATH: REASON" or "PATH:LINE:COLUMN: REASON".
using loaded = std::expected<std::shared_ptr<const answers>, std::string>;

// Reads and checks the snapshot at `path`.
loaded load(const std::string& path, const source_limits& limits = {});

// Reads and checks the snapshot on standard input, from its current position. Messages name
// /dev/stdin.
loaded load_standard_input();

}  // namespace snapshot
