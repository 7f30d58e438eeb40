#include "infrared/codeset/CAcStateTable.h"

#include <gtest/gtest.h>

#include "ErrorOf.h"
#include "ImportSupport.h"

namespace infrared {
namespace {

const auto kTable = irtest::Library({R"({"name":"T","protocol":"ac_states","states":{)"
                                     R"("Off":{"power":"off","raw":[1]},"Cool":{"power":"on","mode":"cool","raw":[1]},)"
                                     R"("Cool_hi":{"power":"on","mode":"cool","fan":"high","raw":[1]},)"
                                     R"("Cool_22":{"power":"on","mode":"cool","setpoint":22,"raw":[1]},)"
                                     R"("Heat_30_lo":{"power":"on","mode":"heat","setpoint":30,"fan":"low",)"
                                     R"("raw":[1]}}})"});

// The state saying most that fits is picked; a request no state fits names the nearest ones.
// (The key map of a state table: the importer's tests.)
TEST(CAcStateTable, PicksTheStateSayingMostThatFitsOrNamesTheNearest) {
    const Codeset& codeset = kTable->Codesets()[0];
    const std::pair<AcState, const char*> cases[] = {
        {{"off", "heat", "25", "auto"}, "Off"},
        {{"on", "cool", "24", "auto"}, "Cool"},
        {{"on", "cool", "24", "high"}, "Cool_hi"},
        {{"on", "cool", "22", "low"}, "Cool_22"},
        {{"on", "heat", "30", "low"}, "Heat_30_lo"},
        {{"on", "heat", "29", "low"}, "has no captured state for on heat 29 low; nearest: Heat_30_lo, Cool"},
        {{"on", "dry", "", "auto"}, "for on dry auto; nearest: Cool, Cool_22, Cool_hi"},
    };
    for (const auto& [request, says] : cases) {
        std::string found;
        const auto error =
            irtest::ErrorOf<std::invalid_argument>([&] { found = CAcStateTable::Find(codeset, request).frame.name; });
        EXPECT_TRUE(found == says || (found.empty() && error.find(says) != std::string::npos)) << found << error;
    }
}

}  // namespace
}  // namespace infrared
