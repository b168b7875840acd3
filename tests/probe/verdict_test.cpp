#include "probe/verdict.h"

#include <string>

#include <gtest/gtest.h>

namespace {

TEST(probe_verdict, is_not_seen_without_a_case) {
    probe::verdict result;
    EXPECT_EQ(result.line(), "not seen");
    EXPECT_FALSE(result.has_passed());
    result.set_remark("");
    EXPECT_EQ(result.line(), "not seen");
    result.pass();
    EXPECT_EQ(result.line(), "ok");
    EXPECT_TRUE(result.has_passed());
    result.set_remark("in its way");
    EXPECT_EQ(result.line(), "ok: in its way");
}

TEST(probe_verdict, reports_the_first_departure_and_counts_the_others) {
    probe::verdict result;
    result.expect(true, "{}", "never shown");
    result.expect(false, "{} is {}", "one\n", 2);
    EXPECT_EQ(result.line(), "departs: one\\n is 2");
    result.depart("another");
    result.depart("a third");
    EXPECT_EQ(result.line(), "departs: one\\n is 2 (and 2 more)");
    EXPECT_TRUE(result.has_departed());
}

TEST(probe_verdict, shows_a_value_unless_a_case_departs) {
    probe::verdict result;
    result.show("1920x1080");
    EXPECT_EQ(result.line(), "see 1920x1080");
    result.depart("nothing there");
    EXPECT_EQ(result.line(), "departs: nothing there");
}

// Returns the line after these attempts: p passes, d departs, - has no case.
std::string line_after(const std::string& attempts) {
    probe::verdict result;
    std::size_t count = 0;
    probe::retry_departure(result, [&](probe::verdict& attempt) {
        const char outcome = attempts.at(count++);
        if (outcome == 'd') {
            attempt.depart(std::format("attempt {}", count));
        } else if (outcome == 'p') {
            attempt.pass();
        }
    });
    EXPECT_EQ(count, attempts.size());
    return result.line();
}

TEST(probe_verdict, ignores_a_departure_if_a_retry_passes) {
    EXPECT_EQ(line_after("p"), "ok");
    EXPECT_EQ(line_after("-"), "not seen");
    EXPECT_EQ(line_after("dp"), "ok");
    EXPECT_EQ(line_after("ddp"), "ok");
    EXPECT_EQ(line_after("ddd"), "departs: attempt 1");
    // A retry without a case proves nothing.
    EXPECT_EQ(line_after("d--"), "departs: attempt 1");
}

}  // namespace
