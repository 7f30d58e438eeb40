#include "infrared/codeset/CAcStateTable.h"

#include <gtest/gtest.h>

#include "ImportSupport.h"

namespace infrared {
namespace {

std::shared_ptr<const CCodesetLibrary> Table() {
    const char* raw = R"("raw":[100,100,100])";
    return irtest::Library({std::string(R"({"name":"T","protocol":"ac_states","states":{)") +
                            R"("Off":{"power":"off",)" + raw + "}," +
                            R"("Cool":{"power":"on","mode":"cool",)" + raw + "}," +
                            R"("Cool_hi":{"power":"on","mode":"cool","fan":"high",)" + raw + "}," +
                            R"("Cool_22":{"power":"on","mode":"cool","setpoint":22,)" + raw + "}," +
                            R"("Heat_30_lo":{"power":"on","mode":"heat","setpoint":30,"fan":"low",)" + raw + "}}}"});
}

TEST(CAcStateTable, PicksTheStateSayingMostThatFits) {
    const auto library = Table();
    const Codeset& codeset = library->Codesets()[0];
    struct Case { AcState request; const char* state; };
    const Case cases[] = {
        {{"off", "", "", ""}, "Off"},
        {{"off", "heat", "25", "auto"}, "Off"},
        {{"on", "cool", "24", "auto"}, "Cool"},
        {{"on", "cool", "24", "high"}, "Cool_hi"},
        {{"on", "cool", "22", "low"}, "Cool_22"},
        {{"on", "heat", "30", "low"}, "Heat_30_lo"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CAcStateTable::Find(codeset, c.request).frame.name, c.state) << c.request.mode << " " << c.request.setpoint;
    }
}

TEST(CAcStateTable, AStateNotInTheTableNamesTheNearest) {
    const auto library = Table();
    const Codeset& codeset = library->Codesets()[0];
    struct Case { AcState request; const char* message; };
    const Case cases[] = {
        {{"on", "heat", "29", "low"}, "has no captured state for on heat 29 low; nearest: Heat_30_lo, Cool"},
        {{"on", "dry", "", "auto"}, "for on dry auto; nearest: Cool, Cool_22, Cool_hi"},
    };
    for (const auto& c : cases) {
        try {
            CAcStateTable::Find(codeset, c.request);
            ADD_FAILURE() << "found a state for " << c.request.mode;
        } catch (const std::invalid_argument& e) {
            EXPECT_NE(std::string(e.what()).find(c.message), std::string::npos) << e.what();
        }
    }
}

TEST(CAcStateTable, KeyMapListsWhatTheStatesSay) {
    const auto library = Table();
    EXPECT_EQ(CCodesetLibrary::KeyMapText(library->Codesets()[0]),
              R"({"modes":["cool","heat"],"fan":["high","low"],"setpoint":[22,30],"states":["Off","Cool","Cool_hi","Cool_22","Heat_30_lo"]})");
}

}  // namespace
}  // namespace infrared
