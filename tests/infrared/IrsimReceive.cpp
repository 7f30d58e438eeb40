#include "IrsimReceive.h"

#include <stdio.h>
#include <stdlib.h>

#include <fstream>
#include <sstream>

namespace irtest {

std::string TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/irtest.XXXXXX";
    return mkdtemp(pattern.data()) != nullptr ? pattern : "/tmp";
}

Decoded IrsimReceive(const std::string& lircdConf, const std::string& pulseFile) {
    Decoded out;
    const std::string dir = TempDir();
    std::ofstream(dir + "/lircd.conf") << lircdConf;
    // irsimreceive writes a log file into its working directory: run it inside the scratch one.
    const std::string command = "cd '" + dir + "' && '" IRC_IRSIMRECEIVE "' lircd.conf '" + pulseFile + "' 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        out.error = "cannot run " IRC_IRSIMRECEIVE;
        return out;
    }
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe) != nullptr) out.output += buffer;
    const int status = pclose(pipe);
    (void)std::system(("rm -rf '" + dir + "'").c_str());
    out.ran = status == 0;
    if (!out.ran) out.error = std::string(IRC_IRSIMRECEIVE " failed (install the lirc package): ") + out.output;
    // Lines: "<code> <repeat> <key> <remote>".
    std::istringstream lines(out.ran ? out.output : "");
    std::string code, repeat, key, remote;
    for (std::string line; std::getline(lines, line);) {
        if (std::istringstream(line) >> code >> repeat >> key >> remote) out.keys.push_back(key);
    }
    return out;
}

}  // namespace irtest
