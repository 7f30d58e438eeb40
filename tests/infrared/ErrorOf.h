// Test helper: the message of the error an action throws.
#pragma once

#include <string>

namespace irtest {

// The message of the `Error` that `action` throws, or "(no error)".
template <typename Error, typename Action>
std::string ErrorOf(Action&& action) {
    try {
        action();
    } catch (const Error& e) {
        return e.what();
    }
    return "(no error)";
}

}  // namespace irtest
