// Test helper: decodes a pulse/space file with lirc's irsimreceive against a lircd.conf text
// and returns the names of the keys it decoded, in order. irsimreceive always runs natively
// (also when the code under test runs under an emulator).
#pragma once

#include <string>
#include <vector>

namespace irtest {

struct Decoded {
    bool ran = false;                 // false: irsimreceive is missing or failed; see `error`
    std::string error;
    std::vector<std::string> keys;    // "KEY_POWER", ... one per decoded frame
    std::string output;               // everything it printed
};

Decoded IrsimReceive(const std::string& lircdConf, const std::string& pulseFile);

// A fresh empty directory under the test's temporary area.
std::string TempDir();

}  // namespace irtest
