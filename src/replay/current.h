// The snapshot that this process answers from.
#pragma once

#include "snapshot/load.h"

namespace replay {

// Returns the snapshot at $ORU_SNAPSHOT, otherwise at the default place of this machine, or why
// there is none. It is read at the first call, and the result, a complaint too, remains until
// reset().
const snapshot::loaded& current();

// Makes the next current() read again. Objects and maps that were handed out stay valid.
void reset();

}  // namespace replay
