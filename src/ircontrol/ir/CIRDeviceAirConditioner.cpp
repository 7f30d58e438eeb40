#include "ir/CIRDeviceAirConditioner.h"

#include <string>
#include <unordered_map>

#include "common/CException.h"
#include "ir/CIRInterface.h"

namespace ircontrol {
namespace {

using WordMap = std::unordered_map<std::string, std::string>;

// Request word -> IR library word.
const WordMap kPower = {{"ON", "on"}, {"OFF", "off"}};
const WordMap kMode = {
    {"AUTO", "auto"}, {"COLD", "cool"}, {"DEHUMI", "dry"}, {"VENT", "fan"}, {"HEAT", "heat"}};
const WordMap kFanSpeed = {{"LOW", "low"}, {"MEDIUM", "medium"}, {"HIGH", "high"}, {"AUTO", "auto"}};

const std::string& Translate(const WordMap& table, const std::string& word, const char* error) {
    auto it = table.find(word);
    if (it == table.end()) throw CException(error, 2);
    return it->second;
}

}  // namespace

CIRDeviceAirConditioner::~CIRDeviceAirConditioner() = default;

void CIRDeviceAirConditioner::BlastIR(const std::string& json) {
    const IRDeviceInfo info = GetParsedDeviceInfo(json);
    IRAcCommand command;
    // Checked in this order, so a state with a bad power and a bad mode reports the power.
    command.power = Translate(kPower, info.acState.power, "invalid power state");
    command.mode = Translate(kMode, info.acState.mode, "invalid mode state");
    command.fanSpeed = Translate(kFanSpeed, info.acState.fanSpeed, "invalid fan mode state");
    command.coolingSetpoint = std::to_string(info.acState.coolingSetpoint);
    CIRInterface::GetInstance().SetAirconStateAndSendCommand(info.codesetName, command);
}

}  // namespace ircontrol
