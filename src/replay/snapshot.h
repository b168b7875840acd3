// The snapshot that this process answers from, and how it is found.
#pragma once

#include <expected>
#include <memory>
#include <string>

#include "snapshot/document.h"
#include "snapshot/source.h"

namespace oru {

// A snapshot, or why there is none: "PATH: REASON" or "PATH:LINE:COLUMN: REASON".
using snapshot = std::expected<std::shared_ptr<const document>, std::string>;

// Reads and checks what `path` names.
snapshot load(const std::string& path, const source_limits& limits = {});

// The snapshot that $ORU_SNAPSHOT names, else the one of this machine. It is read at the first
// call; what came out, a complaint too, stands until reset().
const snapshot& current();

// Makes the next current() read again. Objects and maps that were handed out stay valid.
void reset();

}  // namespace oru
