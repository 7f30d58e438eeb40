#include "CStateDirectory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "infrared/formats/CAtomicFile.h"

namespace ircontrol::host {
namespace {

class StateDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        char pattern[] = "/tmp/irc-state-XXXXXX";
        ASSERT_NE(::mkdtemp(pattern), nullptr);
        root_ = pattern;
        dir_ = root_ + "/state";  // made by Load
    }
    void TearDown() override {
        for (const char* name : {"/devices.json", "/aircon.json", "/learned.json"}) ::unlink((dir_ + name).c_str());
        ::rmdir(dir_.c_str());
        ::rmdir(root_.c_str());
    }
    void Put(const char* name, const std::string& text) {
        std::string error;
        ASSERT_TRUE(infrared::CAtomicFile::Write(dir_ + "/" + name, text, error)) << error;
    }
    std::string root_;
    std::string dir_;
};

TEST_F(StateDirectory, WhatIsSavedIsWhatTheNextStartReads) {
    const std::string pairing = R"({"dev_info":[{"codeset":"HFAN0001","device_index":1,"type":"oic.d.fan"}]})";
    {
        CStateDirectory state(dir_);
        std::string error;
        ASSERT_TRUE(state.Load(error)) << error;
        EXPECT_FALSE(state.HasPairing());
        ASSERT_TRUE(state.SavePairing(pairing, error)) << error;
        ASSERT_TRUE(state.SaveAcState("ZAC00005", AcState{"OFF", "HEAT", 19, "LOW"}, error)) << error;
        ASSERT_TRUE(state.SaveAcState("ZAC00006", AcState{"ON", "DEHUMI", 27, "HIGH"}, error)) << error;
    }
    CStateDirectory again(dir_);
    std::string error;
    ASSERT_TRUE(again.Load(error)) << error;
    EXPECT_EQ(again.Pairing(), pairing);
    ASSERT_EQ(again.AcStates().size(), 2u);
    const AcState& first = again.AcStates().at("ZAC00005");
    EXPECT_EQ(first.power, "OFF");
    EXPECT_EQ(first.mode, "HEAT");
    EXPECT_EQ(first.setpoint, 19);
    EXPECT_EQ(first.fan, "LOW");
    EXPECT_EQ(again.AcStates().at("ZAC00006").mode, "DEHUMI");
}

// A file that is there but unusable stops the start with the file, and where possible the line.
TEST_F(StateDirectory, AnUnusableFileIsRefusedWithItsNameAndLine) {
    struct Case {
        const char* file;
        const char* text;
        const char* expected;
    };
    const Case cases[] = {
        {"devices.json", "{\"dev_info\":[\n{\"codeset\":}\n]}", "devices.json: line 2:"},
        {"devices.json", "{\"dev_info\":3}", "devices.json: the pairing list must be"},
        {"aircon.json", "{\n\"A\": {\"power\":\"ON\",\n", "aircon.json: line "},
        {"aircon.json", "[]", "aircon.json: line 1: needs an object"},
        {"aircon.json", R"({"A":{"power":"on","mode":"HEAT","setpoint":20,"fan":"LOW"}})", "\"power\" is not one"},
        {"aircon.json", R"({"A":{"power":"ON","mode":"HEAT","setpoint":"20","fan":"LOW"}})", "\"setpoint\" needs"},
        {"learned.json", "{,", "learned.json: line 1:"},
    };
    for (const Case& c : cases) {
        ::mkdir(dir_.c_str(), 0700);
        Put(c.file, c.text);
        CStateDirectory state(dir_);
        std::string error;
        EXPECT_FALSE(state.Load(error)) << c.text;
        EXPECT_NE(error.find(c.expected), std::string::npos) << error;
        ::unlink((dir_ + "/" + c.file).c_str());
    }
}

TEST_F(StateDirectory, ASaveThatFailsKeepsTheStateItHad) {
    CStateDirectory state(dir_);
    std::string error;
    ASSERT_TRUE(state.Load(error)) << error;
    ASSERT_TRUE(state.SaveAcState("A", AcState{}, error));
    ::unlink((dir_ + "/aircon.json").c_str());
    ASSERT_EQ(::rmdir(dir_.c_str()), 0);
    EXPECT_FALSE(state.SaveAcState("B", AcState{}, error));
    EXPECT_NE(error.find("aircon.json"), std::string::npos) << error;
    EXPECT_EQ(state.AcStates().count("B"), 0u);
}

}  // namespace
}  // namespace ircontrol::host
