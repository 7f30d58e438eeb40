// Control API of the desktop platform simulator (libvyrsim.so). The simulator implements every
// function of the platform headers in platform/include/ for a PC; tests and tools steer it through
// this API: inject failures, drive the host side, read the IR journal and the captured log.
// Every function is thread-safe. Callbacks into the plugin are made without any simulator lock
// held, on the thread that called the control function (or, for answers, the plugin's thread).
#pragma once

#include "sim/Host.h"
#include "sim/IrBlaster.h"
#include "sim/Log.h"
#include "sim/Settings.h"
#include "sim/SystemInfo.h"

namespace sim {

// Puts every part back to its start state (services are forgotten, not destroyed).
void ResetAll();

}  // namespace sim
