// Learning from the web remote: one learn at a time, run by CKeyLearner on a thread of its own
// (reading a receiver waits for presses; the server's loop never does), each step published as
// a "learn" event. After a save the codesets file is read again on the request worker, so the
// plugin sends the new key and the pages, told by a "devices" event, show it.
// Start() and Cancel() run on the server's loop thread; the destructor cancels a running learn
// and waits for it. Throws nothing.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "CJobRunner.h"
#include "CKeyLearner.h"
#include "CPlatformSetup.h"
#include "CRequestRecorder.h"
#include "WebReply.h"
#include "JsonValue.h"

namespace ircontrol::host {

struct WebLearnOptions {
    std::string receiver;      // --ir-receiver; "" when none was given
    std::string codesetsFile;  // --codesets; learning writes into it
};

class CWebLearn {
public:
    // `learned` (may be empty) runs on the request worker after a saved learn changed the codesets.
    CWebLearn(const WebLearnOptions& options, CJobRunner& runner, CRequestRecorder& recorder, CPlatformSetup& setup,
              std::function<void()> learned = {});
    ~CWebLearn();
    CWebLearn(const CWebLearn&) = delete;
    CWebLearn& operator=(const CWebLearn&) = delete;

    // `body`: {"codeset", "key", "code"} for a remote's key or {"codeset", "ac": true}, and
    // "timeoutMs" to wait for each press. 202 when started; 400, 409 (one is running) or 503
    // (no receiver or no codesets file) with the reason otherwise.
    WebReply Start(const common::json::JsonValue& body);
    // 200 when a running learn was told to stop (it ends with a "failed" step, "cancelled"); 409 if none runs.
    WebReply Cancel();
    // Where the next learn reads and writes (a reloaded configuration); any thread.
    void SetOptions(const WebLearnOptions& options);

    static constexpr int kDefaultWaitMs = 30000;
    static constexpr int kMaxWaitMs = 600000;

private:
    bool job(const common::json::JsonValue& body, LearnJob& out, std::string& error) const;
    void run(LearnJob job);                     // the learn thread
    void publish(const LearnJob& job, const LearnStep& step);
    void saved(common::json::JsonValue event);  // the request worker: reload, then tell

    mutable std::mutex optionsMutex_;
    WebLearnOptions options_;  // under optionsMutex_
    WebLearnOptions options() const;
    CJobRunner& runner_;
    CRequestRecorder& recorder_;
    CPlatformSetup& setup_;
    std::function<void()> learned_;
    std::unique_ptr<CKeyLearner> learner_;  // the running or last learn's; replaced on the loop thread
    std::atomic<bool> running_{false};
    std::thread thread_;
};

}  // namespace ircontrol::host
