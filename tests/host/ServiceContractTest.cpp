// The tools' copy of the service's names and words agrees with the plugin: the names with its
// own constants, the AC words with what the loaded plugin accepts.
#include "ServiceContract.h"

#include <cctype>
#include <iterator>

#include "../../src/ircontrol/common/Constants.h"
#include "HostTestSupport.h"

namespace ircontrol::host {
namespace {

TEST(ServiceContractTest, NamesAreThePluginsOwn) {
    const std::pair<std::string, std::string> pairs[] = {
        {contract::kDevicesKey, ircontrol::kVconfIrDevices},
        {contract::kServiceName, ircontrol::kServiceName},
        {contract::kPropSetKeyEvent, ircontrol::kPropSetKeyEvent},
        {contract::kPropSetDeviceEvent, ircontrol::kPropSetDeviceEvent},
        {contract::kOcfFan, ircontrol::kOcfFan},
        {contract::kOcfAirPurifier, ircontrol::kOcfAirPurifier},
        {contract::kOcfHumidifier, ircontrol::kOcfHumidifier},
        {contract::kOcfRobotCleaner, ircontrol::kOcfRobotCleaner},
        {contract::kOcfAirConditioner, ircontrol::kOcfAirConditioner},
        {contract::kAttrDeviceType, ircontrol::kAttrDeviceType},
        {contract::kAttrCodesetName, ircontrol::kAttrCodesetName},
        {contract::kAttrCodesetKey, ircontrol::kAttrCodesetKey},
        {contract::kAttrAcState, ircontrol::kAttrAcState},
        {contract::kAttrPower, ircontrol::kAttrPower},
        {contract::kAttrMode, ircontrol::kAttrMode},
        {contract::kAttrCoolingSetpoint, ircontrol::kAttrCoolingSetpoint},
        {contract::kAttrFanSpeed, ircontrol::kAttrFanSpeed},
        {contract::kAnswerErrorCode, ircontrol::kAnswerErrorCode},
        {contract::kAnswerDescription, ircontrol::kAnswerDescription},
    };
    for (const auto& [tools, plugin] : pairs) EXPECT_EQ(tools, plugin);
}

class ServiceContractAcTest : public LoadedPluginTest {};

TEST_F(ServiceContractAcTest, ThePluginTakesEveryAcWordAndRefusesTheLowerCaseOnes) {
    CSession session(2000);
    const std::pair<const char*, std::vector<const char*>> fields[] = {
        {"power", {std::begin(contract::kAcPowerWords), std::end(contract::kAcPowerWords)}},
        {"mode", {std::begin(contract::kAcModeWords), std::end(contract::kAcModeWords)}},
        {"fan", {std::begin(contract::kAcFanWords), std::end(contract::kAcFanWords)}},
    };
    for (const auto& [field, words] : fields) {
        for (const std::string word : words) {
            for (const bool upper : {true, false}) {
                std::string sent = word;
                if (!upper) {
                    for (char& ch : sent) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
                }
                EXPECT_EQ(session.Send(Parse("ac", {{field, sent}})).outcome, upper ? Outcome::Ok : Outcome::Refused)
                    << field << " " << sent;
            }
        }
    }
}

}  // namespace
}  // namespace ircontrol::host
