// The codesets the tools use when no --codesets file is given (simulator/codesets/default.json,
// embedded at build time).
#pragma once

namespace sim::ir {

const char* DefaultCodesetsText();

}  // namespace sim::ir
