#include "IrsimReceive.h"

#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

namespace irtest {

std::string TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/irtest.XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) return "/tmp";
    return pattern;
}

Decoded IrsimReceive(const std::string& lircdConf, const std::string& pulseFile) {
    Decoded out;
    const std::string dir = TempDir();
    {
        std::ofstream conf(dir + "/lircd.conf");
        conf << lircdConf;
    }
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
    // The scratch folder (the remote and irsimreceive's log) is not needed afterwards.
    (void)std::system(("rm -rf '" + dir + "'").c_str());
    if (status != 0) {
        out.error = std::string(IRC_IRSIMRECEIVE " failed (install the lirc package): ") + out.output;
        return out;
    }
    out.ran = true;
    // Lines: "<code> <repeat> <key> <remote>".
    std::istringstream lines(out.output);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string code, repeat, key, remote;
        if (words >> code >> repeat >> key >> remote) out.keys.push_back(key);
    }
    return out;
}

}  // namespace irtest
