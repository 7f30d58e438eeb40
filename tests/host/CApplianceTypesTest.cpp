#include "CApplianceTypes.h"

#include <climits>
#include <set>

#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

using CApplianceTypesTest = LoadedPluginTest;

TEST_F(CApplianceTypesTest, AllowedKeysAreExactlyTheCodesThePluginAccepts) {
    std::vector<std::string> types;
    for (const auto& entry : CApplianceTypes::All()) types.push_back(entry.second);
    // A type the service does not drive: the tool lists no keys for it, and none may pass.
    types.push_back("oic.d.light");
    CSession session(5000);
    for (const auto& type : types) {
        SCOPED_TRACE(type);
        const std::vector<int>& allowed = CApplianceTypes::AllowedKeys(type);
        // The allow-list's whole neighbourhood and values far outside it.
        std::set<int> codes(allowed.begin(), allowed.end());
        for (int code = 0; code <= 100; ++code) codes.insert(code);
        codes.insert({-1, -10, 127, 128, 255, 256, 1000, 65536, INT_MAX, INT_MIN});
        std::vector<int> accepted;
        for (int code : codes) {
            Request request;
            request.kind = RequestKind::Key;
            request.type = type;
            // The defaults pair one appliance of each kind; the unknown type borrows the fan's.
            request.codeset = setup_.PairedCodeset(type == "oic.d.light" ? "oic.d.fan" : type);
            request.key = code;
            const RequestResult result = session.Send(request);
            ASSERT_TRUE(result.answer.has_value()) << "key " << code << ": " << result.reason;
            EXPECT_EQ(result.transmissions.size(), result.outcome == Outcome::Ok ? 1u : 0u) << "key " << code;
            if (result.outcome == Outcome::Ok) accepted.push_back(code);
        }
        EXPECT_EQ(accepted, allowed);
    }
}

}  // namespace
}  // namespace ircontrol::host
