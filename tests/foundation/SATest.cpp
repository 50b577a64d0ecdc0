#include "foundation/SA.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include "foundation/Exception.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/SecurityBytes.h"

using test_support::ReplacedImport;
using test_support::SecurityBytes;
using test_support::SecurityText;

TEST(SA, DescribesItselfToTheSystem) {
    SA attributes(DACL({AACE(ACERights::GenericAll, ACESubject::LocalSystem)}), false);
    const SECURITY_ATTRIBUTES* given = attributes.GetSecurityAttributes();
    EXPECT_EQ(given->nLength, 24U);
    EXPECT_FALSE(given->bInheritHandle);
    EXPECT_TRUE(IsValidSecurityDescriptor(given->lpSecurityDescriptor));
    EXPECT_EQ(SecurityBytes(given->lpSecurityDescriptor), SecurityBytes(L"D:(A;OICI;GA;;;SY)"));
}

TEST(SA, InheritanceOfTheHandleIsTheCallersChoice) {
    EXPECT_TRUE(SA(DACL(), true).GetSecurityAttributes()->bInheritHandle);
    EXPECT_TRUE(SA(DACL(), SACL(), true).GetSecurityAttributes()->bInheritHandle);
}

TEST(SA, BothListsReachTheDescriptor) {
    SA attributes(DACL({AACE(ACERights::GenericRead, ACESubject::Everyone)}, true),
                  SACL({MACE(ACERights::NoWriteUp, ACESubject::LowIntegrity)}), false);
    EXPECT_EQ(SecurityBytes(attributes.GetSecurityAttributes()->lpSecurityDescriptor),
              SecurityBytes(L"D:P(A;OICI;GR;;;WD)S:(ML;OICI;NW;;;LW)"));
}

TEST(SA, SystemGetsBothListsAsOneText) {
    std::wstring given;
    DWORD revision = 0;
    ReplacedImport<"ConvertStringSecurityDescriptorToSecurityDescriptorW",
                   decltype(ConvertStringSecurityDescriptorToSecurityDescriptorW)>
        convert([&](const wchar_t* text, DWORD asked, PSECURITY_DESCRIPTOR* descriptor, ULONG* size) {
            given = text;
            revision = asked;
            return convert.Original(text, asked, descriptor, size);
        });
    SA attributes(DACL({AACE(ACERights::GenericRead, ACESubject::Everyone)}, true),
                  SACL({MACE(ACERights::NoWriteUp, ACESubject::LowIntegrity)}), false);
    EXPECT_EQ(given, L"D:P(A;OICI;GR;;;WD)S:(ML;OICI;NW;;;LW)");
    EXPECT_EQ(revision, 1U);
    EXPECT_EQ(SecurityText(attributes.GetSecurityAttributes()->lpSecurityDescriptor), L"D:P(A;OICI;GR;;;WD)");
}

TEST(SA, GivesItsDescriptorBack) {
    std::vector<void*> freed;
    ReplacedImport<"LocalFree", decltype(LocalFree)> release([&](HLOCAL memory) {
        freed.push_back(memory);
        return release.Original(memory);
    });
    void* descriptor = nullptr;
    {
        SA attributes(DACL(), false);
        descriptor = attributes.GetSecurityAttributes()->lpSecurityDescriptor;
    }
    EXPECT_EQ(freed, std::vector<void*>{descriptor});
}

TEST(SA, ListThatTheSystemCannotHoldRaises) {
    const std::vector<ACE> tooMany(4000, AACE(ACERights::GenericRead, ACESubject::Everyone)); // over 64 KB
    try {
        SA attributes(DACL(tooMany), false);
        FAIL();
    } catch (const vorlek::Exception& failure) {
        EXPECT_EQ(failure.GetLocation(), L"SA::Init");
        EXPECT_EQ(failure.GetMessage(), L"ConvertStringSecurityDescriptorToSecurityDescriptor failed with:1336");
    }
}

TEST(SA, EntryThatHasNoTextRaises) {
    EXPECT_THROW(SA(DACL({AACE(static_cast<ACERights>(6), ACESubject::Everyone)}), false), vorlek::Exception);
}
