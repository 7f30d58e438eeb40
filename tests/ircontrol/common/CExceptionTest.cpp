#include "common/CException.h"

#include <gtest/gtest.h>

namespace ircontrol {
namespace {

TEST(CExceptionTest, TextIsMessageThenErrorCode) {
    const CException e("codeset_name obj null", 5);
    EXPECT_STREQ(e.what(), "codeset_name obj null(error:5)");
    EXPECT_EQ(e.GetMessage(), "codeset_name obj null");
    EXPECT_EQ(e.GetErrorCode(), 5);
    const std::domain_error& base = e;
    EXPECT_STREQ(base.what(), "codeset_name obj null(error:5)");
}

}  // namespace
}  // namespace ircontrol
