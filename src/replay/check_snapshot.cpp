#include "replay/check_snapshot.h"

#include "replay/snapshot.h"

namespace oru {

std::string check_snapshot(const std::string& path) {
    const snapshot read = load(path);
    return read ? std::string() : read.error();
}

}  // namespace oru
