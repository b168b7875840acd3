// The comparison of two snapshots, which the input contains with a NUL between them; without one, a
// snapshot is compared with itself.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "snapshot/answers.h"
#include "snapshot/json_reader.h"
#include "snapshot/printable.h"
#include "snapshot/reader.h"
#include "snapshot/writer.h"
#include "snapshot_tool/differences.h"

namespace {

// Returns NULL if the text is not a snapshot.
std::unique_ptr<snapshot::answers> read(std::string_view text) {
    auto answers = std::make_unique<snapshot::answers>();
    answers->text = text;
    try {
        snapshot::read(*answers);
    } catch (const snapshot::complaint&) {
        return nullptr;
    }
    return answers;
}

std::string differences(const snapshot::answers& older, const snapshot::answers& newer,
                        bool is_complete) {
    std::string lines;
    const bool is_different = snapshot_tool::find_differences(
        older, newer, is_complete, [&](std::string_view line, bool) {
            require(!line.empty() && snapshot::printable(line) == line, "a line is printable",
                    line);
            lines.append(line).append("\n");
        });
    require(is_different != lines.empty(), "a difference has a line", lines);
    return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\0'), input.size());
    const auto older = read(input.substr(0, end));
    const auto newer = read(input.substr(end == input.size() ? 0 : end + 1));
    if (older == nullptr || newer == nullptr) {
        return 0;
    }
    const std::string all = differences(*older, *newer, true);
    require(all.empty() == differences(*newer, *older, true).empty(),
            "both directions have a difference, or none", all);
    const std::string some = differences(*older, *newer, false);
    require(some.empty() || !all.empty(), "what counts is a difference", some);
    for (const auto* one : {older.get(), newer.get()}) {
        const auto again = read(snapshot::write(*one));
        require(again != nullptr && differences(*one, *again, true).empty(),
                "a snapshot written again is the same");
    }
    return 0;
}
