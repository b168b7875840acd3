#include "replay/current.h"

#include <sys/stat.h>

#include <cstdlib>

#include "replay/origin.h"

namespace replay {
namespace {

constexpr auto default_socket = "/run/oru/snapshot.sock";
constexpr auto default_file = "/run/oru/snapshot.json";

// Returns the path of the snapshot.
const char* find_path() {
    const char* path = secure_getenv("ORU_SNAPSHOT");
    if (path != nullptr && *path != '\0') {
        return path;
    }
    struct stat status{};
    return stat(default_socket, &status) == 0 && S_ISSOCK(status.st_mode) ? default_socket
                                                                          : default_file;
}

struct read_snapshot {
    std::string path;
    snapshot::loaded loaded;
};

read_snapshot* current_snapshot = nullptr;

const read_snapshot& read_once() {
    if (current_snapshot == nullptr) {
        const char* path = find_path();
        current_snapshot = new read_snapshot{path, snapshot::load(path)};
    }
    return *current_snapshot;
}

}  // namespace

const snapshot::loaded& current() {
    return read_once().loaded;
}

std::optional<origin> answers_origin() {
    const auto& [path, loaded] = read_once();
    if (!loaded) {
        return std::nullopt;
    }
    return origin{path, std::optional<std::string>((*loaded)->about),
                  std::optional<std::string>((*loaded)->recorded)};
}

void reset() {
    delete current_snapshot;
    current_snapshot = nullptr;
}

}  // namespace replay
