#include "foundation/ACE.h"

#include <gtest/gtest.h>

#include "foundation/Exception.h"

namespace {

template <class Number>
Number Numbered_(int number) {
    return static_cast<Number>(number);
}

std::wstring Words_(int type, int rights, int subject) {
    try {
        return ACE(Numbered_<ACEType>(type), Numbered_<ACERights>(rights), Numbered_<ACESubject>(subject)).ToString();
    } catch (const vorlek::Exception& failure) {
        return failure.GetExceptionName() + L": " + failure.GetLocation() + L": " + failure.GetMessage();
    }
}

} // namespace

TEST(ACE, EveryTypeHasItsText) {
    EXPECT_EQ(Words_(0, 0, 0), L"(A;OICI;GA;;;AU)");
    EXPECT_EQ(Words_(1, 0, 0), L"(D;OICI;GA;;;AU)");
    EXPECT_EQ(Words_(2, 0, 0), L"(ML;OICI;GA;;;AU)");
    EXPECT_EQ(Words_(3, 0, 0), L"Exception: ACE::ToString: Unsupported ACE type: 3");
}

TEST(ACE, EveryRightHasItsText) {
    EXPECT_EQ(Words_(0, 1, 0), L"(A;OICI;GR;;;AU)");
    EXPECT_EQ(Words_(0, 2, 0), L"(A;OICI;GW;;;AU)");
    EXPECT_EQ(Words_(0, 3, 0), L"(A;OICI;GX;;;AU)");
    EXPECT_EQ(Words_(0, 4, 0), L"(A;OICI;GRGWGX;;;AU)");
    EXPECT_EQ(Words_(0, 5, 0), L"(A;OICI;NW;;;AU)");
    EXPECT_EQ(Words_(0, 6, 0), L"Exception: ACE::ToString: Unsupported access right: 6");
}

TEST(ACE, EverySubjectHasItsText) {
    EXPECT_EQ(Words_(0, 0, 1), L"(A;OICI;GA;;;BU)");
    EXPECT_EQ(Words_(0, 0, 2), L"(A;OICI;GA;;;BA)");
    EXPECT_EQ(Words_(0, 0, 3), L"(A;OICI;GA;;;SY)");
    EXPECT_EQ(Words_(0, 0, 4), L"(A;OICI;GA;;;WD)");
    EXPECT_EQ(Words_(0, 0, 5), L"(A;OICI;GA;;;RC)");
    EXPECT_EQ(Words_(0, 0, 6), L"(A;OICI;GA;;;LW)");
    EXPECT_EQ(Words_(0, 0, 7), L"Exception: ACE::ToString: Unsupported subject: 7");
}

TEST(ACE, AllowAndMandatoryEntriesSetTheirType) {
    EXPECT_EQ(AACE(ACERights::GenericReadWriteExecute, ACESubject::AuthenticatedUsers).ToString(),
              L"(A;OICI;GRGWGX;;;AU)");
    EXPECT_EQ(MACE(ACERights::NoWriteUp, ACESubject::LowIntegrity).ToString(), L"(ML;OICI;NW;;;LW)");
}
