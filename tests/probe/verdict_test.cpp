#include "probe/verdict.h"

#include <gtest/gtest.h>

namespace {

TEST(probe_verdict, is_not_seen_until_something_is_tried) {
    verdict told;
    EXPECT_EQ(told.text(), "not seen");
    EXPECT_FALSE(told.is_ok());
    told.adds("");
    EXPECT_EQ(told.text(), "not seen");
    told.is_right();
    EXPECT_EQ(told.text(), "ok");
    EXPECT_TRUE(told.is_ok());
    told.adds("in its way");
    EXPECT_EQ(told.text(), "ok: in its way");
}

TEST(probe_verdict, tells_of_the_first_departure_and_counts_the_others) {
    verdict told;
    told.expect(true, "{}", "never shown");
    told.expect(false, "{} is {}", "one\n", 2);
    EXPECT_EQ(told.text(), "departs: one\\n is 2");
    told.departs("another");
    told.departs("a third");
    EXPECT_EQ(told.text(), "departs: one\\n is 2 (and 2 more)");
    EXPECT_TRUE(told.has_departed());
}

TEST(probe_verdict, shows_what_a_person_judges_unless_it_departs) {
    verdict told;
    told.shows("1920x1080");
    EXPECT_EQ(told.text(), "see 1920x1080");
    told.departs("nothing there");
    EXPECT_EQ(told.text(), "departs: nothing there");
}

// Returns what is told when the attempts end like this: right, departed or not tried.
std::string after(const std::string& attempts) {
    verdict told;
    std::size_t at = 0;
    try_again(told, [&](verdict& now) {
        const char how = attempts.at(at++);
        if (how == 'd') {
            now.departs(std::format("attempt {}", at));
        } else if (how == 'r') {
            now.is_right();
        }
    });
    EXPECT_EQ(at, attempts.size());
    return told.text();
}

TEST(probe_verdict, holds_nothing_against_a_service_that_changed_once) {
    EXPECT_EQ(after("r"), "ok");
    EXPECT_EQ(after("-"), "not seen");
    EXPECT_EQ(after("dr"), "ok");
    EXPECT_EQ(after("ddr"), "ok");
    EXPECT_EQ(after("ddd"), "departs: attempt 1");
    // What could not be tried again is not taken back.
    EXPECT_EQ(after("d--"), "departs: attempt 1");
}

}  // namespace
