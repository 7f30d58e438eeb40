#include "common/CRequest.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

namespace ircontrol {
namespace {

using Answer = std::pair<std::string, std::string>;

// The host reads both texts letter for letter; any value outside the three results is "unknown".
TEST(CRequestTest, EachResultIsAnsweredWithItsTwoTexts) {
    const std::vector<std::pair<int, Answer>> table = {
        {0, {"ok", "a request has been processed successfully"}},
        {1, {"key_error", "a ir key event request got error"}},
        {2, {"device_error", "a device event request got error"}},
        {3, {"unknown", "unknown error occured"}},
    };
    for (const auto& [value, texts] : table) {
        std::vector<Answer> answers;
        auto request = CRequest::Create(RequestType::Set, nullptr, [&](const std::string& code,
                                                                        const std::string& desc) {
            answers.emplace_back(code, desc);
        });
        request->SendResponse(static_cast<ResponseType>(value));
        EXPECT_EQ(answers, std::vector<Answer>{texts}) << value;
    }
    auto unanswerable = CRequest::Create(RequestType::Set, nullptr, nullptr);
    EXPECT_THROW(unanswerable->SendResponse(Success), std::bad_function_call);
}

}  // namespace
}  // namespace ircontrol
