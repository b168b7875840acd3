// The identities that started streams, with their counts, as a document.
#include <array>
#include <cstdio>
#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "support/tools.h"

namespace {

result identities_of(const std::string& debug) {
    return tlm(R"({"stream": {"debug": )" + debug + "}}", {"--identity-info"});
}

// Returns the document for one identity "x" with that count.
std::string document_of_one(const std::string& count) {
    return "{\n    \"identities\": {\n        \"x\": " + count + "\n    }\n}\n";
}

TEST(identity_info, one_member_for_each_identity) {
    EXPECT_EQ(identities_of(R"({"global.capacity.peak": 5, "identity.alpha": 3,
                                "identity.beta": 10, "identity.gamma": 1, "identities": 9})"),
              ended(0, R"({
    "identities": {
        "alpha": 3,
        "beta": 1e+1,
        "gamma": 1
    }
}
)"));
}

TEST(identity_info, no_identities_print_nothing) {
    EXPECT_EQ(tlm("{}", {"-i"}), ended(0, ""));
    EXPECT_EQ(tlm(R"({"stream": {"debug": {"$error": "no counters"}}})", {"-i"}), ended(0, ""));
    EXPECT_EQ(identities_of("{}"), ended(0, ""));
    EXPECT_EQ(identities_of(R"({"global.capacity.peak": 5, "identity": 4, "Identity.a": 3,
                                "x.identity.a": 2})"),
              ended(0, ""));
}

TEST(identity_info, full_stops_after_the_prefix_stay_in_the_name) {
    EXPECT_EQ(identities_of(R"({"identity.b": 1, "identity.a": 2, "identity.a.x": 3})"),
              ended(0, R"({
    "identities": {
        "a": 2,
        "a.x": 3,
        "b": 1
    }
}
)"));
}

TEST(identity_info, members_are_ordered_by_the_bytes_of_their_names) {
    EXPECT_EQ(identities_of(R"({"identity.é": 1, "identity.z": 2, "identity.a": 3,
                                "identity.Z": 4, "identity._": 5, "identity.9": 6,
                                "identity.10": 7, "identity.a-b": 8, "identity.a_b": 9})"),
              ended(0, R"({
    "identities": {
        "10": 7,
        "9": 6,
        "Z": 4,
        "_": 5,
        "a": 3,
        "a-b": 8,
        "a_b": 9,
        "z": 2,
        "é": 1
    }
}
)"));
}

TEST(identity_info, the_bare_prefix_is_the_empty_name) {
    EXPECT_EQ(identities_of(R"({"identity.": 5})"), ended(0, R"({
    "identities": {
        "": 5
    }
}
)"));
}

TEST(identity_info, numbers_are_written_by_their_significant_digits) {
    for (const auto& [count, text] : {std::pair<std::string, std::string>{"0", "0"},
                                      {"1", "1"},
                                      {"7", "7"},
                                      {"9", "9"},
                                      {"10", "1e+1"},
                                      {"11", "11"},
                                      {"12", "12"},
                                      {"20", "2e+1"},
                                      {"30", "3e+1"},
                                      {"31", "31"},
                                      {"99", "99"},
                                      {"100", "1e+2"},
                                      {"101", "101"},
                                      {"110", "1.1e+2"},
                                      {"120", "1.2e+2"},
                                      {"1000", "1e+3"},
                                      {"1001", "1001"},
                                      {"1080", "1.08e+3"},
                                      {"1200", "1.2e+3"},
                                      {"12340", "1.234e+4"},
                                      {"65535", "65535"},
                                      {"65536", "65536"},
                                      {"1000000", "1e+6"},
                                      {"2147483648", "2147483648"},
                                      {"4000000000", "4e+9"},
                                      {"4294967290", "4.29496729e+9"},
                                      {"4294967294", "4294967294"},
                                      {"4294967295", "4294967295"}}) {
        EXPECT_EQ(identities_of(R"({"identity.x": )" + count + "}"),
                  ended(0, document_of_one(text)));
    }
}

TEST(identity_info, a_count_of_another_kind_is_0) {
    for (const auto& [value, text] : {std::pair<std::string, std::string>{"\"7\"", "0"},
                                      {"-7", "0"},
                                      {"true", "0"},
                                      {"7.0", "0"},
                                      {"[7, 8]", "0"},
                                      {"4294967296", "0"},
                                      {R"({"int64": 7})", "0"}}) {
        EXPECT_EQ(identities_of(R"({"identity.x": )" + value + "}"),
                  ended(0, document_of_one(text)))
            << value;
    }
}

TEST(identity_info, a_count_that_widens) {
    for (const auto& [value, text] : {std::pair<std::string, std::string>{R"({"uint16": 7})", "7"},
                                      {R"({"uint16": 50})", "5e+1"}}) {
        EXPECT_EQ(identities_of(R"({"identity.x": )" + value + "}"),
                  ended(0, document_of_one(text)))
            << value;
    }
}

TEST(identity_info, seven_bytes_of_a_name_are_escaped) {
    // In the order of their bytes: \b \t \n \f \r " and the backslash.
    EXPECT_EQ(identities_of(R"({"identity.\b": 1, "identity.\t": 2, "identity.\n": 3,
                                "identity.\f": 4, "identity.\r": 5, "identity.\"": 6,
                                "identity.\\": 7, "identity./": 8})"),
              ended(0, R"({
    "identities": {
        "\b": 1,
        "\t": 2,
        "\n": 3,
        "\f": 4,
        "\r": 5,
        "\"": 6,
        "/": 8,
        "\\": 7
    }
}
)"));
}

TEST(identity_info, other_bytes_of_a_name_are_copied) {
    // Short names, and names long enough to be scanned in words of several bytes.
    EXPECT_EQ(identities_of(R"({"identity.\u0001": 1, "identity.\u001f\u007f": 2,
                          "identity.a name of many words \u0001 \u001f \u000b é ☃ 𝄞 \"end\"": 3})"),
              ended(0,
                    "{\n"
                    "    \"identities\": {\n"
                    "        \"\x01\": 1,\n"
                    "        \"\x1f\x7f\": 2,\n"
                    "        \"a name of many words \x01 \x1f \x0b é ☃ 𝄞 \\\"end\\\"\": 3\n"
                    "    }\n"
                    "}\n"));
}

TEST(identity_info, every_control_byte_at_every_place) {
    std::string debug;
    std::map<std::string, std::string> members;  // by name, as written
    for (char byte = 1; byte < 0x20; ++byte) {
        std::string written(1, byte);
        switch (byte) {
            case '\b':
                written = "\\b";
                break;
            case '\t':
                written = "\\t";
                break;
            case '\n':
                written = "\\n";
                break;
            case '\f':
                written = "\\f";
                break;
            case '\r':
                written = "\\r";
                break;
            default:
                break;
        }
        std::array<char, 8> code{};
        std::snprintf(code.data(), code.size(), "\\u%04x", static_cast<unsigned>(byte));
        for (const std::size_t before : {0U, 1U, 7U, 8U, 15U, 16U, 17U, 31U, 33U}) {
            const std::string filler(before, 'f');
            debug += (debug.empty() ? "\"identity." : ", \"identity.") + filler + code.data() +
                     filler + "\": 1";
            members[filler + byte + filler] = filler + written + filler;
        }
    }
    std::string expected;
    for (const auto& [name, written] : members) {
        expected += (expected.empty() ? "        \"" : ",\n        \"") + written + "\": 1";
    }
    EXPECT_EQ(identities_of("{" + debug + "}"),
              ended(0, "{\n    \"identities\": {\n" + expected + "\n    }\n}\n"));
}

}  // namespace
