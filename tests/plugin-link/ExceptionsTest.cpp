#include "plugin-link/Exceptions.h"

#include <type_traits>

#include <gtest/gtest.h>

namespace {

template <class Failure>
class LinkExceptions : public testing::Test {};

using Failures =
    testing::Types<vorlek::CInspectorMessageXmlException, vorlek::CInspectorMessageException,
                   vorlek::DataAccessChannelsMessageFormatException, vorlek::RemoteException,
                   vorlek::ConnectionTerminatedException, vorlek::PluginUtils::PluginManagerConnectionException,
                   vorlek::PluginUtils::PluginManagerFormatException>;
TYPED_TEST_SUITE(LinkExceptions, Failures);

template <class Failure>
std::wstring NameOf() {
    const Failure failure(L"File.cpp", 7, L"vorlek::Place", L"words");
    const vorlek::Exception& root = failure;
    EXPECT_EQ(root.ToString(), L"File.cpp(7): vorlek::Place: " + root.GetExceptionName() + L": words");
    return root.GetExceptionName();
}

} // namespace

TYPED_TEST(LinkExceptions, DeriveFromTheRootAndStayApart) {
    static_assert(std::is_base_of_v<vorlek::Exception, TypeParam>);
    static_assert(!std::is_base_of_v<vorlek::IOException, TypeParam>);
    EXPECT_THROW(throw TypeParam(L"f", 1, L"l", L"m"), vorlek::Exception);
}

TEST(LinkExceptionNames, AreTheShortOnes) {
    EXPECT_EQ(NameOf<vorlek::CInspectorMessageXmlException>(), L"CInspectorMessageXmlException");
    EXPECT_EQ(NameOf<vorlek::CInspectorMessageException>(), L"CInspectorMessageException");
    EXPECT_EQ(NameOf<vorlek::DataAccessChannelsMessageFormatException>(), L"DataAccessChannelsMessageFormatException");
    EXPECT_EQ(NameOf<vorlek::RemoteException>(), L"RemoteException");
    EXPECT_EQ(NameOf<vorlek::ConnectionTerminatedException>(), L"ConnectionTerminatedException");
    EXPECT_EQ(NameOf<vorlek::PluginUtils::PluginManagerConnectionException>(), L"PluginManagerConnectionException");
    EXPECT_EQ(NameOf<vorlek::PluginUtils::PluginManagerFormatException>(), L"PluginManagerFormatException");
}
