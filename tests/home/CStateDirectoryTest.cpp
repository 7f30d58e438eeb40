#include "CStateDirectory.h"

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <tuple>

#include "CPlatformSetup.h"
#include "infrared/codeset/CCodesetsFile.h"

namespace ircontrol::host {
namespace {

using infrared::CAtomicFile;

const std::string kPairing = R"({"dev_info":[{"codeset":"HFAN0001","device_index":1,"type":"oic.d.fan"}]})";
// The purifier's power key (rc5) learned as the fan's "boost", with the same code as its "power".
const std::string kLearned =
    R"({"codesets":[{"name":"HFAN0001","protocol":"rc5","keys":{"boost":{"code":10,"scancode":"0x0c0c"}}}]})";

class StateDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/irc-state-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        dir_ = pattern;
    }
    void TearDown() override { EXPECT_EQ(std::system(("rm -rf " + dir_).c_str()), 0); }
    void Put(const std::string& name, const std::string& text) {
        ASSERT_TRUE(CAtomicFile::Write(dir_ + "/" + name, text, error_)) << error_;
    }
    std::string Get(const std::string& name) {
        std::string text;
        return CAtomicFile::Read(dir_ + "/" + name, text) ? text : "(unreadable)";
    }
    std::string dir_;
    std::string error_;
};

TEST_F(StateDirectory, WhatIsSavedIsWhatTheNextStartReadsAndAFailedSaveKeepsIt) {
    const std::map<std::string, AcState> states = {{"A", {"OFF", "HEAT", 19, "LOW"}}, {"B", {"ON", "DEHUMI", 27, "HIGH"}}};
    std::string error;
    CStateDirectory state(dir_ + "/state");
    ASSERT_TRUE(state.Load(error) && !state.HasPairing() && state.SavePairing(kPairing, error)) << error;
    for (const auto& [codeset, ac] : states) ASSERT_TRUE(state.SaveAcState(codeset, ac, error)) << error;
    CStateDirectory again(dir_ + "/state");
    ASSERT_TRUE(again.Load(error)) << error;
    EXPECT_EQ(again.Pairing() + CStateDirectory::AcText(again.AcStates()), kPairing + CStateDirectory::AcText(states));
    ASSERT_EQ(std::system(("rm -rf " + dir_ + "/state").c_str()), 0);
    EXPECT_FALSE(again.SaveAcState("C", AcState{}, error));
    EXPECT_NE(error.find("aircon.json"), std::string::npos) << error;
    EXPECT_EQ(again.AcStates().count("C"), 0u);
}

// A file that is there but unusable stops the start with the file, and where possible the line.
TEST_F(StateDirectory, AnUnusableFileIsRefusedWithItsNameAndLine) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"devices.json", "{\"dev_info\":[\n{\"codeset\":}\n]}", "devices.json: line 2:"},
        {"devices.json", "{\"dev_info\":3}", "devices.json: the pairing list must be"},
        {"aircon.json", "{\n\"A\": {\"power\":\"ON\",\n", "aircon.json: line "},
        {"aircon.json", R"({"A":{"power":"on","mode":"HEAT","setpoint":20,"fan":"LOW"}})", "\"power\" is not one"},
        {"aircon.json", R"({"A":{"power":"ON","mode":"HEAT","setpoint":"20","fan":"LOW"}})", "\"setpoint\" needs"}};
    for (const auto& [file, text, expected] : cases) {
        Put(file, text);
        std::string error;
        EXPECT_FALSE(CStateDirectory(dir_).Load(error)) << text;
        EXPECT_NE(error.find(expected), std::string::npos) << error;
        ::unlink((dir_ + "/" + file).c_str());
    }
}

// A learned key replaces the configured key of its name or code, keeping its own protocol; a
// broken learned.json is refused with its name and changes nothing.
TEST_F(StateDirectory, LearnedKeysAreLoadedOverTheCodesets) {
    PlatformOptions options;
    options.learnedFile = dir_ + "/learned.json";
    Put("learned.json", kLearned);
    EXPECT_EQ(CPlatformSetup::LearnInto(options), options.learnedFile);
    CPlatformSetup setup;
    std::string error;
    ASSERT_TRUE(setup.Load(options, error)) << error;
    const auto keys = [&] { return setup.KeyMap("HFAN0001")->json.toString(); };
    EXPECT_EQ(keys(), R"({"speed_up":11,"speed_down":12,"swing":13,"timer":14,"mode":76,"boost":10})");
    Put("learned.json", "{\"codesets\":[{\"name\":\"X\"}]}");
    EXPECT_FALSE(setup.ReloadCodesets(error));
    EXPECT_EQ(error.rfind(options.learnedFile + ": ", 0), 0u) << error;
    EXPECT_EQ(keys(), R"({"speed_up":11,"speed_down":12,"swing":13,"timer":14,"mode":76,"boost":10})");
}

// A child process writes each kept file and is killed right after one step of the write;
// whatever the step, the file is the old one or the new one and the next start reads it.
TEST_F(StateDirectory, KilledAtAnyWriteStepLeavesTheOldOrTheNewFile) {
    CStateDirectory state(dir_);
    PlatformOptions options;
    options.learnedFile = dir_ + "/learned.json";
    std::string error;
    const infrared::LearnedKey key{"turbo", 76, infrared::Protocol::Nec, 0x0410, {}, 0};
    const std::vector<std::tuple<std::string, std::string, std::function<void(const CAtomicFile::Hook&)>>> writes = {
        {"devices.json", "{\"dev_info\":[]}", [&](auto hook) { state.SetWriteHook(hook), state.SavePairing(kPairing, error); }},
        {"aircon.json", "{}\n", [&](auto hook) { state.SetWriteHook(hook), state.SaveAcState("Z", AcState{}, error); }},
        {"learned.json", kLearned, [&](auto hook) { infrared::CCodesetsFile::PutKey(options.learnedFile, "MYFAN", key, hook); }}};
    using S = CAtomicFile::Step;
    for (const auto& [file, old, write] : writes) {
        std::vector<std::string> seen;
        for (const S step : {S::Created, S::HalfWritten, S::Written, S::Synced, S::Renamed, S::DirectorySynced}) {
            Put(file, old);
            const pid_t child = ::fork();
            if (child == 0) write([step](S s) { s == step ? (void)::kill(::getpid(), SIGKILL) : (void)0; }), ::_exit(0);
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            EXPECT_TRUE(WIFSIGNALED(status)) << file;
            seen.push_back(Get(file));
            EXPECT_TRUE(CStateDirectory(dir_).Load(error) && CPlatformSetup().Load(options, error)) << file << ": " << error;
        }
        Put(file, old);
        write(CAtomicFile::Hook());
        const std::string now = Get(file);
        EXPECT_NE(now, old) << file;
        EXPECT_EQ(std::make_pair(seen.front(), seen.back()), std::make_pair(old, now)) << file;
        for (const std::string& text : seen) EXPECT_TRUE(text == old || text == now) << file << ": " << text;
    }
}

}  // namespace
}  // namespace ircontrol::host
