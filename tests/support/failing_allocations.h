// operator new of a test program in which an allocation can be made to fail.
#pragma once

// The number of allocations that succeed before one throws std::bad_alloc, which leaves it
// negative. None throws while it is negative.
extern long allocations_left;
