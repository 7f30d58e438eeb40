#include "CApplianceTypes.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>

#include "CPlatformSetup.h"
#include "CPluginLibrary.h"
#include "LoadedPluginTest.h"
#include "CSession.h"

namespace ircontrol::host {
namespace {

using CApplianceTypesTest = LoadedPluginTest;

// The codes tried for every type: the allow-lists' whole neighbourhood and values far outside.
std::set<int> CodesToTry(const std::vector<int>& allowed) {
    std::set<int> codes(allowed.begin(), allowed.end());
    for (int code = 0; code <= 100; ++code) codes.insert(code);
    for (int code : {-1, -10, 127, 128, 255, 256, 1000, 65536, INT_MAX, INT_MIN}) codes.insert(code);
    return codes;
}

TEST_F(CApplianceTypesTest, AllowedKeysAreExactlyTheCodesThePluginAccepts) {
    struct Case {
        std::string type;
        std::string codeset;  // the paired codeset where the type has one
    };
    std::vector<Case> cases;
    for (const auto& [name, type] : CApplianceTypes::All()) cases.push_back({type, setup_.PairedCodeset(type)});
    // A type the service does not drive: the tool lists no keys for it, and none may pass.
    cases.push_back({"oic.d.light", setup_.PairedCodeset("oic.d.fan")});

    CSession session(5000);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        ASSERT_FALSE(c.codeset.empty()) << "the defaults pair one appliance of each kind";
        const std::vector<int>& allowed = CApplianceTypes::AllowedKeys(c.type);
        std::vector<int> accepted;
        for (int code : CodesToTry(allowed)) {
            Request request;
            request.kind = RequestKind::Key;
            request.type = c.type;
            request.codeset = c.codeset;
            request.key = code;
            const RequestResult result = session.Send(request);
            ASSERT_TRUE(result.answer.has_value()) << "key " << code << ": " << result.reason;
            if (result.outcome == Outcome::Ok) {
                accepted.push_back(code);
                EXPECT_EQ(result.transmissions.size(), 1u) << "key " << code;
            } else {
                EXPECT_TRUE(result.transmissions.empty()) << "key " << code;
            }
        }
        EXPECT_EQ(accepted, allowed);
    }
}

}  // namespace
}  // namespace ircontrol::host
