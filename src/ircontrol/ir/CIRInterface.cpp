#include "ir/CIRInterface.h"

#include <irkt_irbl.h>

#include <cstdlib>
#include <memory>

#include "JsonValue.h"
#include "common/CException.h"
#include "common/Constants.h"
#include "common/ServiceLog.h"
#include "util/CVconfUtil.h"

namespace ircontrol {
namespace {

constexpr char kLibrary[] = "irkt";

// Key-map texts come from the library on the heap; the caller releases them with free().
struct FreeDeleter {
    void operator()(char* text) const { std::free(text); }
};
using LibraryText = std::unique_ptr<char, FreeDeleter>;

std::string TakeKeyMap(LibraryText text) {
    if (!text) {
        // The same text for both codeset kinds.
        IRC_LOGE("irbl_get_supported_keymap_hcodeset returnd NULL!!");
        return std::string();
    }
    return std::string(text.get());
}

}  // namespace

CIRInterface& CIRInterface::GetInstance() {
    static CIRInterface instance;
    return instance;
}

namespace {
// Built while the library loads, so it outlives the queue: statics die in the reverse order of
// their making, and the queue's worker, joined by the queue at unload, may still be sending.
[[maybe_unused]] CIRInterface& gIrInterfaceBuiltAtLoad = CIRInterface::GetInstance();
}  // namespace

CIRInterface::CIRInterface() = default;
CIRInterface::~CIRInterface() = default;

int CIRInterface::getD2DDeviceIndex(const std::string& codeset) {
    // Read and parsed on every command, so a pairing change applies to the next one.
    const std::string text = CVconfUtil::GetString(kVconfIrDevices);
    if (text.empty()) throw CException("d2d_irdevices_json empty!", 2);
    const common::json::JsonValue devices = common::json::JsonValue::Create(text);
    IRC_LOGI("irdevices : %s", text.c_str());
    const common::json::JsonValue& list = devices["dev_info"];
    if (list.isNull()) throw CException("device_array_obj null", 2);
    const unsigned size = list.size();
    for (unsigned i = 0; i < size; ++i) {
        const common::json::JsonValue& entry = list[i];
        const common::json::JsonValue& entryCodeset = entry["codeset"];
        if (entryCodeset.isNull()) throw CException("codeset_obj null", 2);
        if (entryCodeset.asString() != codeset) continue;
        const common::json::JsonValue& index = entry["device_index"];
        if (index.isNull()) throw CException("device_index_obj null", 2);
        const int deviceIndex = index.asInt();
        IRC_LOGE("codeset:%s, index: %d", codeset.c_str(), deviceIndex);
        return deviceIndex;
    }
    return -1;
}

int CIRInterface::deviceIndexOrThrow(const std::string& codeset) {
    const int index = getD2DDeviceIndex(codeset);
    if (index < 0) throw CException("d2d_device_index < 0 !!!!!", 2);
    return index;
}

bool CIRInterface::SendCommandHDevice(const std::string& codeset, int key, bool online) {
    IRC_LOGI("[%s]: codeset: %s, key: %d, online: %d", kLibrary, codeset.c_str(), key, online);
    const int index = deviceIndexOrThrow(codeset);
    const bool result = irkt_irbl_send_command_hdevice(key, index, online);
    IRC_LOGI("ret of irbl_send_command_hdevice: %d", result);
    return result;
}

bool CIRInterface::SendCommandZDevice(const std::string& codeset, int key, bool online) {
    IRC_LOGI("[%s]: codeset: %s, key: %d, online: %d", kLibrary, codeset.c_str(), key, online);
    const int index = deviceIndexOrThrow(codeset);
    const bool result = irkt_irbl_send_command_zdevice(key, index, online);
    IRC_LOGI("ret of irbl_send_command_zdevice: %d", result);
    return result;
}

int CIRInterface::SetAirconStateAndSendCommand(const std::string& codeset, const IRAcCommand& state) {
    IRC_LOGI("[%s]: codeset: %s, power: %s, mode: %s, coolingsetpoint: %s, fan_mode: %s", kLibrary,
             codeset.c_str(), state.power.c_str(), state.mode.c_str(),
             state.coolingSetpoint.c_str(), state.fanSpeed.c_str());
    const int index = deviceIndexOrThrow(codeset);
    // The library takes the mode before the power.
    const int result = irkt_irbl_set_aircon_states_and_send_command(
        index, state.mode.c_str(), state.power.c_str(), state.coolingSetpoint.c_str(),
        state.fanSpeed.c_str());
    IRC_LOGI("ret of irbl_set_aircon_states_and_send_command : %d", result);
    return result;
}

std::string CIRInterface::GetSupportedKeyMapHCodeset(const std::string& codeset, bool online) {
    IRC_LOGI("[%s]: codset: %s, online: %d", kLibrary, codeset.c_str(), online);
    return TakeKeyMap(LibraryText(irkt_irbl_get_supported_keymap_hcodeset(codeset.c_str(), online)));
}

std::string CIRInterface::GetSupportedKeyMapZCodeset(const std::string& codeset, bool online) {
    IRC_LOGI("[%s]: codset: %s, online: %d", kLibrary, codeset.c_str(), online);
    return TakeKeyMap(LibraryText(irkt_irbl_get_supported_keymap_zcodeset(codeset.c_str(), online)));
}

}  // namespace ircontrol
