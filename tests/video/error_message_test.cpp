#include "video/error_message.h"

#include <gtest/gtest.h>

namespace {

TEST(error_message, is_the_message_or_empty_for_null) {
    GError* error = g_error_new_literal(g_quark_from_static_string("test"), 1, "gone {}");
    EXPECT_STREQ(message_of(error), "gone {}");
    EXPECT_STREQ(message_of(nullptr), "");
    g_error_free(error);
}

}  // namespace
