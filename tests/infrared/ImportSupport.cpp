#include "ImportSupport.h"

namespace irtest {

std::shared_ptr<const infrared::CCodesetLibrary> Library(const std::vector<std::string>& codesets) {
    std::string text = "{\"codesets\":[";
    for (std::size_t i = 0; i < codesets.size(); ++i) text += (i > 0 ? "," : "") + codesets[i];
    return infrared::CCodesetLibrary::Parse(text + "]}");
}

}  // namespace irtest
