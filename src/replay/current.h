// The snapshot from which this process answers.
#pragma once

#include "snapshot/load.h"

namespace replay {

// Returns the snapshot at $ORU_SNAPSHOT, otherwise at the default place of this machine, or why it
// cannot be read. The first call reads it. Later calls return the same result until reset().
const snapshot::loaded& current();

// Makes the next current() read again. Existing objects and maps stay valid.
void reset();

}  // namespace replay
