/* Preloaded into a tool under test: redirects every path under /etc/oru/ to $ORU_TEST_ETC, so that
   the test provides the files. For root too, a file without read permission cannot be opened, and a
   path in a directory without search permission cannot be resolved. With $ORU_TEST_READ_FAILS=N,
   reading a file there fails after N bytes.

   If $ORU_TEST_MAIN is set, main is called as a shell never calls it: "argc" (argc is 0), "argv"
   (argv is NULL) or "argv[0]" (argv[0] is NULL). */
#define _GNU_SOURCE
#undef _FILE_OFFSET_BITS /* it renames open() to open64(), and this file defines both */
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <stdarg.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

static const char prefix[] = "/etc/oru/";

static const char* redirect(const char* path, char* buffer, size_t size) {
    const char* directory = getenv("ORU_TEST_ETC");
    if (directory == NULL || path == NULL || strncmp(path, prefix, sizeof(prefix) - 1) != 0) {
        return path;
    }
    snprintf(buffer, size, "%s/%s", directory, path + sizeof(prefix) - 1);
    return buffer;
}

static int lacks_permissions(const char* path, unsigned permissions) {
    struct statx status;
    if (syscall(SYS_statx, AT_FDCWD, path, 0, STATX_MODE, &status) != 0 ||
        (status.stx_mode & permissions) != 0) {
        return 0;
    }
    errno = EACCES;
    return 1;
}

/* Returns whether the redirected path must not resolve, and sets errno if so. */
static int hidden(const char* original, const char* path) {
    return path != original && lacks_permissions(getenv("ORU_TEST_ETC"), 0111);
}

/* Returns whether the redirected file must not be readable, and sets errno if so. */
static int refused(const char* original, const char* path) {
    return hidden(original, path) || (path != original && lacks_permissions(path, 0444));
}

#define REAL(name) ((__typeof__(&name))(uintptr_t)dlsym(RTLD_NEXT, #name))

#define OPEN(name)                                                                \
    int name(const char* original, int flags, ...) {                              \
        char buffer[4096];                                                        \
        const char* path = redirect(original, buffer, sizeof buffer);             \
        va_list rest;                                                             \
        va_start(rest, flags);                                                    \
        mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(rest, mode_t) : 0; \
        va_end(rest);                                                             \
        return refused(original, path) ? -1 : REAL(name)(path, flags, mode);      \
    }

#define OPENAT(name)                                                                    \
    int name(int directory, const char* original, int flags, ...) {                     \
        char buffer[4096];                                                              \
        const char* path = redirect(original, buffer, sizeof buffer);                   \
        va_list rest;                                                                   \
        va_start(rest, flags);                                                          \
        mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(rest, mode_t) : 0;       \
        va_end(rest);                                                                   \
        return refused(original, path) ? -1 : REAL(name)(directory, path, flags, mode); \
    }

static size_t readable; /* bytes until a read fails */

static ssize_t read_then_fail(void* file, char* buffer, size_t size) {
    if (readable == 0) {
        errno = EIO;
        return -1;
    }
    size_t count = fread(buffer, 1, size < readable ? size : readable, file);
    readable -= count;
    return (ssize_t)count;
}

static int close_file(void* file) {
    return fclose(file);
}

static FILE* failing(FILE* file) {
    const char* limit = getenv("ORU_TEST_READ_FAILS");
    if (limit == NULL || file == NULL) {
        return file;
    }
    readable = strtoul(limit, NULL, 10);
    return fopencookie(file, "r",
                       (cookie_io_functions_t){.read = read_then_fail, .close = close_file});
}

#define FOPEN(name)                                                   \
    FILE* name(const char* original, const char* mode) {              \
        char buffer[4096];                                            \
        const char* path = redirect(original, buffer, sizeof buffer); \
        if (refused(original, path)) {                                \
            return NULL;                                              \
        }                                                             \
        FILE* file = REAL(name)(path, mode);                          \
        return path == original ? file : failing(file);               \
    }

#define STAT(name, type)                                               \
    int name(const char* original, struct type* status) {              \
        char buffer[4096];                                             \
        const char* path = redirect(original, buffer, sizeof buffer);  \
        return hidden(original, path) ? -1 : REAL(name)(path, status); \
    }

#define FSTATAT(name, type)                                                              \
    int name(int directory, const char* original, struct type* status, int flags) {      \
        char buffer[4096];                                                               \
        const char* path = redirect(original, buffer, sizeof buffer);                    \
        return hidden(original, path) ? -1 : REAL(name)(directory, path, status, flags); \
    }

OPEN(open)
OPEN(open64)
OPENAT(openat)
OPENAT(openat64)
FOPEN(fopen)
FOPEN(fopen64)
STAT(stat, stat)
STAT(stat64, stat64)
STAT(lstat, stat)
STAT(lstat64, stat64)
FSTATAT(fstatat, stat)
FSTATAT(fstatat64, stat64)

int statx(int directory, const char* original, int flags, unsigned mask, struct statx* status) {
    char buffer[4096];
    const char* path = redirect(original, buffer, sizeof buffer);
    return hidden(original, path) ? -1 : REAL(statx)(directory, path, flags, mask, status);
}

int access(const char* original, int mode) {
    char buffer[4096];
    const char* path = redirect(original, buffer, sizeof buffer);
    return refused(original, path) ? -1 : REAL(access)(path, mode);
}

int faccessat(int directory, const char* original, int mode, int flags) {
    char buffer[4096];
    const char* path = redirect(original, buffer, sizeof buffer);
    return refused(original, path) ? -1 : REAL(faccessat)(directory, path, mode, flags);
}

typedef int main_function(int, char**, char**);
static main_function* real_main;

static int call_real_main(int argc, char** argv, char** environment) {
    const char* missing = getenv("ORU_TEST_MAIN");
    char* empty[] = {NULL};
    if (strcmp(missing, "argc") == 0) {
        return real_main(0, argv, environment);
    }
    return real_main(argc, strcmp(missing, "argv") == 0 ? NULL : empty, environment);
}

int __libc_start_main(main_function* main, int argc, char** argv, main_function* init,
                      void (*fini)(void), void (*rtld_fini)(void), void* stack_end);
int __libc_start_main(main_function* main, int argc, char** argv, main_function* init,
                      void (*fini)(void), void (*rtld_fini)(void), void* stack_end) {
    real_main = main;
    return REAL(__libc_start_main)(getenv("ORU_TEST_MAIN") != NULL ? call_real_main : main, argc,
                                   argv, init, fini, rtld_fini, stack_end);
}
