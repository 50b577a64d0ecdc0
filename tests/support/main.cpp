#include <gmock/gmock.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/HangGuard.h"

int main(int argc, char** argv) {
    if (const auto status = test_support::PlayChildRole()) {
        return *status;
    }
    test_support::HangGuard guard;
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(guard.NewListener());
    return RUN_ALL_TESTS();
}
