// The dry-run transmitter: appends each transmission to a text file as `pulse N` / `space N`
// lines (the format of lirc's mode2 and irsimreceive) after a `#` header line. Each block is
// preceded and followed by the frame's gap, so blocks decode on their own.
// Opening truncates the file; throws CTransmitError when it cannot be written.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "infrared/transmit/ITransmitter.h"

namespace infrared {

class CMode2Sink : public ITransmitter {
public:
    static constexpr int kEmitters = 32;  // as many as a transmitter mask can address

    explicit CMode2Sink(const std::string& path);

    std::chrono::microseconds Transmit(const Transmission& transmission) override;
    std::string Describe() const override { return "mode2:" + path_; }

private:
    struct FileCloser {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::string path_;
    std::unique_ptr<std::FILE, FileCloser> file_;
    unsigned count_ = 0;
};

}  // namespace infrared
