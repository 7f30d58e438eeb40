// Hints for a mistyped name ("kye" -> "key"), shared by the command line and the request parser.
// Stateless; throws nothing.
#pragma once

#include <string>
#include <vector>

namespace ircontrol::host {

// The candidate closest to `name` by edit distance (a swap of neighbours counting as one edit),
// "" if none is close enough to be meant.
std::string Nearest(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace ircontrol::host
