#pragma once
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include "foundation/Exception.h"

namespace test_support {

/// The body must raise exactly this class, from this location, in these words.
template <class Failure, class Body>
void ExpectFailure(Body&& body, const std::wstring& location, const std::wstring& words) {
    try {
        body();
    } catch (const vorlek::Exception& failure) {
        EXPECT_STREQ(typeid(Failure).name(), typeid(failure).name());
        EXPECT_EQ(location, failure.GetLocation());
        EXPECT_EQ(words, failure.GetMessage());
        return;
    }
    ADD_FAILURE() << "Nothing was raised";
}

} // namespace test_support
