// Reads an air-conditioner codeset's frame description (timing, sections, frame fields,
// checksums) and checks it as a whole: every slot inside the frame, every value inside its
// mask, every section inside the bytes. Throws std::invalid_argument naming the member.
#pragma once

#include <string>

#include "JsonValue.h"
#include "infrared/codeset/Codeset.h"

namespace infrared {

class CAcFormatReader {
public:
    static AcFrameFormat Read(const common::json::JsonValue& entry, const std::string& path);
};

}  // namespace infrared
