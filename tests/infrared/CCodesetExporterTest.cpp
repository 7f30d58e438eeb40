// Export: a codeset written as a lircd.conf remote decodes with irsimreceive as its keys, and a
// written .ir file imports back to the same codeset.
#include "infrared/import/CCodesetExporter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "ImportSupport.h"
#include "infrared/codeset/DefaultCodesets.h"
#include "infrared/CIrBackend.h"
#include "infrared/import/CCodesetImporter.h"
#include "infrared/transmit/CMode2Sink.h"

namespace infrared {
namespace {

// The shipped codesets and two of every other kind of frame: one mixing protocols and raw keys,
// one of captured air-conditioner states.
std::shared_ptr<const CCodesetLibrary> Codesets() {
    std::string text = DefaultCodesetsText();
    text.insert(text.find('[') + 1,
                R"({"name":"MIXED","protocol":"nec","keys":{"power":{"code":10,"scancode":"0x0408"},)"
                R"("swing":{"code":13,"protocol":"rc5","scancode":"0x1350"},)"
                R"("timer":{"code":14,"protocol":"kaseikyo","scancode":"0x325441001b"},)"
                R"("mode":{"code":76,"protocol":"sony20","scancode":"0x157d53"},)"
                R"("light":{"code":1000,"protocol":"raw","carrier":38000,"raw":[3000,1500,500],"gap":30000}}},)"
                R"({"name":"STATES","protocol":"ac_states","states":{)"
                R"("Off":{"power":"off","raw":[4000,2000,600,1600,600,600,600,1600,600]},)"
                R"("Cool_22":{"power":"on","mode":"cool","setpoint":22,"raw":[4000,2000,600,600,600,1600,600]}}},)");
    return CCodesetLibrary::Parse(text);
}

// Every key and captured state of each codeset goes once through the dry-run file (RC-5/RC-6
// toggles flipping as on the air); irsimreceive with the exported remote names them in order.
TEST(CCodesetExporter, LircdExportsDecodeAsTheirKeysWithIrsimreceive) {
    const auto presses = [](const std::vector<std::string>& keys) {  // consecutive repeats are one press
        std::vector<std::string> out;
        for (const auto& key : keys) {
            if (out.empty() || out.back() != key) out.push_back(key);
        }
        return out;
    };
    const auto library = Codesets();
    std::size_t exported = 0;
    const std::string mode2 = irtest::TempDir() + "/sent.txt";
    for (const auto& codeset : library->Codesets()) {
        if (codeset.protocol == Protocol::Aircon) {
            EXPECT_THROW(CCodesetExporter::ToLircd(codeset), std::invalid_argument);
            continue;
        }
        std::vector<const CodesetKey*> frames;
        for (const auto& key : codeset.keys) frames.push_back(&key);
        for (const auto& state : codeset.states) frames.push_back(&state.frame);
        std::vector<std::string> sent;
        CMode2Sink sink(mode2);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            Transmission t{codeset.name, frames[i]->name, 1, {}};
            CIrBackend::EncodeFrame(codeset, *frames[i], i % 2 == 1, t);
            sink.Transmit(t);
            sent.push_back(frames[i]->name);
        }
        const auto decoded = irtest::IrsimReceive(CCodesetExporter::ToLircd(codeset), mode2);
        ASSERT_TRUE(decoded.ran) << decoded.error;
        EXPECT_EQ(presses(decoded.keys), presses(sent)) << codeset.name;
        ++exported;
    }
    EXPECT_GE(exported, 6u);
}

TEST(CCodesetExporter, FlipperExportsImportBackToTheSameCodeset) {
    const auto library = Codesets();
    const std::pair<const char*, ApplianceKind> cases[] = {
        {"HFAN0001", ApplianceKind::Fan}, {"MIXED", ApplianceKind::Fan}, {"STATES", ApplianceKind::Aircon}};
    for (const auto& [name, kind] : cases) {
        const ImportedFile report =
            CCodesetImporter::ImportText(CCodesetExporter::ToFlipper(*library->Find(name)), "x.ir", {name, true, kind});
        ASSERT_EQ(report.error, "") << name;
        EXPECT_TRUE(report.refused.empty()) << name;
        const auto back = irtest::Library({report.codesets[0].json});
        const auto frames = [](const Codeset& c) {
            std::vector<std::tuple<int, std::string, Protocol, std::uint64_t, std::vector<std::uint32_t>>> out;
            for (const auto& k : c.keys) out.emplace_back(k.code, k.name, k.protocol, k.scancode, k.raw);
            for (const auto& s : c.states) out.emplace_back(0, s.frame.name + s.mode, s.frame.protocol, 0, s.frame.raw);
            std::sort(out.begin(), out.end());
            return out;
        };
        EXPECT_EQ(frames(back->Codesets()[0]), frames(*library->Find(name))) << name;
    }
}

}  // namespace
}  // namespace infrared
