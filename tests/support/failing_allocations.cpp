#include "support/failing_allocations.h"

#include <new>

#include <stdlib.h>

long allocations_left = -1;

namespace {

void* allocate(std::size_t size) {
    if (allocations_left >= 0 && allocations_left-- == 0) {
        throw std::bad_alloc();
    }
    void* memory = malloc(size ? size : 1);
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    return allocate(size);
}

// Without this definition, a sanitizer's own would bypass allocate().
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* memory) noexcept {
    free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    free(memory);
}

void operator delete[](void* memory) noexcept {
    free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    free(memory);
}
