#include "foundation/ACL.h"

#include <gtest/gtest.h>

namespace {

const AACE kSystem(ACERights::GenericAll, ACESubject::LocalSystem);
const AACE kEveryone(ACERights::GenericRead, ACESubject::Everyone);

} // namespace

TEST(ACL, EntriesStandInOrderWithoutSeparators) {
    EXPECT_EQ(DACL({kSystem, kEveryone}).ToString(), L"D:(A;OICI;GA;;;SY)(A;OICI;GR;;;WD)");
    EXPECT_EQ(DACL({kEveryone, kSystem}).ToString(), L"D:(A;OICI;GR;;;WD)(A;OICI;GA;;;SY)");
    EXPECT_EQ(SACL({MACE(ACERights::NoWriteUp, ACESubject::LowIntegrity)}).ToString(), L"S:(ML;OICI;NW;;;LW)");
}

TEST(ACL, ProtectedListSaysSo) {
    EXPECT_EQ(DACL({kSystem}, true).ToString(), L"D:P(A;OICI;GA;;;SY)");
    EXPECT_EQ(SACL({MACE(ACERights::NoWriteUp, ACESubject::LowIntegrity)}, true).ToString(), L"S:P(ML;OICI;NW;;;LW)");
}

TEST(ACL, EmptyDiscretionaryListIsStillAList) {
    EXPECT_EQ(DACL().ToString(), L"D:");
    EXPECT_EQ(DACL({}, true).ToString(), L"D:P");
}

TEST(ACL, EmptySystemListIsNoTextAtAll) {
    EXPECT_EQ(SACL().ToString(), L"");
}
