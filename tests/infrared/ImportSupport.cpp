#include "ImportSupport.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "JsonValue.h"
#include "infrared/CIrBackend.h"
#include "infrared/codeset/CAcStateTable.h"

namespace irtest {

std::vector<std::string> FilesUnder(const std::string& dir, const std::string& part) {
    std::vector<std::string> out;
    DIR* handle = opendir(dir.c_str());
    if (handle == nullptr) return out;
    std::vector<std::string> names;
    while (const dirent* entry = readdir(handle)) names.emplace_back(entry->d_name);
    closedir(handle);
    for (const auto& name : names) {
        if (name == "." || name == "..") continue;
        const std::string path = dir + "/" + name;
        struct stat info {};
        if (stat(path.c_str(), &info) != 0) continue;
        if (S_ISDIR(info.st_mode)) {
            const auto inner = FilesUnder(path, part);
            out.insert(out.end(), inner.begin(), inner.end());
        } else if (S_ISREG(info.st_mode) && name.find(part) != std::string::npos) {
            out.push_back(path);
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
}

std::shared_ptr<const infrared::CCodesetLibrary> Library(const std::vector<std::string>& codesets) {
    std::string text = "{\"codesets\":[";
    for (std::size_t i = 0; i < codesets.size(); ++i) text += (i > 0 ? "," : "") + codesets[i];
    return infrared::CCodesetLibrary::Parse(text + "]}");
}

std::vector<std::string> SendAll(const std::shared_ptr<const infrared::CCodesetLibrary>& library,
                                 const std::string& codeset, const std::string& mode2) {
    using namespace infrared;
    CIrBackend backend(library, CIrBackend::OpenTransmitter("mode2:" + mode2, *library));
    const std::string pairing = "{\"dev_info\":[{\"codeset\":" + common::json::JsonValue(codeset).toString() +
                                ",\"device_index\":1}]}";
    const Codeset& found = *library->Find(codeset);
    std::vector<std::string> names;
    for (const auto& key : found.keys) {
        names.push_back(backend.SendKey(pairing, key.code, 1).ok ? key.name : "");
    }
    for (const auto& state : found.states) {
        AcState request{state.power, state.mode, state.hasSetpoint ? std::to_string(static_cast<int>(state.setpoint)) : "",
                        state.fan};
        const auto result = backend.SendAircon(pairing, 1, request);
        // Several captures may say the same; the one the table picks is the one sent.
        names.push_back(result.ok ? CAcStateTable::Find(found, request).frame.name : "");
    }
    return names;
}

std::vector<std::string> LircRoundTrip(const std::string& lircdConf) {
    const std::string dir = TempDir();
    WriteText(dir + "/lircd.conf", lircdConf);
    // irsimsend writes simsend.out into its working directory; it lives beside irsimreceive.
    const std::string irsimreceive = IRC_IRSIMRECEIVE;
    const std::string irsimsend = irsimreceive.substr(0, irsimreceive.rfind('/') + 1) + "irsimsend";
    const std::string command = "cd '" + dir + "' && '" + irsimsend + "' lircd.conf >/dev/null 2>&1";
    if (std::system(command.c_str()) != 0) return {};
    WriteText(dir + "/sent.txt", "space 200000\n" + ReadText(dir + "/simsend.out"));
    return Presses(IrsimReceive(lircdConf, dir + "/sent.txt").keys);
}

std::vector<std::string> Presses(const std::vector<std::string>& keys) {
    std::vector<std::string> out;
    for (const auto& key : keys) {
        if (out.empty() || out.back() != key) out.push_back(key);
    }
    return out;
}

}  // namespace irtest
