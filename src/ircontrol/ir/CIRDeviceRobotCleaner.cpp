#include "ir/CIRDeviceRobotCleaner.h"

#include <unordered_set>

namespace ircontrol {
namespace {
// The IR library's key codes this appliance accepts, passed through unchanged.
const std::unordered_set<int> kAllowedKeys = {10, 39, 28};
}  // namespace

CIRDeviceRobotCleaner::~CIRDeviceRobotCleaner() = default;

void CIRDeviceRobotCleaner::BlastIR(const std::string& json) { blastAllowedKey(json, kAllowedKeys, true); }

}  // namespace ircontrol
