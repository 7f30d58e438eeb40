// Arbitrary key-event payloads and paired-device lists through the key-event handler, with the
// simulator as the platform. Input: payload, a NUL byte, then the settings-store text (without a
// NUL the default pairing is used). Every request must get at most one answer, and nothing may
// crash, trip a sanitizer or escape the handler.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>

#include "FakePropertyList.h"
#include "core/CIRControl.h"
#include "sim/Simulator.h"
#include "ServiceContract.h"

namespace {
const char kDefaultPairing[] =
    R"({"dev_info":[{"codeset":"HFAN0001","device_index":1},{"codeset":"ZAC00005","device_index":5}]})";
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    sim::Log::SetCapture(false);
    sim::IrBlaster::SetJournalEnabled(false);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* text = reinterpret_cast<const char*>(data);
    const void* nul = std::memchr(text, '\0', size);
    const size_t payloadSize = nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - text) : size;
    const std::string payload(text, payloadSize);
    // The store holds C strings: the settings text ends at its first NUL, as vconf would keep it.
    std::string devices = kDefaultPairing;
    if (nul != nullptr) {
        devices.assign(text + payloadSize + 1, size - payloadSize - 1);
        devices = devices.substr(0, devices.find('\0'));
    }
    sim::Settings::SetString(ircontrol::contract::kDevicesKey, devices);

    int answers = 0;
    auto list = std::make_shared<irctest::FakePropertyList>(
        std::map<std::string, std::string>{{"setKeyEvent", payload}, {"setDeviceEvent", payload}});
    auto request = ircontrol::CRequest::Create(ircontrol::RequestType::Set, list,
                                               [&](const std::string&, const std::string&) { ++answers; });
    ircontrol::CIRControl control;
    control.HandleKeyEvent(request);
    if (answers > 1) __builtin_trap();
    answers = 0;
    control.HandleDeviceEvent(request);
    if (answers != 1) __builtin_trap();
    return 0;
}
