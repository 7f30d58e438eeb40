// A Linux IR receiver (/dev/lircN) read in LIRC_MODE_MODE2: checked when opened (it can
// receive, the user may open it), its receive timeout set to end a capture where the driver
// allows, its carrier measured where it can. Samples are cut into captures by CCaptureBuilder;
// a capture also ends when the device stays silent for the builder's end space.
// Construction and Next() throw CReceiveError with a message for people (CReceiveOverflow when
// samples were lost, after which reading may go on); one thread at a time.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "infrared/receive/CCaptureBuilder.h"
#include "infrared/receive/IReceiver.h"
#include "infrared/transmit/ILircDevice.h"

namespace infrared {

// The receiver lost samples: the capture under way is gone, the next press can be read.
class CReceiveOverflow : public CReceiveError {
public:
    using CReceiveError::CReceiveError;
};

class CLircReceiver : public IReceiver {
public:
    CLircReceiver(const std::string& path, std::shared_ptr<ILircDevice> device);
    ~CLircReceiver() override;
    CLircReceiver(const CLircReceiver&) = delete;
    CLircReceiver& operator=(const CLircReceiver&) = delete;

    std::optional<Capture> Next(std::chrono::milliseconds timeout) override;
    std::string Describe() const override { return path_; }
    bool Live() const override { return true; }

    std::uint32_t TimeoutUs() const { return timeoutUs_; }  // what the driver was set to; 0: none
    bool MeasuresCarrier() const { return measuresCarrier_; }

private:
    void configure();
    void setTimeout();
    bool fill(int waitMs);  // false when nothing came in time
    std::optional<Capture> consume(std::uint32_t sample);

    std::string path_;
    std::shared_ptr<ILircDevice> device_;
    int fd_ = -1;
    std::uint32_t timeoutUs_ = 0;
    bool measuresCarrier_ = false;
    CCaptureBuilder builder_;
    std::deque<std::uint32_t> samples_;
};

}  // namespace infrared
