#include "video/gerror_format.h"

#include <gtest/gtest.h>

namespace {

TEST(GErrorFormat, IsTheMessageAndNothingForNull) {
    GError* error = g_error_new_literal(g_quark_from_static_string("test"), 1, "gone {}");
    GError* none = nullptr;
    EXPECT_EQ(std::format("<{}>", error), "<gone {}>");
    EXPECT_EQ(std::format("<{}>", none), "<>");
    g_error_free(error);
}

}  // namespace
