// Internal hooks between the simulator's parts (not part of the control API).
#pragma once

#include <cstdint>

namespace sim::internal {

// The host transaction the calling thread is serving (0: none). A thread serves a transaction
// while the host's set callback for it runs, and from reading a property list copied from that
// request until it answers it or reads a list of another request. IR calls and log lines made on
// the thread are tagged with it.
uint64_t ServingTransaction();
void SetServingTransaction(uint64_t transaction);

void ResetLog();
void ResetHost();
void ResetIrBlaster();
void ResetSettings();
void ResetSystemInfo();

}  // namespace sim::internal
