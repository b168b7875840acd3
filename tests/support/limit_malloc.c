/* Preloaded into a tool under test: allocating $ORU_TEST_MALLOC_LIMIT bytes or more fails. */
#include <errno.h>

#include <stddef.h>
#include <stdlib.h>

void* __libc_malloc(size_t size);

void* malloc(size_t size) {
    const char* limit = getenv("ORU_TEST_MALLOC_LIMIT");
    if (limit != NULL && size >= strtoul(limit, NULL, 10)) {
        errno = ENOMEM;
        return NULL;
    }
    return __libc_malloc(size);
}
