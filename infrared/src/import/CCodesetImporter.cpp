#include "infrared/import/CCodesetImporter.h"

#include <cmath>
#include <map>
#include <memory>
#include <sstream>

#include "JsonValue.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/decode/CAcFrameDecoder.h"
#include "infrared/decode/CFrameDecoder.h"
#include "infrared/encode/CLircdEncoder.h"
#include "infrared/formats/CFlipperIrFile.h"
#include "infrared/formats/CFormatError.h"
#include "infrared/formats/CLircdConf.h"

namespace infrared {
namespace {

constexpr std::size_t kMaxRaw = 4095;  // what a codeset's raw key holds

std::string Quoted(const std::string& text) { return common::json::JsonValue(text).toString(); }

// What one button sends, as a codeset key's members.
struct Frame {
    Protocol protocol = Protocol::Raw;
    std::uint64_t scancode = 0;
    std::vector<std::uint32_t> raw;
    std::uint32_t carrier = 0, dutyCycle = 0, gap = 0;

    std::string Members() const {
        std::ostringstream out;
        out << "\"protocol\":\"" << ProtocolName(protocol) << '"';
        if (protocol != Protocol::Raw) {
            out << ",\"scancode\":\"0x" << std::hex << scancode << std::dec << '"';
            return out.str();
        }
        out << ",\"carrier\":" << carrier << ",\"duty_cycle\":" << dutyCycle;
        if (gap != 0) out << ",\"gap\":" << gap;
        out << ",\"raw\":[";
        for (std::size_t i = 0; i < raw.size(); ++i) out << (i > 0 ? "," : "") << raw[i];
        out << ']';
        return out.str();
    }
};

// The library's protocol and scancode for a Flipper parsed signal (the kernel's layouts where
// the kernel has the protocol); false (and why) for a protocol name it does not know.
bool ParsedFrame(const FlipperSignal& s, Frame& out, std::string& why) {
    const std::uint64_t a = s.address, c = s.command;
    const std::string& p = s.protocol;
    const auto set = [&](Protocol protocol, std::uint64_t scancode) {
        out.protocol = protocol;
        out.scancode = scancode;
    };
    if (p == "NEC") set(Protocol::Nec, a << 8 | c);
    else if (p == "NECext" && (c >> 8) == (~c & 0xff)) set(Protocol::NecX, (a & 0xff) << 16 | (a >> 8) << 8 | (c & 0xff));
    else if (p == "NECext") set(Protocol::Nec32, a << 16 | c);
    // NEC42 sends the address and command each followed by its complement.
    else if (p == "NEC42") set(Protocol::Nec42, (a | (~a & 0x1fff) << 13) << 16 | c | (~c & 0xff) << 8);
    else if (p == "NEC42ext") set(Protocol::Nec42, a << 16 | c);
    else if (p == "RC5") set(Protocol::Rc5, a << 8 | c);
    // RC5X: the seventh command bit is not sent; the missing second start bit says "X". Stored
    // as rc5 with that bit, which the kernel's rc5 encoder also sends.
    else if (p == "RC5X") set(Protocol::Rc5, a << 8 | 0x40 | (c & 0x3f));
    else if (p == "RC6") set(Protocol::Rc6Mode0, a << 8 | c);
    else if (p == "SIRC") set(Protocol::Sony12, a << 16 | c);
    else if (p == "SIRC15") set(Protocol::Sony15, a << 16 | c);
    else if (p == "SIRC20") set(Protocol::Sony20, (a & 0x1f) << 16 | (a >> 5) << 8 | c);
    else if (p == "Kaseikyo") set(Protocol::Kaseikyo, a << 16 | c);
    else if (p == "RCA") set(Protocol::Rca, a << 8 | c);
    else if (p == "Pioneer") set(Protocol::Pioneer, a << 8 | c);
    else {
        why = "protocol " + p + " not supported yet";
        return false;
    }
    return true;
}

// The decoders see captures against the shipped codesets (their air conditioners' formats).
struct Decoders {
    std::shared_ptr<const CCodesetLibrary> shipped = CCodesetLibrary::Parse(DefaultCodesetsText());
    CFrameDecoder keys{shipped};
};

const Decoders& SharedDecoders() {
    static const Decoders decoders;
    return decoders;
}

// A raw capture that is one key of a protocol the library knows (copies of it allowed) becomes
// that key; anything else stays raw.
void Recognise(Frame& frame) {
    Capture capture;
    capture.durations = frame.raw;
    capture.carrier = frame.carrier;
    const auto decoded = SharedDecoders().keys.Decode(capture);
    if (decoded.empty()) return;
    for (const auto& d : decoded) {
        if (d.kind != DecodedFrame::Kind::Key || d.protocol != decoded[0].protocol || d.scancode != decoded[0].scancode) {
            return;
        }
    }
    frame.protocol = decoded[0].protocol;
    frame.scancode = decoded[0].scancode;
    frame.raw.clear();
}

// The shipped air-conditioner codeset most of the captures are frames of, "" if none.
std::string AcProtocol(const std::vector<std::vector<std::uint32_t>>& captures) {
    std::map<std::string, std::size_t> hits;
    for (const auto& codeset : SharedDecoders().shipped->Codesets()) {
        if (codeset.protocol != Protocol::Aircon) continue;
        for (const auto& capture : captures) {
            if (CAcFrameDecoder::Decode(codeset, capture)) ++hits[codeset.name];
        }
    }
    std::string best;
    std::size_t most = 0;
    for (const auto& [name, count] : hits) {
        if (count > most) best = name, most = count;
    }
    return most * 2 > captures.size() ? best : std::string();
}

// The shipped codeset `shipped` under a new name, as a codesets-file entry.
std::string RenamedShipped(const std::string& shipped, const std::string& name) {
    const common::json::JsonValue root = common::json::JsonValue::Create(DefaultCodesetsText());
    const common::json::JsonValue& list = root["codesets"];
    for (unsigned i = 0; i < list.size(); ++i) {
        if (list[i]["name"].asString() != shipped) continue;
        common::json::JsonValue entry = list[i];
        entry["name"] = name;
        return entry.toString();
    }
    return "";
}

void RawFrame(const FlipperSignal& s, Frame& out) {
    out.protocol = Protocol::Raw;
    out.raw = s.data;
    // A trailing space is the silence after the signal, not part of it.
    if (out.raw.size() % 2 == 0) out.raw.pop_back();
    out.carrier = s.frequency;
    out.dutyCycle = static_cast<std::uint32_t>(std::lround(std::max(1.0, s.dutyCycle * 100)));
}

// Collects a codeset's keys or states: unique names, key codes from the table, free codes for
// the rest, and the counts of the report.
class Builder {
public:
    Builder(ApplianceKind kind, std::string file, ImportedFile& report)
        : kind_(kind), file_(std::move(file)), report_(report) {}

    void Add(const std::string& button, std::size_t line, const Frame& frame) {
        if (frame.raw.size() > kMaxRaw) {
            report_.refused.push_back({file_, line, "'" + button + "' is longer than " + std::to_string(kMaxRaw) + " durations"});
            return;
        }
        std::string name = button;
        for (int n = 2; used_.count(name) != 0; ++n) name = button + "_" + std::to_string(n);
        std::ostringstream entry;
        entry << Quoted(name) << ":{";
        if (kind_ == ApplianceKind::Aircon) {
            AcStateEntry state;
            if (!CKeyNames::ReadStateName(button, state)) {
                report_.refused.push_back({file_, line, "'" + button + "' names no air-conditioner state (a button)"});
                return;
            }
            entry << "\"power\":\"" << state.power << '"';
            if (!state.mode.empty()) entry << ",\"mode\":\"" << state.mode << '"';
            if (!state.fan.empty()) entry << ",\"fan\":\"" << state.fan << '"';
            if (state.hasSetpoint) entry << ",\"setpoint\":" << state.setpoint;
            entry << ',';
            ++out_.acStates;
        } else {
            int code = CKeyNames::Code(kind_, button);
            if (code < 0 || codes_.count(code) != 0) {
                code = nextFree_++;
                out_.freeCodes.emplace_back(name, code);
            }
            codes_.insert({code, name});
            entry << "\"code\":" << code << ',';
            ++(frame.protocol == Protocol::Raw ? out_.rawKeys : out_.protocolKeys);
        }
        entry << frame.Members() << '}';
        used_.insert({name, 0});
        entries_.push_back(entry.str());
        ++protocols_[frame.protocol];
    }

    // False when nothing was imported.
    bool Finish(const std::string& name, const std::string& source, std::uint32_t carrier, std::uint32_t dutyCycle) {
        if (entries_.empty()) return false;
        Protocol main = Protocol::Raw;
        std::size_t most = 0;
        for (const auto& [protocol, count] : protocols_) {
            if (count > most) main = protocol, most = count;
        }
        const bool ac = kind_ == ApplianceKind::Aircon;
        std::ostringstream json;
        json << "{\"name\":" << Quoted(name) << ",\"source\":" << Quoted(source) << ",\"protocol\":\""
             << (ac ? "ac_states" : ProtocolName(main)) << '"';
        if (carrier != 0) json << ",\"carrier\":" << carrier << ",\"duty_cycle\":" << dutyCycle;
        json << (ac ? ",\"states\":{" : ",\"keys\":{");
        for (std::size_t i = 0; i < entries_.size(); ++i) json << (i > 0 ? "," : "") << entries_[i];
        json << "}}";
        out_.name = name;
        out_.json = json.str();
        report_.codesets.push_back(out_);
        return true;
    }

private:
    ApplianceKind kind_;
    std::string file_;
    ImportedFile& report_;
    ImportedCodeset out_;
    std::vector<std::string> entries_;
    std::map<std::string, int> used_;
    std::map<int, std::string> codes_;
    std::map<Protocol, std::size_t> protocols_;
    int nextFree_ = CKeyNames::kFirstFreeCode;
};

std::string BaseName(const std::string& path) {
    std::string base = path.substr(path.find_last_of('/') + 1);
    const std::size_t dot = base.find('.');
    return dot == std::string::npos || dot == 0 ? base : base.substr(0, dot);
}

void ImportFlipper(const std::string& text, const std::string& file, const CCodesetImporter::Options& options,
                   ImportedFile& report) {
    report.format = "flipper";
    const std::vector<FlipperSignal> signals = CFlipperIrFile::Parse(text, file);
    Builder builder(report.kind, file, report);
    for (const auto& s : signals) {
        Frame frame;
        std::string why;
        if (s.raw) {
            RawFrame(s, frame);
            if (report.kind != ApplianceKind::Aircon) Recognise(frame);
        } else if (!ParsedFrame(s, frame, why)) {
            report.refused.push_back({file, s.line, "'" + s.name + "': " + why});
            continue;
        }
        builder.Add(s.name, s.line, frame);
    }
    const std::string name = options.name.empty() ? CCodesetImporter::CodesetName(BaseName(file)) : options.name;
    if (report.kind == ApplianceKind::Aircon) {
        std::vector<std::vector<std::uint32_t>> captures;
        for (const auto& s : signals) {
            if (s.raw) captures.push_back(s.data);
        }
        report.acProtocol = captures.empty() ? std::string() : AcProtocol(captures);
        if (!report.acProtocol.empty() && options.recognise) {
            ImportedCodeset codeset;
            codeset.name = name;
            codeset.json = RenamedShipped(report.acProtocol, name);
            report.codesets.push_back(codeset);
            report.refused.clear();
            return;
        }
    }
    if (!builder.Finish(name, "imported from " + BaseName(file) + ".ir", 0, 0)) {
        throw CFormatError(file, 0, "no signal of the file can be imported");
    }
}

void ImportLircd(const std::string& text, const std::string& file, const CCodesetImporter::Options& options,
                 ImportedFile& report) {
    report.format = "lircd";
    const std::vector<LircRemote> remotes = CLircdConf::Parse(text, file);
    std::map<std::string, int> names;
    for (const auto& remote : remotes) {
        Builder builder(report.kind, file, report);
        for (const auto& button : remote.buttons) {
            const PulseTrain train = CLircdEncoder::Encode(remote, button);
            Frame frame;
            frame.raw = train.durations;
            frame.carrier = remote.frequency;
            frame.dutyCycle = remote.dutyCycle;
            frame.gap = train.trailingGap;
            builder.Add(button.name, button.line, frame);
        }
        std::string name = options.name.empty() ? CCodesetImporter::CodesetName(remote.name) : options.name;
        if (name.empty()) name = CCodesetImporter::CodesetName(BaseName(file));
        if (names[name]++ > 0) name += "_" + std::to_string(names[name]);
        builder.Finish(name, "imported from lircd.conf remote " + remote.name, remote.frequency, remote.dutyCycle);
    }
    if (report.codesets.empty()) throw CFormatError(file, 0, "no button of the file can be imported");
}

}  // namespace

std::string CCodesetImporter::CodesetName(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-') out += c;
        else if (!out.empty() && out.back() != '_') out += '_';
    }
    return out.substr(0, 64);
}

ImportedFile CCodesetImporter::ImportText(const std::string& text, const std::string& file, const Options& options) {
    ImportedFile report;
    report.file = file;
    report.kind = options.kind;
    if (!options.kindGiven && !CKeyNames::KindFromPath(file, report.kind)) report.kind = ApplianceKind::Fan;
    try {
        // A Flipper file says so in its first line after comments; anything else is read as lircd.conf.
        std::size_t at = 0;
        while (at < text.size() && (text[at] == '#' || text[at] == '\n' || text[at] == '\r')) {
            at = text[at] == '#' ? text.find('\n', at) : at + 1;
        }
        if (at < text.size() && text.compare(at, 9, "Filetype:") == 0) {
            ImportFlipper(text, file, options, report);
        } else {
            ImportLircd(text, file, options, report);
        }
    } catch (const CFormatError& e) {
        report.error = e.what();
        report.codesets.clear();
    } catch (const std::exception& e) {
        report.error = file + ":0: " + e.what();
        report.codesets.clear();
    }
    return report;
}

ImportedFile CCodesetImporter::ImportFile(const std::string& path, const Options& options) {
    try {
        return ImportText(ReadFormatFile(path, kMaxFileBytes), path, options);
    } catch (const std::exception& e) {
        ImportedFile report;
        report.file = path;
        report.error = e.what();
        return report;
    }
}

}  // namespace infrared
