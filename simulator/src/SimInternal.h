// Internal hooks between the simulator's parts (not part of the control API).
#pragma once

namespace sim::internal {

void ResetLog();
void ResetHost();
void ResetIrBlaster();
void ResetSettings();
void ResetSystemInfo();

}  // namespace sim::internal
