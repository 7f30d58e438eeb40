// system_info: the model year and the MBR feature flag, each settable or unreadable.
#include <system_info.h>

#include <cstring>
#include <mutex>

#include "SimInternal.h"
#include "sim/Simulator.h"

namespace sim {
namespace {

constexpr int kDefaultYear = 23;

struct SystemInfoState {
    std::mutex mutex;
    std::optional<int> year = kDefaultYear;
    std::optional<bool> mbrSupport = true;
};

SystemInfoState& State() {
    static SystemInfoState* state = new SystemInfoState();
    return *state;
}

}  // namespace

void SystemInfo::SetYear(std::optional<int> year) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().year = year;
}

void SystemInfo::SetMbrSupport(std::optional<bool> value) {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().mbrSupport = value;
}

void internal::ResetSystemInfo() { SystemInfo::Reset(); }

void SystemInfo::Reset() {
    std::lock_guard<std::mutex> lock(State().mutex);
    State().year = kDefaultYear;
    State().mbrSupport = true;
}

}  // namespace sim

extern "C" int system_info_get_custom_int(const char* key, int* value) {
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (key == nullptr || value == nullptr) return -1;
    if (std::strcmp(key, "com.korvan/featureconf/product.tv_year") != 0 || !s.year) return -1;
    *value = *s.year;
    return 0;
}

extern "C" int system_info_get_custom_bool(const char* key, bool* value) {
    auto& s = sim::State();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (key == nullptr || value == nullptr) return -1;
    if (std::strcmp(key, "com.korvan/featureconf/mbr_support") != 0 || !s.mbrSupport) return -1;
    *value = *s.mbrSupport;
    return 0;
}
