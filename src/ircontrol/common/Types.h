// Small shared types of the request path.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace ircontrol {

class CRequest;

using PropertyName = std::string;
using RequestSharedPtr = std::shared_ptr<CRequest>;
// The unit of work of the message queue; may be empty.
using ThreadJob = std::function<void()>;

}  // namespace ircontrol
