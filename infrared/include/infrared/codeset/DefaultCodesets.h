// The codesets the tools use when no --codesets file is given (infrared/codesets/default.json,
// embedded at build time).
#pragma once

namespace infrared {

const char* DefaultCodesetsText();

}  // namespace infrared
