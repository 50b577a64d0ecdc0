#include <gmock/gmock.h>
#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include "tests/support/ChildProcess.h"
#include "tests/support/HangGuard.h"

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff()); // what a test wants to see, it captures
    if (const auto status = test_support::PlayChildRole()) {
        return *status;
    }
    test_support::HangGuard guard;
    testing::InitGoogleMock(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(guard.NewListener());
    return RUN_ALL_TESTS();
}
