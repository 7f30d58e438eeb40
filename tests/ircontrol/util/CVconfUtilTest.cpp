#include "util/CVconfUtil.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "common/CException.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

// Only GetString is called by the plugin (a missing pairing list is one of the IR interface's
// rows); the rest belong to its fixed interface: a round trip, and an empty key refused.
TEST(CVconfUtilTest, CallsGiveTheirValueOrTheirRefusal) {
    const std::vector<std::pair<std::function<std::string()>, std::string>> rows = {
        {[] { CVconfUtil::SetInt("db/n", -4); return std::to_string(CVconfUtil::GetInt("db/n")); }, "-4"},
        {[] { return CVconfUtil::GetString(""); }, "vconf url is empty!!!(error:4)"},
    };
    for (const auto& [call, expected] : rows) {
        SCOPED_TRACE(expected);
        sim::ResetAll();
        try {
            EXPECT_EQ(call(), expected);
        } catch (const CException& e) {
            EXPECT_EQ(e.what(), expected);
        }
    }
}

}  // namespace
}  // namespace ircontrol
