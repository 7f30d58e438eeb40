#include "common/CRequest.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "common/CException.h"

namespace ircontrol {
namespace {

using Answers = std::vector<std::pair<std::string, std::string>>;

RequestSharedPtr Recording(Answers& answers) {
    return CRequest::Create(RequestType::Set, nullptr, [&answers](const std::string& code,
                                                                   const std::string& desc) {
        answers.emplace_back(code, desc);
    });
}

TEST(CRequestTest, EachResultMapsToItsTwoTexts) {
    const std::vector<std::pair<int, std::pair<std::string, std::string>>> table = {
        {0, {"ok", "a request has been processed successfully"}},
        {1, {"key_error", "a ir key event request got error"}},
        {2, {"device_error", "a device event request got error"}},
        {3, {"unknown", "unknown error occured"}},
        {7, {"unknown", "unknown error occured"}},
        {-1, {"unknown", "unknown error occured"}},
        {2147483647, {"unknown", "unknown error occured"}},
        {-2147483647 - 1, {"unknown", "unknown error occured"}},
    };
    for (const auto& [value, texts] : table) {
        Answers answers;
        Recording(answers)->SendResponse(static_cast<ResponseType>(value));
        ASSERT_EQ(answers.size(), 1u) << value;
        EXPECT_EQ(answers[0], texts) << value;
    }
}

TEST(CRequestTest, AnswersAgainWhenAskedTwice) {
    Answers answers;
    auto request = Recording(answers);
    request->SendResponse(Success);
    request->SendResponse(KeyEventError);
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_EQ(answers[1].first, "key_error");
    EXPECT_EQ(request->GetRequestType(), RequestType::Set);
}

TEST(CRequestTest, EmptyCallbackThrowsBadFunctionCall) {
    auto request = CRequest::Create(RequestType::Set, nullptr, nullptr);
    EXPECT_THROW(request->SendResponse(Success), std::bad_function_call);
}

TEST(CRequestTest, CallbackExceptionsPassThrough) {
    auto request = CRequest::Create(RequestType::Set, nullptr, [](const std::string&, const std::string&) {
        throw CException("host refused", 2);
    });
    EXPECT_THROW(request->SendResponse(Success), CException);
}

TEST(CRequestTest, DroppingAnUnansweredRequestAnswersNothing) {
    Answers answers;
    { auto request = Recording(answers); }
    EXPECT_TRUE(answers.empty());
}

}  // namespace
}  // namespace ircontrol
