#include "infrared/encode/CLircdEncoder.h"

#include <algorithm>

namespace infrared {
namespace {

// Collects pulses and spaces as lircd's send buffer does: neighbours of the same kind merge and
// a leading space is dropped.
class Buffer {
public:
    void Pulse(std::uint32_t us) { add(true, us); }
    void Space(std::uint32_t us) { add(false, us); }
    std::uint64_t Sum() const { return sum_; }
    // Ends the signal: a trailing space leaves the durations and becomes part of the gap.
    std::uint32_t TakeTrailingSpace() {
        if (durations_.empty() || pulse_) return 0;
        const std::uint32_t space = durations_.back();
        durations_.pop_back();
        pulse_ = true;
        return space;
    }
    std::vector<std::uint32_t>& Durations() { return durations_; }

private:
    void add(bool pulse, std::uint32_t us) {
        if (us == 0 || (!pulse && durations_.empty())) return;
        sum_ += us;
        if (!durations_.empty() && pulse == pulse_) {
            durations_.back() += us;
        } else {
            durations_.push_back(us);
            pulse_ = pulse;
        }
    }

    std::vector<std::uint32_t> durations_;
    bool pulse_ = false;
    std::uint64_t sum_ = 0;
};

std::uint64_t Reverse(std::uint64_t value, std::uint32_t bits) {
    std::uint64_t out = 0;
    for (std::uint32_t i = 0; i < bits; ++i, value >>= 1) out = (out << 1) | (value & 1);
    return out;
}

// `done`: bits of the whole code (pre_data, data, post_data) already sent; rc6_mask counts
// over the whole code from its most significant bit.
void Data(const LircRemote& r, Buffer& out, std::uint64_t value, std::uint32_t bits, std::uint32_t done) {
    if (r.reverse) value = Reverse(value, bits);
    const bool biphase = r.encoding == LircRemote::Encoding::Rc5 || r.encoding == LircRemote::Encoding::Rc6;
    for (std::uint32_t i = 0; i < bits; ++i) {
        const bool one = ((value >> (bits - 1 - i)) & 1) != 0;
        const std::uint32_t position = r.AllBits() - 1 - (done + i);
        const std::uint32_t scale = position < 64 && ((r.rc6Mask >> position) & 1) != 0 ? 2 : 1;
        const LircPair& p = one ? r.one : r.zero;
        if (biphase && one) {
            out.Space(p.space * scale);
            out.Pulse(p.pulse * scale);
        } else {
            out.Pulse(p.pulse * scale);
            out.Space(p.space * scale);
        }
    }
}

void Code(const LircRemote& r, Buffer& out, std::uint64_t code, bool repeat) {
    if (repeat && r.repeat.Set()) {
        if (r.repeatHeader) {
            out.Pulse(r.header.pulse);
            out.Space(r.header.space);
        }
        out.Pulse(r.plead);
        out.Pulse(r.repeat.pulse);
        out.Space(r.repeat.space);
        out.Pulse(r.ptrail);
        return;
    }
    if (!(repeat && r.noHeadRep)) {
        out.Pulse(r.header.pulse);
        out.Space(r.header.space);
    }
    out.Pulse(r.plead);
    Data(r, out, r.preData, r.preDataBits, 0);
    out.Pulse(r.pre.pulse);
    out.Space(r.pre.space);
    Data(r, out, code, r.bits, r.preDataBits);
    out.Pulse(r.post.pulse);
    out.Space(r.post.space);
    Data(r, out, r.postData, r.postDataBits, r.preDataBits + r.bits);
    out.Pulse(r.ptrail);
    if (!(repeat && r.noFootRep)) {
        out.Space(r.foot.space);
        out.Pulse(r.foot.pulse);
    }
}

// The silence after a signal of `length` µs (without its trailing `space`): lircd adds the gap to
// that space, or with CONST_LENGTH pads the signal up to the gap.
std::uint32_t Silence(const LircRemote& r, std::uint64_t wait, std::uint64_t length, std::uint32_t space) {
    std::uint64_t total = space + wait;
    if (r.constLength) total = wait > length ? wait - length : space;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(std::max<std::uint64_t>(total, space), 10000000));
}

}  // namespace

PulseTrain CLircdEncoder::Encode(const LircRemote& remote, const LircButton& button) {
    PulseTrain train;
    train.carrier = remote.frequency;
    train.dutyCycle = remote.dutyCycle;
    Buffer out;
    const std::uint32_t gap = remote.gap != 0 ? remote.gap : kDefaultGap;
    const std::size_t signals = remote.encoding == LircRemote::Encoding::Raw ? 1 : button.codes.size();
    std::uint64_t start = 0;
    for (std::uint32_t copy = 0; copy <= remote.minRepeat; ++copy) {
        for (std::size_t s = 0; s < signals; ++s) {
            if (out.Sum() > 0) {
                // The silence after the previous signal, then this one.
                const std::uint32_t space = out.TakeTrailingSpace();
                const std::uint64_t length = out.Sum() - space - start;
                const std::uint64_t wait = copy > 0 && remote.repeatGap != 0 ? remote.repeatGap : gap;
                out.Space(Silence(remote, wait, length, space));
                start = out.Sum();
            }
            if (remote.encoding == LircRemote::Encoding::Raw) {
                for (std::size_t i = 0; i < button.durations.size(); ++i) {
                    (i % 2 == 0) ? out.Pulse(button.durations[i]) : out.Space(button.durations[i]);
                }
            } else {
                Code(remote, out, button.codes[s], copy > 0);
            }
        }
    }
    const std::uint32_t space = out.TakeTrailingSpace();
    const std::uint64_t length = out.Sum() - space - start;
    train.trailingGap = Silence(remote, gap, length, space);
    train.durations = std::move(out.Durations());
    return train;
}

}  // namespace infrared
