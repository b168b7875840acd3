// Reads a snapshot again and again, each time with another allocation that fails.
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "snapshot/load.h"
#include "support/failing_allocations.h"
#include "support/snapshot_file.h"

namespace {

// Lets every allocation fail in turn, until none fails. Returns the number of allocations; `result`
// is that of the last run.
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

TEST(out_of_memory, is_reported_for_every_allocation) {
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

TEST(out_of_memory, is_reported_while_another_error_is_reported) {
    const snapshot_file file("{\n  \"a member that nobody knows, with a long name\": 1}");
    std::optional<snapshot::loaded> result;
    EXPECT_GT(read_with_failing_allocations(file.path(), result), 3);
    EXPECT_EQ(result->error(),
              file.path() + ":2:3: unknown member 'a member that nobody knows, with a long name'");
}

}  // namespace
