#include "CException.h"

namespace ircontrol {

CException::CException(const std::string& message, int errorCode)
    : std::domain_error(message + "(error:" + std::to_string(errorCode) + ")"),
      message_(message),
      errorCode_(errorCode) {}

}  // namespace ircontrol
