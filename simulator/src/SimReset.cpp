#include "SimInternal.h"
#include "sim/Simulator.h"

namespace sim {

void ResetAll() {
    internal::ResetHost();
    internal::ResetIrBlaster();
    internal::ResetSettings();
    internal::ResetSystemInfo();
    internal::ResetLog();
}

}  // namespace sim
