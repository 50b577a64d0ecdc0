#include "plugin-link/ServicePort.h"

#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "tests/plugin-link/Throws.h"

namespace {

using plugin_link_tests::Thrown;
using vorlek::ServicePort;

const std::wstring kService = L"ServicePortTest";
const std::wstring kSection = L"Global\\59EB6F8B-7F42-4CB9-B741-ED434F426458_ServicePortTest";

} // namespace

TEST(ServicePort, IsReadAsPublished) {
    for (const std::uint16_t port : std::initializer_list<std::uint16_t>{0, 1, 0x1234, 65535}) {
        const ServicePort published(kService, port);
        EXPECT_EQ(ServicePort::Read(kService), port);
    }
}

TEST(ServicePort, StandsInTheNamedSectionLowByteFirst) {
    const ServicePort published(kService, 0x1234);
    const SharedMemory section(kSection, true);
    EXPECT_EQ(section.GetData()[0], 0x34);
    EXPECT_EQ(section.GetData()[1], 0x12);
}

TEST(ServicePort, IsReadFromASectionOfAnotherMaker) {
    const SharedMemory section(kSection, 2, 2, false);
    section.GetData()[0] = 0xFF;
    section.GetData()[1] = 0x01;
    EXPECT_EQ(ServicePort::Read(kService), 0x01FF);
}

TEST(ServicePort, IsNotHeldByItsReader) {
    {
        const ServicePort published(kService, 1);
        ServicePort::Read(kService);
    }
    const auto failure = Thrown<vorlek::Exception>([] { ServicePort::Read(kService); });
    EXPECT_EQ(failure.GetMessage(), L"OpenFileMapping failed with: 2");
    EXPECT_EQ(failure.GetLocation(), L"SharedMemory::Init");
}

TEST(ServicePort, IsPublishedByOneServiceOnly) {
    const ServicePort first(kService, 1);
    // Everyone may read the section but only the system may write, so others are refused before the name is.
    EXPECT_EQ(Thrown<vorlek::Exception>([] { ServicePort(kService, 2); }).GetMessage(),
              L"CreateFileMapping failed with: 5");
    EXPECT_EQ(ServicePort::Read(kService), 1);
}
