// Reading codesets files: the shipped one, the key maps the IR library reports, and a refusal
// naming the member at fault for each kind of mistake.
#include "infrared/codeset/CCodesetLibrary.h"

#include <gtest/gtest.h>

#include "infrared/codeset/DefaultCodesets.h"

namespace infrared {
namespace {

std::string Refusal(const std::string& text) {
    try {
        CCodesetLibrary::Parse(text);
    } catch (const std::invalid_argument& e) {
        return e.what();
    }
    return "(accepted)";
}

std::string One(const std::string& codeset) { return R"({"codesets":[)" + codeset + "]}"; }

const char kAc[] = R"("name":"A","protocol":"aircon","timing":{"mark":500,"one":1500,"zero":500,"trailer":500,"gap":9000},)"
                   R"("frame":{"bytes":[1,2,3],"power":{"byte":0,"mask":"0x01","values":{"on":1,"off":0}},)"
                   R"("mode":{"byte":0,"mask":"0x0e","values":{"cool":2}},"fan":{"byte":0,"mask":"0x30","values":{"auto":"0x10"}},)"
                   R"("setpoint":{"byte":1,"offset":16,"min":16,"max":30}CHECKSUM}})";

std::string Ac(const std::string& checksum) {
    std::string text = std::string("{") + kAc;
    text.replace(text.find("CHECKSUM"), 8, checksum);
    return One(text);
}

TEST(CCodesetLibraryTest, ShippedCodesetsNameTheirSourceAndKeepTheKeyMapsTheToolsShow) {
    const auto library = CCodesetLibrary::Parse(DefaultCodesetsText());
    ASSERT_EQ(library->Codesets().size(), 21u);
    for (const auto& codeset : library->Codesets()) EXPECT_GT(codeset.source.size(), 40u) << codeset.name;
    struct Case {
        const char* codeset;
        const char* keyMap;
    } cases[] = {
        {"HFAN0001", R"({"power":10,"speed_up":11,"speed_down":12,"swing":13,"timer":14,"mode":76})"},
        {"HRBC0004", R"({"power":10,"home":28,"start":39})"},
        {"ZAC00005", R"({"modes":["auto","cool","dry","fan","heat"],"fan":["low","medium","high","auto"],"setpoint":[16,31]})"},
        {"ZAC00018", R"({"modes":["auto","cool","dry","fan","heat"],"fan":["low","medium","high","auto"],"setpoint":[18,32],"power":["on","toggle"]})"},
        {"ZAC00008", R"({"modes":["auto","cool","dry","fan","heat"],"fan":["low","medium","high","auto"],"setpoint":[17,30]})"},
    };
    for (const auto& c : cases) {
        ASSERT_NE(library->Find(c.codeset), nullptr) << c.codeset;
        EXPECT_EQ(CCodesetLibrary::KeyMapText(*library->Find(c.codeset)), c.keyMap);
    }
    EXPECT_EQ(library->Find("HHUM0003")->carrier, 40000u);  // Sony's own carrier
    EXPECT_EQ(library->Find("NOSUCH"), nullptr);
}

// Numbers may be hex text, decimal text or JSON integers; the layouts wider than 32 bits keep
// every bit; each protocol gets its own carrier unless the codeset gives one.
TEST(CCodesetLibraryTest, ReadsNumbersWideScancodesAndProtocolCarriers) {
    const auto library = CCodesetLibrary::Parse(R"({"codesets":[
        {"name":"H","protocol":"necx","carrier":"0x9470","keys":{"a":{"code":"2","scancode":255}}},
        {"name":"K","protocol":"kaseikyo","keys":{"a":{"code":1,"scancode":"0x3ffffff03ff"}}},
        {"name":"N","protocol":"nec42","keys":{"a":{"code":1,"scancode":"0x3ffffffffff"}}},
        {"name":"P","protocol":"pioneer","keys":{"a":{"code":1,"scancode":"0xaf36"}}},
        {"name":"X","protocol":"rc5x","keys":{"a":{"code":1,"scancode":"0x1350"}}}]})");
    const struct {
        const char* name;
        std::uint32_t carrier;
        int code;
        std::uint64_t scancode;
    } cases[] = {{"H", 38000, 2, 255}, {"K", 38000, 1, 0x3ffffff03ffULL}, {"N", 38000, 1, 0x3ffffffffffULL},
                 {"P", 40000, 1, 0xaf36}, {"X", 36000, 1, 0x1350}};
    for (const auto& c : cases) {
        const Codeset& codeset = *library->Find(c.name);
        EXPECT_EQ(std::tie(codeset.carrier, codeset.keys[0].code, codeset.keys[0].scancode),
                  std::tie(c.carrier, c.code, c.scancode)) << c.name;
    }
}

TEST(CCodesetLibraryTest, RefusesMistakesNamingTheMember) {
    struct Case {
        std::string text;
        const char* says;
    } cases[] = {
        {"{", "not valid JSON"},
        {"[]", "\"codesets\" array"},
        {One("1"), "codesets[0]: must be an object"},
        {One(R"({"protocol":"nec","keys":{}})"), "codesets[0].name: must be a string"},
        {One(R"({"name":"X","protocol":"nec9","keys":{}})"), "codesets[0].protocol: 'nec9' is not a known protocol"},
        {One(R"({"name":"X","protocol":"nec","keys":{}})"), "codesets[0].keys: must name at least one key"},
        {One(R"({"name":"X","protocol":"nec","keys":{"a":{"code":1}}})"), "codesets[0].keys.a.scancode: must be a number"},
        {One(R"({"name":"X","protocol":"nec","keys":{"a":{"code":1,"scancode":"0x10000"}}})"), "keys.a.scancode: does not fit nec"},
        {One(R"({"name":"X","protocol":"rca","keys":{"a":{"code":1,"scancode":"0x1054"}}})"), "does not fit rca (bits 0xfff)"},
        {One(R"({"name":"X","protocol":"kaseikyo","keys":{"a":{"code":1,"scancode":"0x325441041b"}}})"), "does not fit kaseikyo"},
        {One(R"({"name":"X","protocol":"nec42","keys":{"a":{"code":1,"scancode":"0x40000000000"}}})"), "does not fit nec42"},
        {One(R"({"name":"X","protocol":"nec","keys":{"a":{"code":-1,"scancode":1}}})"), "keys.a.code: must not be negative"},
        {One(R"({"name":"X","protocol":"nec","keys":{"a":{"code":1,"scancode":"12x"}}})"), "'12x' is not a number"},
        {One(R"({"name":"X","protocol":"nec","keys":{"a":{"code":1,"scancode":1},"b":{"code":1,"scancode":2}}})"), "keys.b.code: is used by another key"},
        {One(R"({"name":"X","protocol":"nec","carrier":5,"keys":{"a":{"code":1,"scancode":1}}})"), "carrier: must be at least 10000 Hz"},
        {One(R"({"name":"X","protocol":"nec","duty_cycle":0,"keys":{"a":{"code":1,"scancode":1}}})"), "duty_cycle: must be 1..100"},
        {One(R"({"name":"X","protocol":"raw","keys":{"a":{"code":1,"raw":[9000,4500]}}})"), "keys.a.raw: must be an odd number"},
        {One(R"({"name":"X","protocol":"raw","keys":{"a":{"code":1,"raw":[9000,0,560]}}})"), "durations must not be 0"},
        {One(R"({"name":"X","protocol":"pronto","keys":{"a":{"code":1,"pronto":"0000 006D 0001"}}})"), "keys.a.pronto: a Pronto code needs at least 4 words"},
        {R"({"codesets":[{"name":"X","protocol":"nec","keys":{"a":{"code":1,"scancode":1}}},{"name":"X","protocol":"nec","keys":{"a":{"code":1,"scancode":1}}}]})",
         "codesets[1].name: 'X' is defined twice"},
        {Ac(""), "(accepted)"},
        {One(R"({"name":"A","protocol":"aircon"})"), "codesets[0].timing: must be an object"},
        {Ac(R"(,"checksum":{"rule":"crc","byte":2,"from":0,"to":1})"), "checksum.rule: 'crc' is not sum, byte_sum, nibble_sum or xor"},
        {Ac(R"(,"checksum":{"rule":"xor","byte":3,"from":0,"to":1})"), "checksum.byte: is outside the frame's bytes"},
        {Ac(R"(,"checksum":{"rule":"xor","byte":2,"from":1,"to":0})"), "from..to must lie within the frame"},
        {Ac(R"(,"checksum":{"rule":"sum","byte":2,"ranges":[{"from":0,"to":1,"of":"bits"}]})"), "checksum.ranges[0].of: 'bits' is not"},
        {Ac(R"(,"checksum":[{"rule":"sum","byte":2,"from":0,"to":1},{"rule":"sum","byte":2,"ranges":[7]}])"), "checksum[1].ranges[0]: must be an object"},
        {Ac(R"(,"checksum":{"rule":"sum","byte":2,"from":0,"to":1,"negate":1})"), "checksum.negate: must be true or false"},
    };
    for (const auto& c : cases) {
        const std::string refusal = Refusal(c.text);
        EXPECT_NE(refusal.find(c.says), std::string::npos) << c.text << "\n  -> " << refusal;
    }
}

TEST(CCodesetLibraryTest, RefusesFrameFieldsThatDoNotFitTheirSlot) {
    struct Case {
        const char* from;
        const char* to;
        const char* says;
    } cases[] = {
        {R"("values":{"cool":2})", R"("values":{"cool":"0x10"})", "frame.mode.values.cool: has bits outside the slot's mask"},
        {R"("values":{"cool":2})", R"("values":{})", "frame.mode.values: must name at least one value"},
        {R"("values":{"cool":2})", R"("values":{"cool":[2,3]})", "frame.mode.values.cool: needs one byte per slot"},
        {R"("max":30)", R"("max":300)", "frame.setpoint: the range does not fit the slot"},
        {R"("max":30)", R"("max":10)", "frame.setpoint: min is above max"},
        {R"("trailer":500,)", "", "timing.trailer: is required"},
        {R"("bytes":[1,2,3])", R"("bytes":[])", "frame.bytes: must be a non-empty array"},
        {R"("bytes":[1,2,3])", R"("bytes":[1,2,256])", "frame.bytes[2]: 256 is larger than 255"},
        {R"("byte":1,"offset")", R"("byte":9,"offset")", "frame.setpoint.byte: is outside the frame's bytes"},
        {R"("offset":16,"min":16,"max":30)", R"("table":{"warm":1})", "frame.setpoint.table.warm: is not a number of degrees"},
        // Sections must send every byte plainly once, inside the frame.
        {R"("frame":{)", R"("sections":[{"from":0,"to":1}],"frame":{)", "sections: do not send every byte of the frame's bytes"},
        {R"("frame":{)", R"("sections":[{"from":0,"to":3}],"frame":{)", "sections[0]: lies outside the frame's bytes"},
        {R"("frame":{)", R"("sections":[{"from":0},{"from":0,"invert":"odd"}],"frame":{)", "sections[1].invert: must be"},
        {R"("frame":{)", R"("sections":[{"from":0,"invert":"whole"}],"frame":{)", "do not send every byte"},
        {R"("frame":{)", R"("sections":[{"bits":"0120"},{"from":0}],"frame":{)", "sections[0].bits: must be 1 to 64"},
        {R"("frame":{)", R"("sections":[{"from":0,"header":[1]}],"frame":{)", "sections[0].header: must be [mark, space]"},
        {R"("frame":{)", R"("sections":["all"],"frame":{)", "sections[0]: must be an object"},
        {R"("frame":{)", R"("sections":[],"frame":{)", "sections: must be a non-empty array"},
        // Per-mode bits, fixed bits, the off frame and checksum ranges name their member.
        {R"("bytes":[1,2,3],)", R"("bytes":[1,2,3],"per_mode":{"heat":{}},)", "frame.per_mode.heat: is not one of the frame's modes"},
        {R"("bytes":[1,2,3],)", R"("bytes":[1,2,3],"per_mode":{"cool":{"ignores":["power"]}},)", "frame.per_mode.cool.ignores[0]: must be"},
        {R"("bytes":[1,2,3],)", R"("bytes":[1,2,3],"per_mode":{"cool":{"set":[{"byte":2,"mask":"0x0f","value":"0x10"}]}},)",
         "frame.per_mode.cool.set[0].value: has bits outside the slot's mask"},
        {R"("bytes":[1,2,3],)", R"("bytes":[1,2,3],"per_mode":{"cool":{"set":[5]}},)", "frame.per_mode.cool.set[0]: must be an object"},
        {R"("bytes":[1,2,3],)", R"("bytes":[1,2,3],"fixed":[0,3],)", "frame.fixed[1]: is outside the frame's bytes"},
        {R"("power":{"byte":0,"mask":"0x01","values":{"on":1,"off":0}})", R"("power":{"off_frame":[]})", "frame.power.off_frame: must be a non-empty array"},
        {R"("frame":{"bytes":[1,2,3],"power":{"byte":0,"mask":"0x01","values":{"on":1,"off":0}})",
         R"("sections":[{"from":0,"to":2}],"frame":{"bytes":[1,2,3],"power":{"off_frame":[1,2]})", "sections[0]: lies outside the off frame"},
    };
    for (const auto& c : cases) {
        std::string text = Ac("");
        const auto at = text.find(c.from);
        ASSERT_NE(at, std::string::npos) << c.from;
        text.replace(at, std::string(c.from).size(), c.to);
        const std::string refusal = Refusal(text);
        EXPECT_NE(refusal.find(c.says), std::string::npos) << text << "\n  -> " << refusal;
    }
}

}  // namespace
}  // namespace infrared
