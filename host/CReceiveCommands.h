// The commands that receive IR: `decode` prints what each frame of a file or device is;
// `learn` keeps a remote's key (two agreeing presses) or an air conditioner's protocol (one
// press) in a codesets file, through CKeyLearner. They need no plugin. Each returns the exit
// status (0 done, 1 a failure, 2 a mistake on the command line) after one line on `err` saying
// why; nothing is thrown. One thread.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "CCommandLine.h"
#include "CKeyLearner.h"
#include "infrared/decode/CFrameDecoder.h"
#include "infrared/receive/IReceiver.h"
#include "infrared/transmit/ILircDevice.h"

namespace ircontrol::host {

class CReceiveCommands {
public:
    // `device`: the seam a /dev/lircN receiver uses (nullptr: the real system calls).
    CReceiveCommands(const Options& options, std::ostream& out, std::ostream& err,
                     std::shared_ptr<infrared::ILircDevice> device = nullptr);
    int Decode();
    int Learn();

    static constexpr int kLearnWaitMs = 30000;  // for a press, unless --timeout says otherwise

private:
    int fail(const std::string& reason, int status);
    bool open(const std::string& source);
    bool load();
    void tell(const LearnJob& job, const LearnStep& step);  // learn's progress, printed
    void say(const std::string& line);
    void written(const std::string& key);  // --json: the closing object

    Options options_;
    std::ostream& out_;
    std::ostream& err_;
    std::shared_ptr<infrared::ILircDevice> device_;
    std::unique_ptr<infrared::IReceiver> receiver_;
    std::unique_ptr<infrared::CFrameDecoder> decoder_;
    std::string error_;
    int code_ = 0;  // learn: the key's code
};

}  // namespace ircontrol::host
