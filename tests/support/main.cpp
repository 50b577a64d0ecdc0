#include <gmock/gmock.h>

#include "tests/support/HangGuard.h"

int main(int argc, char** argv) {
    test_support::HangGuard guard;
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(guard.NewListener());
    return RUN_ALL_TESTS();
}
