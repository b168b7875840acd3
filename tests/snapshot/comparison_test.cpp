#include "snapshot/comparison.h"

#include <gtest/gtest.h>

namespace {

using namespace snapshot;

TEST(comparison, of_values_is_by_kind_and_content) {
    const value values[] = {true,
                            false,
                            std::string_view("1"),
                            std::string_view("2"),
                            std::int64_t{1},
                            std::int64_t{2},
                            0.0,
                            -0.0,
                            pair32u{1, 2},
                            pair32u{2, 1},
                            other{"1"},
                            other{"2"},
                            std::uint16_t{1},
                            std::uint16_t{2},
                            std::uint32_t{1},
                            std::uint32_t{2},
                            unwritable{"of a kind without a form"}};
    for (const value& one : values) {
        for (const value& other : values) {
            EXPECT_EQ(is_same(one, other), &one == &other)
                << &one - values << ' ' << &other - values;
        }
    }
}

TEST(comparison, of_failures_is_by_message) {
    const answer<map_entries> failed = failure{"no such stream"};
    EXPECT_TRUE(is_same(failed, answer<map_entries>(failure{"no such stream"})));
    EXPECT_FALSE(is_same(failed, answer<map_entries>(failure{"no such channel"})));
    EXPECT_FALSE(is_same(failed, answer<map_entries>(map_entries())));
}

}  // namespace
