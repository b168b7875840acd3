// Redaction: replaces personal data in a recording. The message of every failure becomes
// "redacted". The identities of clients get other names, the same identity the same name
// everywhere: client-1, client-2 and so on or, with a key, names such as client-5fd924625f6a. The
// same key gives the same name in every recording. Without the key, nobody finds out by trying
// whose name it is.
#pragma once

#include <string>

#include "snapshot/answers.h"

namespace snapshot_tool {

// Redacts the snapshot, with the bytes of a key unless that is NULL. Throws a std::runtime_error if
// two identities get the same name.
void redact(snapshot::answers& all, const std::string* key);

}  // namespace snapshot_tool
