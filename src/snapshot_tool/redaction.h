// Redaction: replaces personal data in a recording. The identities of the service's clients become
// client-1, client-2 and so on, each the same everywhere, and the messages of failures "redacted".
#pragma once

#include <memory>

#include "snapshot/answers.h"

namespace snapshot_tool {

// Returns the snapshot with personal data replaced. Everything else remains the original's, which
// the result keeps alive.
std::shared_ptr<snapshot::answers> redact(std::shared_ptr<const snapshot::answers> original);

}  // namespace snapshot_tool
