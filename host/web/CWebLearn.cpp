#include "CWebLearn.h"

#include <exception>
#include <utility>

#include "CFrameReport.h"

namespace ircontrol::host {
namespace {

using common::json::JsonValue;

const char* StepName(LearnStep::Kind kind) {
    switch (kind) {
        case LearnStep::Kind::Waiting: return "waiting";
        case LearnStep::Kind::Arrived: return "arrived";
        case LearnStep::Kind::KeptRaw: return "raw";
        case LearnStep::Kind::Overflow: return "overflow";
        case LearnStep::Kind::Differ: return "differ";
        case LearnStep::Kind::Saved: return "saved";
        case LearnStep::Kind::Failed: return "failed";
    }
    return "";
}

JsonValue FrameJson(const infrared::DecodedFrame& frame) {
    JsonValue report = CFrameReport::Json(frame, 0);
    report.removeMember("frame");
    report["summary"] = CFrameReport::Summary(frame);
    return report;
}

}  // namespace

CWebLearn::CWebLearn(const WebLearnOptions& options, CJobRunner& runner, CRequestRecorder& recorder,
                     CPlatformSetup& setup, std::function<void()> learned)
    : options_(options), runner_(runner), recorder_(recorder), setup_(setup), learned_(std::move(learned)) {}

CWebLearn::~CWebLearn() {
    if (learner_) learner_->Cancel();
    if (thread_.joinable()) thread_.join();
}

bool CWebLearn::job(const JsonValue& body, LearnJob& out, std::string& error) const {
    if (body.type() != common::json::kObject) {
        error = "the body must be a JSON object";
        return false;
    }
    if (!body["codeset"].isString() || body["codeset"].asString().empty()) {
        error = "\"codeset\" must name the codeset to learn into";
        return false;
    }
    out.codeset = body["codeset"].asString();
    out.aircon = body["ac"].isBool() && body["ac"].asBool();
    if (!out.aircon) {
        if (!body["key"].isString() || body["key"].asString().empty() || !body["code"].isInt()) {
            error = "a key needs \"key\" (its name) and \"code\" (a whole number), or \"ac\": true";
            return false;
        }
        const auto code = body["code"].asInt64();
        if (code < INT32_MIN || code > INT32_MAX) {
            error = "\"code\" is out of range";
            return false;
        }
        out.key = body["key"].asString();
        out.code = static_cast<int>(code);
    }
    out.waitMs = kDefaultWaitMs;
    if (body.isMember("timeoutMs")) {
        const JsonValue& wait = body["timeoutMs"];
        if (!wait.isInt() || wait.asInt64() < 1 || wait.asInt64() > kMaxWaitMs) {
            error = "\"timeoutMs\" must be from 1 to " + std::to_string(kMaxWaitMs);
            return false;
        }
        out.waitMs = static_cast<int>(wait.asInt64());
    }
    const WebLearnOptions options = this->options();
    out.receiver = options.receiver;
    out.codesetsFile = options.codesetsFile;
    return true;
}

void CWebLearn::SetOptions(const WebLearnOptions& options) {
    const std::lock_guard<std::mutex> lock(optionsMutex_);
    options_ = options;
}

WebLearnOptions CWebLearn::options() const {
    const std::lock_guard<std::mutex> lock(optionsMutex_);
    return options_;
}

WebReply CWebLearn::Start(const JsonValue& body) {
    LearnJob learn;
    std::string error;
    if (!job(body, learn, error)) return ErrorReply(400, error);
    const char* missing = learn.receiver.empty()
                              ? "no receiver configured: start the web remote with --ir-receiver DEV|FILE"
                          : learn.codesetsFile.empty()
                              ? "learning writes into the codesets file: start the web remote with --codesets FILE"
                              : nullptr;
    if (missing != nullptr) {
        // Every page learns why, as it would of a learn that failed.
        LearnStep failed;
        failed.kind = LearnStep::Kind::Failed;
        failed.text = missing;
        publish(learn, failed);
        return ErrorReply(503, missing);
    }
    if (running_) return ErrorReply(409, "a learn is already running; cancel it first (DELETE /api/learn)");
    if (thread_.joinable()) thread_.join();  // the last learn's thread, already done
    learner_ = std::make_unique<CKeyLearner>([this, learn](const LearnStep& step) {
        // A page that sees the last step may start the next learn at once: it must not get 409.
        if (step.kind == LearnStep::Kind::Saved || step.kind == LearnStep::Kind::Failed) running_ = false;
        publish(learn, step);
    });
    running_ = true;
    try {
        thread_ = std::thread([this, learn] { run(learn); });
    } catch (const std::exception& e) {
        running_ = false;
        return ErrorReply(500, std::string("cannot start learning: ") + e.what());
    }
    JsonValue started;
    started["learning"] = true;
    started["codeset"] = learn.codeset;
    if (!learn.aircon) {
        started["key"] = learn.key;
        started["code"] = learn.code;
    }
    started["ac"] = learn.aircon;
    started["receiver"] = learn.receiver;
    return WebReply{202, started.toString(), ""};
}

WebReply CWebLearn::Cancel() {
    if (!running_) return ErrorReply(409, "no learn is running");
    learner_->Cancel();
    JsonValue body;
    body["cancelling"] = true;
    return WebReply{200, body.toString(), ""};
}

void CWebLearn::run(LearnJob job) {
    learner_->Run(job);  // its steps, the last one saved or failed, are published as they come
    running_ = false;
}

void CWebLearn::publish(const LearnJob& job, const LearnStep& step) {
    JsonValue event;
    event["type"] = "learn";
    event["step"] = StepName(step.kind);
    event["codeset"] = job.codeset;
    event["ac"] = job.aircon;
    if (!job.aircon) {
        event["key"] = job.key;
        event["code"] = job.code;
    }
    if (step.press > 0) event["press"] = step.press;
    if (step.frame != nullptr) event["frame"] = FrameJson(*step.frame);
    if (step.other != nullptr) event["first"] = FrameJson(*step.other);
    if (!step.text.empty()) event[step.kind == LearnStep::Kind::Failed ? "reason" : "text"] = step.text;
    if (step.kind != LearnStep::Kind::Saved) return recorder_.Announce(std::move(event));
    // The written file becomes the plugin's codesets first, so "saved" means the key works.
    if (!runner_.Post([this, event] { saved(event); })) {
        event["reloaded"] = false;
        event["reloadError"] = "the server is stopping";
        recorder_.Announce(std::move(event));
    }
}

void CWebLearn::saved(JsonValue event) {
    std::string error;
    const bool reloaded = setup_.ReloadCodesets(error);
    event["reloaded"] = reloaded;
    if (!reloaded) event["reloadError"] = error;
    recorder_.Announce(std::move(event));
    if (!reloaded) return;
    if (learned_) learned_();
    JsonValue devices;
    devices["type"] = "devices";
    devices["count"] = static_cast<int>(setup_.Devices().size());
    recorder_.Announce(std::move(devices));
}

}  // namespace ircontrol::host
