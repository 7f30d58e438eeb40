// Arbitrary text as one line of `ircontrol-host serve`: the request parser, then the payload it
// would send and the JSON the tool would print for it. serve lines come from clients: any crash,
// sanitizer report or escaped exception is a finding.
#include <cstddef>
#include <cstdint>
#include <string>

#include "CPlatformSetup.h"
#include "CResultJson.h"
#include "CRequestParser.h"
#include "CSession.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const ircontrol::host::CPlatformSetup setup;  // the tool's defaults, key maps included
    const ircontrol::host::CRequestParser parser(setup, ircontrol::host::CRequestParser::Style::Json);
    const std::string line(reinterpret_cast<const char*>(data), size);
    ircontrol::host::Request request;
    std::string error;
    if (parser.ParseLine(line, 1, request, error)) {
        const ircontrol::host::RequestResult result = ircontrol::host::CSession::Describe(request);
        const std::string json = ircontrol::host::CResultJson::Build(result).toString();
        if (json.empty()) __builtin_trap();
    } else if (error.empty()) {
        __builtin_trap();  // every refusal has a reason
    }
    return 0;
}
