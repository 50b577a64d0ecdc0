#include "foundation/ACE.h"

#include <gtest/gtest.h>

#include "foundation/Exception.h"
#include "tests/support/SecurityBytes.h"

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

/// An entry as the system holds it.
struct SystemEntry {
    BYTE type;
    BYTE flags;
    DWORD rights;
    std::vector<BYTE> subject;
    bool operator==(const SystemEntry&) const = default;
};

constexpr BYTE kInherited = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE;

std::vector<BYTE> SidBytes_(PSID sid) {
    const auto* bytes = static_cast<const BYTE*>(sid);
    return {bytes, bytes + GetLengthSid(sid)};
}

std::vector<BYTE> WellKnown_(WELL_KNOWN_SID_TYPE type) {
    std::vector<BYTE> sid(SECURITY_MAX_SID_SIZE);
    auto size = static_cast<DWORD>(sid.size());
    EXPECT_TRUE(CreateWellKnownSid(type, nullptr, sid.data(), &size));
    sid.resize(size);
    return sid;
}

/// What the system's own conversion makes of the one entry of a list.
SystemEntry Converted_(const std::wstring& list) {
    std::vector<BYTE> descriptor = test_support::SecurityBytes(list);
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* entries = nullptr;
    const auto get = list.starts_with(L'D') ? GetSecurityDescriptorDacl : GetSecurityDescriptorSacl;
    EXPECT_TRUE(get(descriptor.data(), &present, &entries, &defaulted));
    ACCESS_ALLOWED_ACE* entry = nullptr; // all kinds used here have this shape
    EXPECT_TRUE(GetAce(entries, 0, reinterpret_cast<void**>(&entry)));
    return {entry->Header.AceType, entry->Header.AceFlags, entry->Mask, SidBytes_(&entry->SidStart)};
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

TEST(ACE, SystemReadsEveryTypeAsWhatItIs) {
    const std::vector<BYTE> everyone = WellKnown_(WinWorldSid);
    EXPECT_EQ(Converted_(L"D:" + Words_(0, 0, 4)),
              (SystemEntry{ACCESS_ALLOWED_ACE_TYPE, kInherited, GENERIC_ALL, everyone}));
    EXPECT_EQ(Converted_(L"D:" + Words_(1, 0, 4)),
              (SystemEntry{ACCESS_DENIED_ACE_TYPE, kInherited, GENERIC_ALL, everyone}));
    EXPECT_EQ(Converted_(L"S:" + Words_(2, 5, 6)),
              (SystemEntry{SYSTEM_MANDATORY_LABEL_ACE_TYPE, kInherited, SYSTEM_MANDATORY_LABEL_NO_WRITE_UP,
                           WellKnown_(WinLowLabelSid)}));
}

TEST(ACE, SystemReadsEveryRightAsWhatItIs) {
    const DWORD rights[] = {GENERIC_ALL, GENERIC_READ, GENERIC_WRITE, GENERIC_EXECUTE,
                            GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE};
    for (int number = 0; number < 5; ++number) {
        EXPECT_EQ(Converted_(L"D:" + Words_(0, number, 4)).rights, rights[number]) << number;
    }
}

TEST(ACE, SystemReadsEverySubjectAsWhoItIs) {
    const WELL_KNOWN_SID_TYPE subjects[] = {WinAuthenticatedUserSid, WinBuiltinUsersSid, WinBuiltinAdministratorsSid,
                                            WinLocalSystemSid,       WinWorldSid,        WinRestrictedCodeSid};
    for (int number = 0; number < 6; ++number) {
        EXPECT_EQ(Converted_(L"D:" + Words_(0, 0, number)).subject, WellKnown_(subjects[number])) << number;
    }
}
