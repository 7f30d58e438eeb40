#include "BenchPlatform.h"

#include <cstdio>
#include <memory>

#include "PluginLoader.h"
#include "sim/Simulator.h"

namespace irbench {
namespace {

std::mutex gMutex;
std::condition_variable gArrived;
uint64_t gAnswers = 0;
std::unique_ptr<irctest::PluginLoader> gPlugin;

}  // namespace

std::string FanPayload(int key, const std::string& codeset) {
    return R"({"x.com.korvan.deviceType":"oic.d.fan","x.com.korvan.codesetName":")" + codeset +
           R"(","x.com.korvan.codesetKey":)" + std::to_string(key) + "}";
}

std::string AcPayload() {
    return R"({"x.com.korvan.deviceType":"oic.d.airconditioner","x.com.korvan.codesetName":"ZAC00005",)"
           R"("x.com.korvan.codesetKey":0,"x.com.korvan.acState":{"x.com.korvan.power":"ON",)"
           R"("x.com.korvan.mode":"COLD","x.com.korvan.coolingSetpoint":24,"x.com.korvan.fanSpeed":"AUTO"}})";
}

std::string PairingList(int entries, const std::string& codeset) {
    std::string text = R"({"dev_info":[)";
    for (int i = 0; i < entries; ++i) {
        const bool last = i == entries - 1;
        text += (i ? "," : "") + std::string(R"({"codeset":")") + (last ? codeset : "OTHER" + std::to_string(i)) +
                R"(","device_index":)" + std::to_string(i + 1) + "}";
    }
    return text + "]}";
}

void StartPlugin() {
    if (gPlugin) return;
    sim::ResetAll();
    sim::Log::SetCapture(false);
    sim::IrBlaster::SetJournalEnabled(false);
    sim::Host::SetKeepResults(false);
    sim::Host::SetResultListener([](const sim::SetResult&) {
        {
            std::lock_guard<std::mutex> lock(gMutex);
            ++gAnswers;
        }
        gArrived.notify_all();
    });
    sim::Settings::SetString(kDevicesKey,
                             R"({"dev_info":[{"codeset":"HFAN0001","device_index":1},{"codeset":"ZAC00005","device_index":5}]})");
    gPlugin = std::make_unique<irctest::PluginLoader>(IRC_PLUGIN_PATH);
    gPlugin->Create();
}

void StopPlugin() {
    if (!gPlugin) return;
    gPlugin->Destroy();
    gPlugin.reset();
}

uint64_t Answers() {
    std::lock_guard<std::mutex> lock(gMutex);
    return gAnswers;
}

void WaitForAnswers(uint64_t count) {
    std::unique_lock<std::mutex> lock(gMutex);
    gArrived.wait(lock, [&] { return gAnswers >= count; });
}

long ResidentKiB() {
    long pages = 0, resident = 0;
    if (FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(f);
    }
    return resident * 4;  // 4 KiB pages
}

}  // namespace irbench
