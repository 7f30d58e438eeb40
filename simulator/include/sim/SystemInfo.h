// The simulated system information: the TV model year and the IR service feature flag, each
// also settable to unreadable.
// One piece of the simulator's control API (see sim/Simulator.h); every function is thread-safe.
#pragma once

#include <optional>

namespace sim {

class SystemInfo {
public:
    static void SetYear(std::optional<int> year);           // nullopt: unreadable (default 23)
    static void SetMbrSupport(std::optional<bool> value);   // nullopt: unreadable (default true)
    static void Reset();
};

}  // namespace sim
