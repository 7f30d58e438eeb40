// The service's exception: a message and an error code. what() reads "<message>(error:<code>)".
// Codes: 2 IR interface/settings lookup/AC state/payload, 4 bad argument or text that is not
// JSON, 5 missing member/unsupported key/missing list/unnamed property, 6 unsupported device
// type, 8 failed settings-store call. The code never reaches the host.
#pragma once

#include <stdexcept>
#include <string>

namespace ircontrol {

class CException : public std::domain_error {
public:
    CException(const std::string& message, int errorCode);

    const std::string& GetMessage() const noexcept { return message_; }
    int GetErrorCode() const noexcept { return errorCode_; }

private:
    std::string message_;
    int errorCode_;
};

}  // namespace ircontrol
