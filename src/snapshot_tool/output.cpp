#include "snapshot_tool/output.h"

#include <cstdio>
#include <string_view>

#include "snapshot_tool/command.h"
#include "snapshot_tool/replace_file.h"

namespace snapshot_tool {

void require_may_write() {
    if (out != nullptr) {
        require_may_open(out);
    }
}

int write_output(const std::string& text, mode_t mode) {
    if (out != nullptr && std::string_view(out) != "-") {
        replace_file(out, text, mode);
        return 0;
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return finish(0);
}

}  // namespace snapshot_tool
