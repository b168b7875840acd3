// Replaces operator new in a test program, so that a test can make an allocation fail.
#pragma once

// The number of allocations that succeed before one throws std::bad_alloc. After that it is
// negative. While it is negative, no allocation throws.
extern long allocations_left;
