#include "BenchPlatform.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "PluginLoader.h"
#include "sim/Simulator.h"

namespace irbench {
namespace {

std::mutex gMutex;
std::condition_variable gArrived;
uint64_t gAnswers = 0;
std::chrono::steady_clock::time_point gLastAnswer;
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
        const auto now = std::chrono::steady_clock::now();
        {
            std::lock_guard<std::mutex> lock(gMutex);
            gLastAnswer = now;
            ++gAnswers;
        }
        gArrived.notify_all();
    });
    sim::Settings::SetString(kDevicesKey, kDefaultDevices);
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

void SendAndWait(const sim::HostProperty& property) {
    const uint64_t expected = Answers() + 1;
    sim::Host::SendSet(kService, {property});
    WaitForAnswers(expected);
}

std::chrono::steady_clock::time_point LastAnswerTime() {
    std::lock_guard<std::mutex> lock(gMutex);
    return gLastAnswer;
}

double ProcessCpuMicros() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

CpuTimes OtherThreadsCpuMicros() {
    CpuTimes total;
    const std::string self = std::to_string(static_cast<long>(syscall(SYS_gettid)));
    const double microsPerTick = 1e6 / static_cast<double>(sysconf(_SC_CLK_TCK));
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", error)) {
        if (entry.path().filename() == self) continue;
        std::ifstream in(entry.path() / "stat");
        std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        // The fields after the thread's name (which may hold spaces) start at "state"; utime and
        // stime are the 12th and 13th of them.
        const auto close = stat.rfind(')');
        if (close == std::string::npos) continue;
        std::istringstream fields(stat.substr(close + 2));
        std::string field;
        unsigned long long user = 0, kernel = 0;
        for (int i = 1; i <= 13 && fields >> field; ++i) {
            if (i == 12) user = std::stoull(field);
            if (i == 13) kernel = std::stoull(field);
        }
        total.user += static_cast<double>(user) * microsPerTick;
        total.kernel += static_cast<double>(kernel) * microsPerTick;
    }
    return total;
}

long ResidentKiB() {
    long pages = 0, resident = 0;
    if (FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(f);
    }
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace irbench
