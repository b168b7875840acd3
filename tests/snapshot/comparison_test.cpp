#include "snapshot/comparison.h"

#include <gtest/gtest.h>

namespace {

using namespace snapshot;

TEST(comparison, of_values_is_by_kind) {
    EXPECT_TRUE(is_same(value(true), value(true)));
    EXPECT_FALSE(is_same(value(std::uint32_t{1}), value(std::uint16_t{1})));
    EXPECT_FALSE(is_same(value(unwritable{"of a kind without a form"}), value(true)));
}

TEST(comparison, of_failures_is_by_message) {
    const answer<map_entries> failed = failure{"no such stream"};
    EXPECT_TRUE(is_same(failed, answer<map_entries>(failure{"no such stream"})));
    EXPECT_FALSE(is_same(failed, answer<map_entries>(failure{"no such channel"})));
    EXPECT_FALSE(is_same(failed, answer<map_entries>(map_entries())));
}

}  // namespace
