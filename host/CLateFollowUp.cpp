#include "CLateFollowUp.h"

namespace ircontrol::host {

void CLateFollowUp::Follow(const RequestResult& result, uint64_t tag) {
    if (result.outcome != Outcome::NoAnswer || result.transaction == 0) return;
    pending_.push_back({result, tag, 0});
}

void CLateFollowUp::Look(std::chrono::milliseconds wait, const Late& late) {
    for (auto it = pending_.begin(); it != pending_.end();) {
        const std::size_t known = it->result.transmissions.size();
        if (session_.Refresh(it->result, wait)) late(it->tag, it->result, known);
        ++it->looks;
        const bool givenUp = maxLooks_ != 0 && it->looks >= maxLooks_;
        it = it->result.answer || givenUp ? pending_.erase(it) : it + 1;
    }
}

}  // namespace ircontrol::host
