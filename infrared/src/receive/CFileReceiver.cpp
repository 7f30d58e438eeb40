#include "infrared/receive/CFileReceiver.h"

#include "infrared/formats/CFlipperIrFile.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/receive/CMode2Text.h"
#include "infrared/receive/CProntoText.h"

namespace infrared {
namespace {

// The raw signals of a Flipper file, one capture each; parsed signals already name their code.
std::vector<Capture> FlipperCaptures(const std::string& text, const std::string& name) {
    std::vector<Capture> captures;
    std::uint64_t clock = 0;
    for (const FlipperSignal& signal : CFlipperIrFile::Parse(text, name)) {
        if (!signal.raw) continue;
        Capture capture;
        capture.durations = signal.data;
        if (capture.durations.size() % 2 == 0) capture.durations.pop_back();  // a closing space
        capture.carrier = signal.frequency;
        capture.startUs = clock;
        for (const std::uint32_t d : signal.data) clock += d;
        captures.push_back(std::move(capture));
    }
    if (captures.empty()) throw CReceiveError(name + ": no raw signals (its parsed ones already name their codes)");
    return captures;
}

}  // namespace

CFileReceiver::CFileReceiver(const std::string& path) : name_(path) {
    std::string text;
    try {
        text = ReadFormatFile(path, kMaxBytes);
    } catch (const CFormatError& error) {
        throw CReceiveError(error.what());
    }
    parse(text);
}

CFileReceiver::CFileReceiver(const std::string& text, const std::string& name) : name_(name) { parse(text); }

void CFileReceiver::parse(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw CReceiveError(name_ + ": a binary file, not recorded IR");
    try {
        if (CMode2Text::Looks(text)) {
            captures_ = CMode2Text::Parse(text, name_);
        } else if (CProntoText::Looks(text)) {
            captures_ = CProntoText::Parse(text, name_);
        } else if (text.compare(0, 9, "Filetype:") == 0) {
            captures_ = FlipperCaptures(text, name_);
        } else {
            throw CReceiveError(name_ + ": neither mode2 text (pulse/space lines), Pronto hex nor a Flipper .ir file");
        }
    } catch (const CFormatError& error) {
        throw CReceiveError(error.what());
    }
}

std::optional<Capture> CFileReceiver::Next(std::chrono::milliseconds) {
    if (next_ >= captures_.size()) return std::nullopt;
    return captures_[next_++];
}

}  // namespace infrared
