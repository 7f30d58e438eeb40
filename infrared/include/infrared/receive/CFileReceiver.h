// Captures recorded in a file, handed out one by one: lirc mode2 text, Pronto hex, or the raw
// signals of a Flipper .ir file, told apart by their first line. The whole file is read and checked when opened.
// Construction throws CReceiveError ("file:line: reason" for a bad line); Next() never throws.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "infrared/receive/IReceiver.h"

namespace infrared {

class CFileReceiver : public IReceiver {
public:
    static constexpr std::size_t kMaxBytes = 16u << 20;  // far above any recording of presses

    explicit CFileReceiver(const std::string& path);
    // The same from a text already in memory; `name` stands for the file in messages.
    CFileReceiver(const std::string& text, const std::string& name);

    std::optional<Capture> Next(std::chrono::milliseconds timeout) override;
    std::string Describe() const override { return name_; }
    bool Live() const override { return false; }

private:
    void parse(const std::string& text);

    std::string name_;
    std::vector<Capture> captures_;
    std::size_t next_ = 0;
};

}  // namespace infrared
