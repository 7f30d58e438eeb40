// What lircd sends for one press of a button of a lircd.conf remote: the full code, then
// min_repeat repeats (the repeat code when the remote has one, else the code again), each
// followed by its gap (CONST_LENGTH: the gap less the signal). The toggle bits are sent as
// written (lircd's first press). Stateless; the remote must have passed CLircdConf::Parse.
#pragma once

#include "infrared/encode/PulseTrain.h"
#include "infrared/formats/CLircdConf.h"

namespace infrared {

class CLircdEncoder {
public:
    // The silence used when a remote gives no gap: long enough for any receiver to see the end.
    static constexpr std::uint32_t kDefaultGap = 100000;

    static PulseTrain Encode(const LircRemote& remote, const LircButton& button);
};

}  // namespace infrared
