#include "CReceiveCommands.h"

#include <chrono>

#include "CFrameReport.h"
#include "CPlatformSetup.h"
#include "infrared/codeset/CCodesetsFile.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/receive/CLircReceiver.h"
#include "infrared/receive/OpenReceiver.h"

namespace ircontrol::host {

using common::json::JsonValue;
using infrared::DecodedFrame;

CReceiveCommands::CReceiveCommands(const Options& options, std::ostream& out, std::ostream& err,
                                   std::shared_ptr<infrared::ILircDevice> device)
    : options_(options), out_(out), err_(err), device_(std::move(device)) {}

int CReceiveCommands::fail(const std::string& reason, int status) {
    err_ << "ircontrol-host: " << reason << "\n";
    return status;
}

void CReceiveCommands::say(const std::string& line) {
    if (!options_.json) out_ << line << "\n" << std::flush;
}

bool CReceiveCommands::open(const std::string& source) {
    try {
        receiver_ = infrared::OpenReceiver(source, device_);
        return true;
    } catch (const infrared::CReceiveError& error) {
        error_ = error.what();
        return false;
    }
}

// decode names keys by the codesets it is given.
bool CReceiveCommands::load() {
    std::string text = infrared::DefaultCodesetsText();
    std::string name = "the embedded codesets";
    if (!options_.platform.codesetsFile.empty()) {
        name = options_.platform.codesetsFile;
        try {
            text = infrared::ReadFormatFile(name, infrared::CCodesetsFile::kMaxBytes);
        } catch (const infrared::CFormatError& error) {
            error_ = error.what();
            return false;
        }
    }
    try {
        decoder_ = std::make_unique<infrared::CFrameDecoder>(infrared::CCodesetLibrary::Parse(text));
    } catch (const std::exception& error) {
        error_ = name + ": " + error.what();
        return false;
    }
    return true;
}

int CReceiveCommands::Decode() {
    const std::string source = options_.arguments.empty() ? options_.irReceiver : options_.arguments.front();
    if (source.empty()) return fail("decode needs a SOURCE: a file of captures or /dev/lircN", 2);
    if (!load()) return fail(error_, 1);
    if (!open(source)) return fail(error_, 1);
    // A device is listened to until --timeout passes without a press (or Ctrl-C); a file is read to its end.
    const auto wait = std::chrono::milliseconds(receiver_->Live() ? options_.timeoutMs : 0);
    std::size_t index = 0;
    for (;;) {
        std::optional<infrared::Capture> capture;
        try {
            capture = receiver_->Next(wait);
        } catch (const infrared::CReceiveOverflow& error) {
            err_ << "ircontrol-host: " << error.what() << "\n";
            continue;
        } catch (const infrared::CReceiveError& error) {
            return fail(error.what(), 1);
        }
        if (!capture) break;
        for (const DecodedFrame& frame : decoder_->Decode(*capture)) {
            const JsonValue report = CFrameReport::Json(frame, index++);
            out_ << (options_.json ? report.toString() : CFrameReport::Text(report)) << "\n" << std::flush;
        }
    }
    if (index == 0) return fail(receiver_->Describe() + ": no frames", 1);
    return 0;
}

void CReceiveCommands::written(const std::string& key) {
    if (!options_.json) return;
    JsonValue done(common::json::JsonType::kObject);
    done["written"] = JsonValue(CPlatformSetup::LearnInto(options_.platform));
    done["codeset"] = JsonValue(options_.values.at("codeset"));
    if (!key.empty()) {
        done["key"] = JsonValue(key);
        done["code"] = JsonValue(code_);
    }
    out_ << done.toString() << "\n" << std::flush;
}

int CReceiveCommands::Learn() {
    if (CPlatformSetup::LearnInto(options_.platform).empty()) return fail("learn needs --codesets FILE, the file to write into", 2);
    if (options_.irReceiver.empty()) return fail("learn needs --ir-receiver DEV|FILE, where the presses come from", 2);
    const auto codeset = options_.values.find("codeset");
    if (codeset == options_.values.end() || codeset->second.empty()) return fail("learn needs --codeset NAME", 2);
    LearnJob job;
    job.aircon = options_.values.count("ac") != 0;
    if (!job.aircon && (options_.values.count("key") == 0 || options_.values.count("code") == 0)) {
        return fail("learn needs --key NAME and --code N (or --ac for an air conditioner)", 2);
    }
    if (!job.aircon && !CCommandLine::ParseInt(options_.values.at("code"), code_)) {
        return fail("--code needs a whole number, not '" + options_.values.at("code") + "'", 2);
    }
    job.codesetsFile = CPlatformSetup::LearnInto(options_.platform);
    job.receiver = options_.irReceiver;
    job.codeset = codeset->second;
    job.key = job.aircon ? std::string() : options_.values.at("key");
    job.code = code_;
    job.waitMs = options_.timeoutSet ? options_.timeoutMs : kLearnWaitMs;
    CKeyLearner learner([this, &job](const LearnStep& step) { tell(job, step); }, device_);
    return learner.Run(job) ? 0 : 1;
}

// The learner's steps as the command prints them: sentences, or with --json the frames that
// came and the closing object.
void CReceiveCommands::tell(const LearnJob& job, const LearnStep& step) {
    using Kind = LearnStep::Kind;
    switch (step.kind) {
        case Kind::Waiting:
            if (job.aircon) say("Press any button of the air conditioner's remote.");
            else say("Press '" + job.key + (step.press == 1 ? "' on the remote." : "' once more."));
            break;
        case Kind::Arrived:
            if (options_.json) {
                JsonValue report = CFrameReport::Json(*step.frame, 0);
                report.removeMember("frame");
                report["press"] = JsonValue(step.press);
                out_ << report.toString() << "\n" << std::flush;
            }
            say("  got " + CFrameReport::Summary(*step.frame));
            break;
        case Kind::KeptRaw: say("  " + step.text + ": kept as raw timings"); break;
        case Kind::Overflow: say(step.text); break;
        case Kind::Differ:
            say("The presses differ (" + step.text + ": " + CFrameReport::Summary(*step.other) + ", then " +
                CFrameReport::Summary(*step.frame) + "); once more from the start.");
            break;
        case Kind::Saved:
            say(step.text);
            written(job.key);
            break;
        case Kind::Failed: fail(step.text, 1); break;
    }
}

}  // namespace ircontrol::host
