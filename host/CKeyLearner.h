// Learning from a receiver, for the `learn` command and the web remote alike: a remote's key
// from two agreeing presses, or an air conditioner's protocol from one press, written into a
// codesets file (atomically, everything else in it kept). Each step is told to a listener as it
// happens. Run() is called on one thread; Cancel() from any other. Throws nothing.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "infrared/decode/CFrameDecoder.h"
#include "infrared/receive/IReceiver.h"
#include "infrared/transmit/ILircDevice.h"

namespace ircontrol::host {

struct LearnJob {
    std::string codesetsFile;  // written into; created if missing
    std::string receiver;      // --ir-receiver: a device or a file of captures
    std::string codeset;
    bool aircon = false;       // true: key and code are not used
    std::string key;
    int code = 0;
    int waitMs = 30000;        // for each press on a device
};

struct LearnStep {
    enum class Kind {
        Waiting,   // for press `press`
        Arrived,   // `frame` came as press `press`
        KeptRaw,   // `frame` would not send what came: its raw timings are kept
        Overflow,  // the receiver lost samples (`text`); still waiting
        Differ,    // the presses differ (`text` says how: `other` then `frame`); starting again
        Saved,     // `frame` written (`text`: the sentence saying so)
        Failed,    // `text` is the reason
    };
    Kind kind = Kind::Waiting;
    int press = 0;
    const infrared::DecodedFrame* frame = nullptr;
    const infrared::DecodedFrame* other = nullptr;
    std::string text;
};

class CKeyLearner {
public:
    using Listener = std::function<void(const LearnStep& step)>;

    // `device`: the seam a /dev/lircN receiver uses (nullptr: the real system calls).
    explicit CKeyLearner(Listener listener, std::shared_ptr<infrared::ILircDevice> device = nullptr);

    // True when written; otherwise a Failed step has told why.
    bool Run(const LearnJob& job);
    // Makes a running Run() stop within about kPollMs with the reason "cancelled".
    void Cancel() { cancelled_ = true; }

    // Whether sending the key `frame` names gives back the frame that arrived in `capture`
    // (the raw timings are kept otherwise).
    static bool Reproduces(const infrared::Capture& capture, const infrared::DecodedFrame& frame);
    // "" when two presses agree, else how they differ.
    static std::string Agreement(const infrared::DecodedFrame& a, const infrared::DecodedFrame& b);

    static constexpr int kAttempts = 3;  // pairs of presses that may disagree
    static constexpr int kPollMs = 200;  // a device is read this long at a time, to notice Cancel()

private:
    bool fail(const std::string& reason);
    std::optional<infrared::DecodedFrame> press(int number);
    bool learnKey();
    bool learnAircon();
    void tell(LearnStep::Kind kind, int press, const infrared::DecodedFrame* frame, std::string text = "",
              const infrared::DecodedFrame* other = nullptr);

    Listener listener_;
    std::shared_ptr<infrared::ILircDevice> device_;
    std::atomic<bool> cancelled_{false};
    LearnJob job_;
    std::unique_ptr<infrared::IReceiver> receiver_;
    std::unique_ptr<infrared::CFrameDecoder> decoder_;
    std::string error_;
};

}  // namespace ircontrol::host
