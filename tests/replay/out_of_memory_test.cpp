// Every allocation that reading a snapshot makes is made to fail, one after the other.
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "snapshot/load.h"
#include "support/failing_allocations.h"
#include "support/snapshot_file.h"

namespace {

// Lets every allocation fail in turn, until reading makes no more of them. Returns how many it
// made; what came out at last is in `result`.
long read_with_failing_allocations(const std::string& path,
                                   std::optional<snapshot::loaded>& result) {
    for (long before = 0;; ++before) {
        allocations_left = before;
        result.emplace(snapshot::load(path));
        const bool all_served = allocations_left >= 0;
        allocations_left = -1;
        if (all_served) {
            return before;
        }
        EXPECT_FALSE(*result) << before;
        if (*result || result->error() != path + ": out of memory") {
            ADD_FAILURE() << before;
            return before;
        }
    }
}

TEST(out_of_memory, is_a_complaint_wherever_it_happens) {
    const snapshot_file file(R"({
        "stream": {"all": [{"id": 1, "info": {"b": 1, "a": "escaped \n text, and a long one"}}, {}]},
        "channel": {"all": [{"id": 1, "properties": {"key": "input"},
                             "resolutions": {"available": [[1, 2], [3, 4]], "all": []}}]},
        "input": {"all": [{"id": 1, "resolution_unrotated": {"capture": [1, 2]}}, {"id": 2}]},
        "formats": {"h264": 0, "h265": 1}})");
    std::optional<snapshot::loaded> result;
    EXPECT_GT(read_with_failing_allocations(file.path(), result), 10);
    EXPECT_TRUE(*result);
}

TEST(out_of_memory, is_a_complaint_while_another_is_made) {
    const snapshot_file file("{\n  \"a member that nobody knows, with a long name\": 1}");
    std::optional<snapshot::loaded> result;
    EXPECT_GT(read_with_failing_allocations(file.path(), result), 3);
    EXPECT_EQ(result->error(),
              file.path() + ":2:3: unknown member 'a member that nobody knows, with a long name'");
}

}  // namespace
