// oru-snapshot: says whether a snapshot can be read, and if not, what is wrong and where.

#include <errno.h>
#include <stdio.h>

#include <string_view>

#include <string.h>

#include "snapshot.h"

namespace {

constexpr auto usage =
    "Usage: oru-snapshot check FILE...\n"
    "       oru-snapshot --help | --version\n";

// Returns `status`, or 1 with an error line when standard output did not take everything.
int finish(int status) {
    if (fflush(stdout) != 0 || ferror(stdout)) {
        fprintf(stderr, "oru-snapshot: cannot write to standard output: %s\n", strerror(errno));
        return 1;
    }
    return status;
}

int check(char** files) {
    int status = 0;
    for (; *files; ++files) {
        if (const auto snapshot = oru::load(*files)) {
            printf("%s: ok\n", *files);
        } else {
            fprintf(stderr, "%s\n", snapshot.error().c_str());
            status = 1;
        }
    }
    return finish(status);
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view command = argc > 1 ? argv[1] : "";
    if (command == "check" && argc > 2) {
        return check(argv + 2);
    }
    if (command == "--help" && argc == 2) {
        fputs(usage, stdout);
        return finish(0);
    }
    if (command == "--version" && argc == 2) {
        puts("oru-snapshot " ORU_VERSION);
        return finish(0);
    }
    fputs(usage, stderr);
    return 2;
}
