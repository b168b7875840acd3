// Redaction: replaces personal data in a recording. The identities of clients become client-1,
// client-2 and so on, the same identity the same name everywhere. The message of every failure
// becomes "redacted".
#pragma once

#include <memory>

#include "snapshot/answers.h"

namespace snapshot_tool {

// Returns the snapshot with personal data replaced. It shares everything else with the original and
// keeps that alive.
std::shared_ptr<snapshot::answers> redact(std::shared_ptr<const snapshot::answers> original);

}  // namespace snapshot_tool
