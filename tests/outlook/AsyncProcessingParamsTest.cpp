#include "agent/apps/outlook/AsyncProcessingParams.h"

#include <gtest/gtest.h>

namespace vorlek {
namespace {

TEST(AsyncProcessingParamsTest, HoldsWhatItWasGivenAndNoDecisionYet) {
    auto* const controller = reinterpret_cast<OutlookController*>(0x1234);
    CInspectorMessage message;
    const AsyncProcessingParams params(controller, L"ID-1", &message);
    EXPECT_EQ(params.GetController(), controller);
    EXPECT_EQ(params.GetItemId(), L"ID-1");
    EXPECT_EQ(params.GetInspectorMessage(), &message);
    EXPECT_EQ(params.GetDecision(), nullptr);
}

TEST(AsyncProcessingParamsTest, SharesTheDecisionAndLetsGoOfItAtTheEnd) {
    const auto decision = std::make_shared<InspectionDecision>(1);
    {
        AsyncProcessingParams params(nullptr, L"ID-1", nullptr);
        params.SetDecision(decision);
        EXPECT_EQ(params.GetDecision(), decision);
        EXPECT_EQ(decision.use_count(), 2);
    }
    EXPECT_EQ(decision.use_count(), 1);
}

TEST(AsyncProcessingParamsTest, LeavesTheMessageAlone) {
    CInspectorMessage message(L"Email");
    { const AsyncProcessingParams params(nullptr, L"ID-1", &message); }
    EXPECT_NE(message.GetFormattedMessage().find(L"Email"), std::wstring::npos);
}

TEST(AsyncProcessingParamsTest, IsKnownByItsNumberAsLongAsItLives) {
    WPARAM number = 0;
    {
        const AsyncProcessingParams params(nullptr, L"ID-1", nullptr);
        number = reinterpret_cast<WPARAM>(&params);
        EXPECT_EQ(AsyncProcessingParams::From(number), &params);
    }
    EXPECT_EQ(AsyncProcessingParams::From(number), nullptr);
    EXPECT_EQ(AsyncProcessingParams::From(0), nullptr);
}

} // namespace
} // namespace vorlek
