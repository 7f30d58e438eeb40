// Reading codesets files: the shipped one, the key maps the IR library reports, and a refusal
// naming the member at fault for each kind of check the reader makes.
#include "infrared/codeset/CCodesetLibrary.h"

#include <gtest/gtest.h>

#include "ErrorOf.h"
#include "infrared/codeset/DefaultCodesets.h"

namespace infrared {
namespace {

std::string Refusal(const std::string& text) {
    return irtest::ErrorOf<std::invalid_argument>([&] { CCodesetLibrary::Parse(text); });
}

std::string One(const std::string& codeset) { return R"({"codesets":[{"name":"X",)" + codeset + "}]}"; }

// An air conditioner the frame checks below change one member of.
const std::string kAc =
    One(R"("protocol":"aircon","timing":{"mark":500,"one":1500,"zero":500,"trailer":500,"gap":9000},)"
        R"("frame":{"bytes":[1,2,3],"power":{"byte":0,"mask":"0x01","values":{"on":1,"off":0}},)"
        R"("mode":{"byte":0,"mask":"0x0e","values":{"cool":2}},)"
        R"("fan":{"byte":0,"mask":"0x30","values":{"auto":"0x10"}},)"
        R"("setpoint":{"byte":1,"offset":16,"min":16,"max":30}})");

// (A key codeset's key map: the codesets file's tests.)
TEST(CCodesetLibraryTest, ShippedCodesetsNameTheirSourceAndKeepTheKeyMapsTheToolsShow) {
    const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    ASSERT_EQ(library->Codesets().size(), 21u);
    for (const auto& codeset : library->Codesets()) EXPECT_GT(codeset.source.size(), 40u) << codeset.name;
    EXPECT_EQ(CCodesetLibrary::KeyMapText(*library->Find("ZAC00018")),
              R"({"modes":["auto","cool","dry","fan","heat"],"fan":["low","medium","high","auto"],)"
              R"("setpoint":[18,32],"power":["on","toggle"]})");
    EXPECT_EQ(library->Find("HHUM0003")->carrier, 40000u);  // Sony's own carrier
    EXPECT_EQ(library->Find("NOSUCH"), nullptr);
}

// One member per kind of check: JSON, objects, names, numbers, the protocol's scancode bits,
// unique codes and names, carriers.
TEST(CCodesetLibraryTest, RefusesMistakesNamingTheMember) {
    const std::string key = R"("protocol":"nec","keys":{"a":{"code":1,"scancode":1})";
    const std::pair<std::string, const char*> cases[] = {
        {"{", "not valid JSON"},
        {R"({"codesets":[1]})", "codesets[0]: must be an object"},
        {One(R"("protocol":"nec9","keys":{})"), "codesets[0].protocol: 'nec9' is not a known protocol"},
        {One(R"("protocol":"nec","keys":{})"), "codesets[0].keys: must name at least one key"},
        {One(R"("protocol":"rca","keys":{"a":{"code":1,"scancode":"0x1054"}})"), "does not fit rca (bits 0xfff)"},
        {One(R"("protocol":"nec","keys":{"a":{"code":1,"scancode":"12x"}})"), "a.scancode: '12x' is not a number"},
        {One(key + R"(,"b":{"code":1,"scancode":2}})"), "keys.b.code: is used by another key"},
        {One(R"("carrier":5,)" + key + "}"), "carrier: must be at least 10000 Hz"},
        {R"({"codesets":[{"name":"X",)" + key + R"(}},{"name":"X",)" + key + "}}]}", "[1].name: 'X' is defined twice"},
        {One(R"("protocol":"aircon")"), "codesets[0].timing: must be an object"},
    };
    for (const auto& [text, says] : cases) EXPECT_NE(Refusal(text).find(says), std::string::npos) << Refusal(text);
}

// One member per kind of check of the frame description (the unchanged description is accepted).
TEST(CCodesetLibraryTest, RefusesFrameDescriptionsNamingTheMember) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"}}}", "}}}", "(no error)"},
        {R"("cool":2)", R"("cool":"0x10")", "frame.mode.values.cool: has bits outside the slot's mask"},
        {R"("max":30)", R"("max":300)", "frame.setpoint: the range does not fit the slot"},
        {"[1,2,3]", "[1,2,256]", "frame.bytes[2]: 256 is larger than 255"},
        {R"("offset":16,"min":16,"max":30)", R"("table":{"warm":1})", "table.warm: is not a number of degrees"},
        {"}}}", R"(},"checksum":{"rule":"crc","byte":2,"from":0,"to":1}}})", "checksum.rule: 'crc' is not sum"},
        {R"("frame":{)", R"("sections":[{"from":0,"to":1}],"frame":{)", "sections: do not send every byte"},
        {R"("frame":{)", R"("sections":[{"from":0,"to":3}],"frame":{)", "sections[0]: lies outside the frame's bytes"},
        {"[1,2,3],", R"([1,2,3],"per_mode":{"heat":{}},)", "frame.per_mode.heat: is not one of the frame's modes"},
    };
    for (const auto& [from, to, says] : cases) {
        std::string text = kAc;
        ASSERT_NE(text.find(from), std::string::npos) << from;
        text.replace(text.find(from), std::string(from).size(), to);
        EXPECT_NE(Refusal(text).find(says), std::string::npos) << text << "\n  -> " << Refusal(text);
    }
}

}  // namespace
}  // namespace infrared
