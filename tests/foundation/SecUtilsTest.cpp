#include "foundation/SecUtils.h"

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>

#include "foundation/Exception.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ProgramOnXp.h"
#include "tests/support/ReplacedImport.h"
#include "tests/support/SecurityBytes.h"
#include "tests/support/TemporaryFolder.h"

using test_support::ReplacedImport;
using test_support::SecurityBytes;
using test_support::SecurityText;
using test_support::TemporaryFolder;

namespace {

std::vector<BYTE> Generated_(std::uint32_t kind) {
    return SecurityBytes(SecUtils::GenSA(kind)->GetSecurityAttributes()->lpSecurityDescriptor);
}

template <class Action>
std::wstring Words_(const Action& action) {
    try {
        action();
        return L"nothing raised";
    } catch (const vorlek::Exception& failure) {
        return failure.GetExceptionName() + L": " + failure.GetLocation() + L": " + failure.GetMessage();
    }
}

std::wstring KindThree_(const std::wstring& /*argument*/) {
    const std::vector<BYTE> bytes = Generated_(3);
    return {bytes.begin(), bytes.end()};
}

const test_support::ChildRoleName kindThree(L"KindThree", KindThree_);

/// The text of a kind as the system is given it, and the system's own text of what came of it.
std::pair<std::wstring, std::wstring> Texts_(std::uint32_t kind) {
    std::wstring given;
    ReplacedImport<"ConvertStringSecurityDescriptorToSecurityDescriptorW",
                   decltype(ConvertStringSecurityDescriptorToSecurityDescriptorW)>
        convert([&](const wchar_t* text, DWORD revision, PSECURITY_DESCRIPTOR* descriptor, ULONG* size) {
            given = text;
            return convert.Original(text, revision, descriptor, size);
        });
    return {given, SecurityText(SecUtils::GenSA(kind)->GetSecurityAttributes()->lpSecurityDescriptor)};
}

/// Whether an entry of the object's list lets everyone write.
bool EveryoneMayWrite_(const std::filesystem::path& path) {
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr,
                          &descriptor);
    bool mayWrite = false;
    for (DWORD index = 0; index < list->AceCount; ++index) {
        ACCESS_ALLOWED_ACE* entry = nullptr;
        GetAce(list, index, reinterpret_cast<void**>(&entry));
        mayWrite |= IsWellKnownSid(&entry->SidStart, WinWorldSid) && (entry->Mask & FILE_WRITE_DATA) != 0;
    }
    LocalFree(descriptor);
    return mayWrite;
}

} // namespace

TEST(SecUtils, KindZeroIsAnEmptyList) {
    EXPECT_EQ(Generated_(0), SecurityBytes(L"D:"));
}

TEST(SecUtils, KindOneLetsSignedInUsersWork) {
    EXPECT_EQ(Generated_(1), SecurityBytes(L"D:(A;OICI;GRGWGX;;;AU)(A;OICI;GA;;;BU)"));
}

TEST(SecUtils, KindTwoLetsEveryoneRead) {
    EXPECT_EQ(Generated_(2), SecurityBytes(L"D:(A;OICI;GA;;;SY)(A;OICI;GR;;;WD)(A;OICI;GR;;;RC)"));
}

TEST(SecUtils, KindThreeOpensToLowIntegrity) {
    EXPECT_EQ(Generated_(3), SecurityBytes(L"D:(A;OICI;GA;;;WD)(A;OICI;GA;;;RC)S:(ML;OICI;NW;;;LW)"));
}

TEST(SecUtils, KindThreeHasNoLabelBelowVista) {
    const test_support::ProgramOnXp program;
    const std::wstring result = test_support::ChildProcess(L"KindThree", L"", program.Path()).Result();
    EXPECT_EQ(std::vector<BYTE>(result.begin(), result.end()), SecurityBytes(L"D:(A;OICI;GA;;;WD)(A;OICI;GA;;;RC)"));
}

TEST(SecUtils, EveryKindIsRenderedAndComesBackFromTheSystem) {
    using Texts = std::pair<std::wstring, std::wstring>;
    EXPECT_EQ(Texts_(0), (Texts{L"D:", L"D:"}));
    // The system has an order of its own for the rights of an entry.
    EXPECT_EQ(Texts_(1), (Texts{L"D:(A;OICI;GRGWGX;;;AU)(A;OICI;GA;;;BU)", L"D:(A;OICI;GXGWGR;;;AU)(A;OICI;GA;;;BU)"}));
    const std::wstring two = L"D:(A;OICI;GA;;;SY)(A;OICI;GR;;;WD)(A;OICI;GR;;;RC)";
    EXPECT_EQ(Texts_(2), (Texts{two, two}));
    const std::wstring three = L"D:(A;OICI;GA;;;WD)(A;OICI;GA;;;RC)";
    EXPECT_EQ(Texts_(3), (Texts{three + L"S:(ML;OICI;NW;;;LW)", three}));
}

TEST(SecUtils, NoKindInheritsHandles) {
    for (std::uint32_t kind = 0; kind <= 3; ++kind) {
        EXPECT_FALSE(SecUtils::GenSA(kind)->GetSecurityAttributes()->bInheritHandle);
    }
}

TEST(SecUtils, UnknownKindRaises) {
    EXPECT_EQ(Words_([] { SecUtils::GenSA(4); }), L"Exception: SecUtils::GenSA: Unsupported SA type: 4");
    EXPECT_EQ(Words_([] { SecUtils::GenSA(4294967295); }),
              L"Exception: SecUtils::GenSA: Unsupported SA type: 4294967295");
}

TEST(SecUtils, ObjectGetsTheListOfTheAttributes) {
    const TemporaryFolder folder;
    SecUtils::SetObjectSecurity(SE_FILE_OBJECT, folder.Path(), *SecUtils::GenSA(3));
    EXPECT_TRUE(EveryoneMayWrite_(folder.Path()));
    SecUtils::SetObjectSecurity(SE_FILE_OBJECT, folder.Path(), *SecUtils::GenSA(2));
    EXPECT_FALSE(EveryoneMayWrite_(folder.Path()));
    SecUtils::SetObjectSecurity(SE_FILE_OBJECT, folder.Path(), *SecUtils::GenSA(3));
    EXPECT_TRUE(EveryoneMayWrite_(folder.Path()));
}

TEST(SecUtils, NothingButTheListOfAnObjectIsSet) {
    const auto attributes = SecUtils::GenSA(3);
    ReplacedImport<"SetNamedSecurityInfoW", decltype(SetNamedSecurityInfoW)> set(
        [&](wchar_t* name, SE_OBJECT_TYPE type, SECURITY_INFORMATION what, PSID owner, PSID group, ACL* dacl,
            ACL* sacl) {
            EXPECT_STREQ(name, L"name");
            EXPECT_EQ(type, SE_KERNEL_OBJECT);
            EXPECT_EQ(what, 4U);
            EXPECT_EQ(owner, nullptr);
            EXPECT_EQ(group, nullptr);
            EXPECT_EQ(sacl, nullptr);
            BOOL present = FALSE;
            BOOL defaulted = FALSE;
            ACL* own = nullptr;
            GetSecurityDescriptorDacl(attributes->GetSecurityAttributes()->lpSecurityDescriptor, &present, &own,
                                      &defaulted);
            EXPECT_EQ(dacl, own);
            return DWORD{ERROR_SUCCESS};
        });
    SecUtils::SetObjectSecurity(SE_KERNEL_OBJECT, L"name", *attributes);
    EXPECT_EQ(set.Calls(), 1);
}

TEST(SecUtils, MissingObjectRaisesNotFound) {
    const TemporaryFolder folder;
    EXPECT_EQ(Words_([&] { SecUtils::SetObjectSecurity(SE_FILE_OBJECT, folder / L"missing", *SecUtils::GenSA(1)); }),
              L"FileNotFoundException: SecUtils::SetObjectSecurity: SetNamedSecurityInfoW failed with: 2");
}

TEST(SecUtils, AnyOtherFailureRaisesException) {
    const TemporaryFolder folder;
    EXPECT_EQ(
        Words_([&] { SecUtils::SetObjectSecurity(SE_FILE_OBJECT, folder / L"missing\\file", *SecUtils::GenSA(1)); }),
        L"Exception: SecUtils::SetObjectSecurity: SetNamedSecurityInfoW failed with: 3");
}

TEST(SecUtils, AttributesWithoutAListRaise) {
    const TemporaryFolder folder;
    const auto attributes = SecUtils::GenSA(1);
    PSECURITY_DESCRIPTOR& given = attributes->GetSecurityAttributes()->lpSecurityDescriptor;
    const PSECURITY_DESCRIPTOR own = given;
    SECURITY_DESCRIPTOR bare;
    InitializeSecurityDescriptor(&bare, SECURITY_DESCRIPTOR_REVISION);
    given = &bare;
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(Words_([&] { SecUtils::SetObjectSecurity(SE_FILE_OBJECT, folder.Path(), *attributes); }),
              L"Exception: SecUtils::SetObjectSecurity: GetSecurityDescriptorDacl failed with: 0");
    bare.Revision = 9;
    EXPECT_EQ(Words_([&] { SecUtils::SetObjectSecurity(SE_FILE_OBJECT, folder.Path(), *attributes); }),
              L"Exception: SecUtils::SetObjectSecurity: GetSecurityDescriptorDacl failed with: 1305");
    given = own;
}
