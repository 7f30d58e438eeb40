#include "ir/CIRDeviceHumidifier.h"

#include <unordered_set>

namespace ircontrol {
namespace {
// The IR library's key codes this appliance accepts, passed through unchanged.
const std::unordered_set<int> kAllowedKeys = {10, 11, 12, 76, 14, 13};
}  // namespace

CIRDeviceHumidifier::~CIRDeviceHumidifier() = default;

void CIRDeviceHumidifier::BlastIR(const std::string& json) { blastAllowedKey(json, kAllowedKeys, false); }

}  // namespace ircontrol
