#include "Nearest.h"

#include <algorithm>

namespace ircontrol::host {
namespace {

std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) d[i][0] = i;
    for (std::size_t j = 0; j <= b.size(); ++j) d[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        for (std::size_t j = 1; j <= b.size(); ++j) {
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
            }
        }
    }
    return d[a.size()][b.size()];
}

}  // namespace

std::string Nearest(const std::string& name, const std::vector<std::string>& candidates) {
    std::string best;
    std::size_t bestDistance = std::max<std::size_t>(2, name.size() / 3) + 1;
    for (const auto& candidate : candidates) {
        const std::size_t d = Distance(name, candidate);
        if (d < bestDistance) {
            best = candidate;
            bestDistance = d;
        }
    }
    return best;
}

}  // namespace ircontrol::host
