#include "snapshot/usual_names.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

using oru::usual_names;

// The names of a record, one after the other: an upper-case letter for each that was expected.
std::string read(usual_names& names, std::string_view record) {
    std::string told;
    for (const char& letter : record) {
        const std::string_view name(&letter, 1);
        if (names.next() == name) {
            names.confirm();
            told += static_cast<char>(letter - 'a' + 'A');
        } else {
            EXPECT_EQ(names.learn(name), name);
            told += letter;
        }
    }
    return told;
}

TEST(usual_names, are_expected_in_the_order_in_which_they_came) {
    usual_names names;
    EXPECT_EQ(names.next(), "");
    EXPECT_EQ(read(names, "xy"), "xy");
    const std::size_t place = names.place();
    EXPECT_EQ(read(names, "abc"), "abc");
    EXPECT_EQ(names.next(), "");
    names.go_back(place);
    EXPECT_EQ(read(names, "abc"), "ABC");
    EXPECT_EQ(read(names, "d"), "d");
    names.go_back(place);
    EXPECT_EQ(read(names, "abcd"), "ABCD");
}

TEST(usual_names, may_be_left_out_and_more_may_come) {
    usual_names names;
    read(names, "abcdefghijklmnopqr");
    names.go_back(0);
    EXPECT_EQ(read(names, "bdr"), "bdr");
    names.go_back(0);
    EXPECT_EQ(read(names, "axbc"), "AxBC");
    names.go_back(0);
    EXPECT_EQ(read(names, "axbc"), "AXBC");
    names.go_back(0);
    EXPECT_EQ(read(names, "abc"), "AbC");
    EXPECT_EQ(read(names, "b"), "b");  // known elsewhere, and learned once more here
    names.go_back(0);
    EXPECT_EQ(read(names, "axbcbd"), "AXBCBD");
}

TEST(usual_names, are_one_text) {
    usual_names names;
    const std::string first = "first";
    const std::string again = "first";
    EXPECT_EQ(names.learn(first).data(), first.data());
    names.go_back(0);
    EXPECT_EQ(names.learn(again).data(), first.data());
}

TEST(usual_names, are_256_at_most) {
    usual_names names;
    std::string many;
    for (int i = 0; i < 300; ++i) {
        many += static_cast<char>(i % 256);
    }
    for (int i = 0; i < 300; ++i) {
        names.learn({&many[static_cast<std::size_t>(i)], 1});
    }
    EXPECT_EQ(names.place(), 256U);
    EXPECT_EQ(names.next(), "");
    EXPECT_EQ(names.learn("new"), "new");
    EXPECT_EQ(names.place(), 256U);
}

}  // namespace
