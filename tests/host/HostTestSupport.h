// Helpers of the host tool's tests: the tool run in-process on a command line, the loaded plugin
// (LoadedPluginTest.h, which the home service's tests share), and the files and JSON lines the
// tests read and write.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "CApp.h"
#include "IrsimReceive.h"
#include "JsonValue.h"
#include "LoadedPluginTest.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/transmit/CMode2Sink.h"
#include "sim/Simulator.h"

namespace ircontrol::host {

using common::json::JsonValue;

struct ToolRun {
    int status;
    std::string out;
    std::string err;
};

// The tool on a command line with the built plugin (a later --plugin wins). A command line the
// parser refuses comes back as the tool reports it: status 2 and the reason.
inline ToolRun RunApp(std::vector<std::string> args, const std::string& input = "") {
    args.insert(args.begin(), {"--plugin", IRC_PLUGIN_PATH});
    const Options options = CCommandLine::Parse(args);
    if (!options.error.empty()) return {2, "", "ircontrol-host: " + options.error + "\n"};
    std::istringstream in(input);
    std::ostringstream out, err;
    const int status = CApp(options, in, out, err).Run();
    return {status, out.str(), err.str()};
}

// A refusal as the tool reports it: the status, and one line on stderr that says why.
inline void ExpectRefusal(const ToolRun& run, int status, const std::string& says) {
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(run.err.rfind("ircontrol-host: ", 0), 0u) << run.err;
    EXPECT_NE(run.err.find(says), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
}

inline std::string ReadText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// One value per line; a line that is not JSON gives null.
inline std::vector<JsonValue> JsonLines(const std::string& out) {
    std::istringstream lines(out);
    std::vector<JsonValue> values;
    for (std::string line; std::getline(lines, line);) values.push_back(JsonValue::Create(line));
    return values;
}

inline std::vector<std::uint32_t> KeyFrame(infrared::Protocol protocol, std::uint64_t scancode) {
    return infrared::CKeyEncoder::Encode(protocol, scancode, false, 0, 38000, 33).durations;
}

// A dry-run file of one transmission per press, as a receiver would have recorded them.
inline std::string PressesFile(const std::vector<std::vector<std::uint32_t>>& presses) {
    const std::string path = irtest::TempDir() + "/presses.txt";
    infrared::CMode2Sink sink(path);
    for (const auto& durations : presses) {
        infrared::Transmission press;
        press.codeset = "T";
        press.what = "press";
        press.emitter = 1;
        press.train.durations = durations;
        sink.Transmit(press);
    }
    return path;
}

}  // namespace ircontrol::host
