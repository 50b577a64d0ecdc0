#include "foundation/Brand.h"

#include <gtest/gtest.h>

using namespace vorlek;

TEST(Brand, NamesAreSpelledAsTheProductIs) {
    EXPECT_STREQ(GetBrandString(BrandString::Product), L"Vorlek");
    EXPECT_STREQ(GetBrandString(BrandString::Trademark), L"MOLTREX");
}

TEST(Brand, ProductIsKnownInAnyLetterCase) {
    EXPECT_TRUE(IsProductName(L"Vorlek"));
    EXPECT_TRUE(IsProductName(L"VORLEK"));
    EXPECT_FALSE(IsProductName(L"MOLTREX"));
    EXPECT_FALSE(IsProductName(L"Vorlek "));
    EXPECT_FALSE(IsProductName(L""));
}

TEST(Brand, EitherNameIsABrand) {
    EXPECT_TRUE(IsBrandName(L"vorlek"));
    EXPECT_TRUE(IsBrandName(L"Moltrex"));
    EXPECT_FALSE(IsBrandName(L"Outlook"));
    EXPECT_FALSE(IsBrandName(L""));
}
