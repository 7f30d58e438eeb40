#include "interface/CEventReceiver.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "FakePropertyList.h"
#include "Payloads.h"
#include "PlatformState.h"
#include "common/CRequest.h"
#include "sim/Simulator.h"

namespace ircontrol {
namespace {

// A list that names its properties in the order given (duplicates and unknown names included),
// each with a fan key as its text.
class NamedList : public irctest::FakePropertyList {
public:
    explicit NamedList(std::vector<std::string> names)
        : FakePropertyList({{"setKeyEvent", irctest::KeyPayload("oic.d.fan", "HFAN", 10)}, {"setDeviceEvent", "{}"}}),
          names_(std::move(names)) {}
    std::vector<std::string> GetPropertyNameList() override { return names_; }

private:
    std::vector<std::string> names_;
};

// What the receiver did with each name, in order: "key", "device", or "<name>?" when refused.
std::vector<std::string> Dispatches() {
    std::vector<std::string> out;
    for (const auto& line : sim::Log::Lines()) {
        const std::string& text = line.text;
        if (text.find("recv_controller_ SET_KEY_EVENT") != std::string::npos) out.push_back("key");
        if (text.find("recv_controller_ SET_DEVICE_EVENT") != std::string::npos) out.push_back("device");
        const std::size_t at = text.find(" not found in map");
        if (at != std::string::npos) {
            const std::size_t start = text.find(")  ") + 3;  // after "<file> : <function>(<line>)  "
            out.push_back(text.substr(start, at - start) + "?");
        }
    }
    return out;
}

// Exact names only, each handed on in list order, however often it appears; the rest logged.
// Deinit stops the controller but keeps the handlers, so a late request reaches the stopped queue
// and is refused there, loudly, instead of vanishing.
TEST(CEventReceiverTest, KnownNamesAreHandedOnInListOrderUntilTheStoppedQueueRefusesThem) {
    irctest::ResetWithPairing(R"({"dev_info":[{"codeset":"HFAN","device_index":1}]})");
    CEventReceiver receiver;  // its queue stops for good: ctest runs each test in its own process
    receiver.Init();
    const auto handle = [&](const std::vector<std::string>& names) {
        sim::Log::Clear();
        receiver.HandleEvent(CRequest::Create(RequestType::Set, std::make_shared<NamedList>(names),
                                              [](const std::string&, const std::string&) {}));
        return Dispatches();
    };
    EXPECT_EQ(handle({"setDeviceEvent", "setKeyEvent"}), (std::vector<std::string>{"device", "key"}));
    EXPECT_EQ(handle({"setKeyEvent", "volume", "setKeyEvent", "SetKeyEvent"}),
              (std::vector<std::string>{"key", "volume?", "key", "SetKeyEvent?"}));
    // The handed-on key events were carried out by the queue.
    EXPECT_TRUE(sim::IrBlaster::WaitForTransmissions(3, std::chrono::seconds(10)));
    receiver.Deinit();
    EXPECT_THROW(handle({"setKeyEvent"}), std::runtime_error);
    EXPECT_EQ(Dispatches(), std::vector<std::string>{"key"});
    EXPECT_TRUE(sim::Log::Contains("Exception !! - Thread already finished! Can not do enqueue!!"));
}

}  // namespace
}  // namespace ircontrol
