#include "CReceiveCommands.h"

#include <chrono>

#include "CFrameReport.h"
#include "infrared/codeset/CCodesetsFile.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CRawFrame.h"
#include "infrared/encode/CKeyEncoder.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/receive/CLircReceiver.h"
#include "infrared/receive/OpenReceiver.h"

namespace ircontrol::host {

using common::json::JsonValue;
using infrared::DecodedFrame;

namespace {

std::string Agreement(const DecodedFrame& a, const DecodedFrame& b) {
    if (a.kind != b.kind || a.protocol != b.protocol) return "a different kind of frame";
    if (a.kind == DecodedFrame::Kind::Key && a.scancode != b.scancode) return "a different scancode";
    if (a.kind == DecodedFrame::Kind::Raw && !infrared::CRawFrame::Similar(a.durations, b.durations)) {
        return "different timings";
    }
    return "";
}

constexpr std::uint32_t kFrameGap = 20000;  // us: longer than any space inside a key frame

// The frame as it arrived: glitches merged, one copy. It starts where the decoder found it when
// what comes before is noise apart from it, else with the capture, which may hold more of the
// frame than the decoder matched (a leading bit of a protocol it only resembles).
std::vector<std::uint32_t> Received(const infrared::Capture& capture, const DecodedFrame& frame) {
    std::size_t first = 0;
    for (std::uint64_t at = capture.startUs; first < capture.durations.size() && at < frame.startUs; ++first) {
        at += capture.durations[first];
    }
    first -= first % 2;  // a mark
    if (first > 0 && capture.durations[first - 1] < kFrameGap) first = 0;
    const std::vector<std::uint32_t> rest(capture.durations.begin() + static_cast<std::ptrdiff_t>(first),
                                          capture.durations.end());
    return infrared::CRawFrame::OneCopy(infrared::CRawFrame::Clean(rest));
}

}  // namespace

// A remote close to a known protocol (an extra bit, other timings) can be read as that
// protocol; kept as such, it would send something else.
bool CReceiveCommands::Reproduces(const infrared::Capture& capture, const DecodedFrame& frame) {
    const auto train =
        infrared::CKeyEncoder::Encode(frame.protocol, frame.scancode, frame.toggle.value_or(false), 0, 38000, 33);
    // Up to the first gap: copies inside one press (Sony, Sharp) and NEC repeat frames after it
    // are not compared, an extra bit is.
    const auto firstFrame = [](std::vector<std::uint32_t> d) {
        for (std::size_t i = 1; i < d.size(); i += 2) {
            if (d[i] > kFrameGap) {
                d.resize(i);
                break;
            }
        }
        return d;
    };
    return infrared::CRawFrame::Similar(firstFrame(Received(capture, frame)), firstFrame(train.durations));
}

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

// decode names keys by the codesets it is given; learn recognises against the shipped ones,
// whose air-conditioner codesets it copies.
bool CReceiveCommands::load(bool shippedOnly) {
    std::string text = infrared::DefaultCodesetsText();
    std::string name = "the embedded codesets";
    if (!shippedOnly && !options_.platform.codesetsFile.empty()) {
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
    if (!load(false)) return fail(error_, 1);
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

// The next press that is not an NEC repeat frame, within the learn wait.
std::optional<DecodedFrame> CReceiveCommands::press(int number) {
    using Clock = std::chrono::steady_clock;
    const int waitMs = options_.timeoutSet ? options_.timeoutMs : kLearnWaitMs;
    const auto deadline = Clock::now() + std::chrono::milliseconds(waitMs);
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (receiver_->Live() && left.count() <= 0) break;
        std::optional<infrared::Capture> capture;
        try {
            capture = receiver_->Next(std::max(left, std::chrono::milliseconds(0)));
        } catch (const infrared::CReceiveOverflow& error) {
            say(std::string(error.what()));
            continue;
        } catch (const infrared::CReceiveError& error) {
            error_ = error.what();
            return std::nullopt;
        }
        if (!capture) break;
        for (DecodedFrame& frame : decoder_->Decode(*capture)) {
            if (frame.repeat) continue;
            if (options_.json) {
                JsonValue report = CFrameReport::Json(frame, 0);
                report.removeMember("frame");
                report["press"] = JsonValue(number);
                out_ << report.toString() << "\n" << std::flush;
            }
            say("  got " + CFrameReport::Summary(frame));
            if (frame.kind == DecodedFrame::Kind::Key && !Reproduces(*capture, frame)) {
                say("  " + std::string(infrared::ProtocolName(frame.protocol)) +
                    " would not send it exactly as it came: kept as raw timings");
                const std::uint64_t startUs = frame.startUs;
                const std::vector<std::uint32_t> durations = Received(*capture, frame);
                frame = DecodedFrame();
                frame.startUs = startUs;
                frame.durations = durations;
                frame.carrier = capture->carrier;
            }
            return std::move(frame);
        }
    }
    error_ = receiver_->Live() ? "no press within " + std::to_string(waitMs / 1000) + " s on " + receiver_->Describe()
                               : receiver_->Describe() + " has no more presses";
    return std::nullopt;
}

void CReceiveCommands::written(const std::string& key) {
    if (!options_.json) return;
    JsonValue done(common::json::JsonType::kObject);
    done["written"] = JsonValue(options_.platform.codesetsFile);
    done["codeset"] = JsonValue(options_.values.at("codeset"));
    if (!key.empty()) {
        done["key"] = JsonValue(key);
        done["code"] = JsonValue(code_);
    }
    out_ << done.toString() << "\n" << std::flush;
}

int CReceiveCommands::Learn() {
    if (options_.platform.codesetsFile.empty()) return fail("learn needs --codesets FILE, the file to write into", 2);
    if (options_.irReceiver.empty()) return fail("learn needs --ir-receiver DEV|FILE, where the presses come from", 2);
    const auto codeset = options_.values.find("codeset");
    if (codeset == options_.values.end() || codeset->second.empty()) return fail("learn needs --codeset NAME", 2);
    const bool aircon = options_.values.count("ac") != 0;
    if (!aircon && (options_.values.count("key") == 0 || options_.values.count("code") == 0)) {
        return fail("learn needs --key NAME and --code N (or --ac for an air conditioner)", 2);
    }
    if (!aircon && !CCommandLine::ParseInt(options_.values.at("code"), code_)) {
        return fail("--code needs a whole number, not '" + options_.values.at("code") + "'", 2);
    }
    if (!load(true)) return fail(error_, 1);
    if (!open(options_.irReceiver)) return fail(error_, 1);
    return aircon ? learnAircon() : learnKey();
}

int CReceiveCommands::learnKey() {
    const std::string& key = options_.values.at("key");
    for (int attempt = 0; attempt < kLearnAttempts; ++attempt) {
        say("Press '" + key + "' on the remote.");
        const auto first = press(1);
        if (!first) return fail(error_, 1);
        if (first->kind == DecodedFrame::Kind::Aircon) {
            return fail("that is an air conditioner (" + first->family + "): learn it with --ac --codeset NAME", 1);
        }
        say("Press '" + key + "' once more.");
        const auto second = press(2);
        if (!second) return fail(error_, 1);
        const std::string differ = Agreement(*first, *second);
        if (!differ.empty()) {
            say("The presses differ (" + differ + ": " + CFrameReport::Summary(*first) + ", then " +
                CFrameReport::Summary(*second) + "); once more from the start.");
            continue;
        }
        infrared::LearnedKey learned;
        learned.name = key;
        learned.code = code_;
        learned.protocol = first->kind == DecodedFrame::Kind::Raw ? infrared::Protocol::Raw : first->protocol;
        learned.scancode = first->scancode;
        learned.raw = first->durations;
        learned.carrier = first->carrier;
        try {
            infrared::CCodesetsFile::PutKey(options_.platform.codesetsFile, options_.values.at("codeset"), learned);
        } catch (const infrared::CCodesetsFileError& error) {
            return fail(error.what(), 1);
        }
        say("Learned '" + key + "' (code " + std::to_string(learned.code) + "): " + CFrameReport::Summary(*first) +
            ", written to codeset " + options_.values.at("codeset") + " in " + options_.platform.codesetsFile + ".");
        written(key);
        return 0;
    }
    return fail("the presses of '" + key + "' never agreed in " + std::to_string(kLearnAttempts) + " tries", 1);
}

int CReceiveCommands::learnAircon() {
    const std::string& name = options_.values.at("codeset");
    say("Press any button of the air conditioner's remote.");
    const auto frame = press(1);
    if (!frame) return fail(error_, 1);
    if (frame->kind != DecodedFrame::Kind::Aircon) {
        return fail("not an air conditioner protocol this library knows: " + CFrameReport::Summary(*frame), 1);
    }
    const std::string json = infrared::CCodesetsFile::CodesetJson(infrared::DefaultCodesetsText(), frame->codeset);
    try {
        infrared::CCodesetsFile::PutCodeset(options_.platform.codesetsFile, json, name);
    } catch (const infrared::CCodesetsFileError& error) {
        return fail(error.what(), 1);
    }
    say("Learned an air conditioner of family " + frame->family + " (as codeset " + frame->codeset + "; it sent " +
        frame->state.power + " " + frame->state.mode + " " + frame->state.setpoint + " " + frame->state.fan +
        "), written as codeset " + name + " to " + options_.platform.codesetsFile + ".");
    written("");
    return 0;
}

}  // namespace ircontrol::host
