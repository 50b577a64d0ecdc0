#include "platform/atl/statreg.h"

#include <gtest/gtest.h>

#include "platform/atl/atlbase.h"
#include "tests/support/RegistryDump.h"

namespace {

using ATL::CRegObject;
using test_support::DumpRegistry;
using test_support::RemoveRegistryKey;

/// Each test writes under a key of its own name.
class Registrar : public testing::Test {
protected:
    Registrar() { RemoveRegistryKey(HKEY_CURRENT_USER, path_); }
    ~Registrar() override { RemoveRegistryKey(HKEY_CURRENT_USER, path_); }

    /// A script with these entries inside the test's key.
    std::wstring Script(const std::wstring& entries) const {
        return L"HKCU\n{\n NoRemove Software { NoRemove " + name_ + L" {\n" + entries + L"\n} } }\n";
    }
    HRESULT Register(const std::wstring& entries) const { return registrar_.StringRegister(Script(entries)); }
    HRESULT Unregister(const std::wstring& entries) const { return registrar_.StringUnregister(Script(entries)); }
    std::wstring Dump() const { return DumpRegistry(HKEY_CURRENT_USER, path_); }

    const std::wstring name_ = [] {
        const std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
        std::wstring name = L"RegistrarTest.";
        for (const char letter : test) {
            name += letter == '/' ? L'.' : static_cast<wchar_t>(letter);
        }
        return name;
    }();
    const std::wstring path_ = L"Software\\" + name_;
    CRegObject registrar_;
};

TEST_F(Registrar, WritesKeysAndValuesOfEveryType) {
    EXPECT_EQ(Register(LR"(
        Plain
        Text = s 'Connect Class' { val Named = s Apartment }
        Numbers { val Decimal = d 4294967295 val Hex = d 0x1F val Basic = d &H10 }
        'With blanks' { val 'It''s' = s '' val Bytes = b 00fF }
        {F7A9E3A1-9D13-4D56-933D-5E5D798CB042} = s '{}'
    )"),
              S_OK);
    EXPECT_EQ(Dump(), L"[]\n"
                      L"[Numbers]\n"
                      L"Basic = d 16\n"
                      L"Decimal = d 4294967295\n"
                      L"Hex = d 31\n"
                      L"[Plain]\n"
                      L"[Text]\n"
                      L"@ = s Connect Class\n"
                      L"Named = s Apartment\n"
                      L"[With blanks]\n"
                      L"Bytes = b 00ff\n"
                      L"It's = s \n"
                      L"[{F7A9E3A1-9D13-4D56-933D-5E5D798CB042}]\n"
                      L"@ = s {}\n");
}

TEST_F(Registrar, SecondRunLeavesTheSameKeys) {
    const std::wstring entries = L"A = s 'x' { B { val C = d 1 } }";
    ASSERT_EQ(Register(entries), S_OK);
    const std::wstring once = Dump();
    EXPECT_EQ(Register(entries), S_OK);
    EXPECT_EQ(Dump(), once);
}

TEST_F(Registrar, RemovalLeavesNothingOfWhatWasWritten) {
    const std::wstring entries = L"A = s 'x' { B { val C = d 1 } ForceRemove D } E";
    ASSERT_EQ(Register(entries), S_OK);
    EXPECT_EQ(Unregister(entries), S_OK);
    EXPECT_EQ(Dump(), L"[]\n");
}

TEST_F(Registrar, RemovalOfWhatIsAbsentIsNoFailure) {
    EXPECT_EQ(Unregister(L"A = s 'x' { B { val C = d 1 } ForceRemove D } val E = s 'x'"), S_OK);
    EXPECT_EQ(Dump(), L"");
}

TEST_F(Registrar, NoRemoveKeepsTheKeyAndItsDefaultValue) {
    const std::wstring entries = L"NoRemove A = s 'x' { val Gone = s 'y' NoRemove val Kept = s 'z' B }";
    ASSERT_EQ(Register(entries), S_OK);
    EXPECT_EQ(Unregister(entries), S_OK);
    EXPECT_EQ(Dump(), L"[]\n[A]\n@ = s x\nKept = s z\n");
}

TEST_F(Registrar, RemovalSparesAKeyThatHoldsAKeyOfOthers) {
    ASSERT_EQ(Register(L"A = s 'x' { B val V = s 'y' }"), S_OK);
    ASSERT_EQ(Register(L"A { Foreign }"), S_OK);
    EXPECT_EQ(Unregister(L"A = s 'x' { B val V = s 'y' }"), S_OK);
    EXPECT_EQ(Dump(), L"[]\n[A]\n[A\\Foreign]\n");
}

TEST_F(Registrar, ForceRemoveStartsFromAnEmptyKey) {
    ASSERT_EQ(Register(L"A = s 'old' { Old { Older } val Old = s 'x' }"), S_OK);
    EXPECT_EQ(Register(L"ForceRemove A { New }"), S_OK);
    EXPECT_EQ(Dump(), L"[]\n[A]\n[A\\New]\n");
}

TEST_F(Registrar, RemovalOfForceRemoveTakesKeysOfOthersToo) {
    ASSERT_EQ(Register(L"A { Foreign { Deeper } }"), S_OK);
    EXPECT_EQ(Unregister(L"ForceRemove A { Own }"), S_OK);
    EXPECT_EQ(Dump(), L"[]\n");
}

TEST_F(Registrar, DeleteRemovesAKeyAndWritesNothing) {
    ASSERT_EQ(Register(L"A { B { C } } Z"), S_OK);
    EXPECT_EQ(Register(L"Delete A"), S_OK);
    EXPECT_EQ(Dump(), L"[]\n[Z]\n");
    ASSERT_EQ(Register(L"A"), S_OK);
    EXPECT_EQ(Unregister(L"Delete A"), S_OK);
    EXPECT_EQ(Dump(), L"[]\n[A]\n[Z]\n");
}

TEST_F(Registrar, ReplacesNamesBetweenPercentSigns) {
    registrar_.AddReplacement(L"MODULE", L"C:\\Program Files\\it's {mine}\\a.dll");
    EXPECT_EQ(Register(L"A = s '%MODULE%' B = s '<%MODULE%>,100%%' %MODULE%"), S_OK);
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, path_ + L"\\A"), L"[]\n@ = s C:\\Program Files\\it's {mine}\\a.dll\n");
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, path_ + L"\\B"),
              L"[]\n@ = s <C:\\Program Files\\it's {mine}\\a.dll>,100%\n");
}

TEST_F(Registrar, LongRootNamesMeanTheSame) {
    EXPECT_EQ(registrar_.StringRegister(L"HKEY_CURRENT_USER { NoRemove Software { " + name_ + L" = s 'x' } }"), S_OK);
    EXPECT_EQ(Dump(), L"[]\n@ = s x\n");
}

TEST_F(Registrar, ReturnsTheFirstFailureOfTheRegistry) {
    ASSERT_EQ(Register(L"A"), S_OK);
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, (path_ + L"\\Volatile").c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_READ, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(Register(L"First Volatile { Child } Last"), HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_EQ(Dump(), L"[]\n[A]\n[First]\n[Volatile]\n");
}

TEST_F(Registrar, MissingResourceIsAFailure) {
    // This program has no resources at all.
    EXPECT_EQ(registrar_.ResourceRegister(GetModuleHandleW(nullptr), 101, L"REGISTRY"),
              HRESULT_FROM_WIN32(ERROR_RESOURCE_DATA_NOT_FOUND));
    EXPECT_EQ(registrar_.ResourceUnregister(GetModuleHandleW(nullptr), 101, L"REGISTRY"),
              HRESULT_FROM_WIN32(ERROR_RESOURCE_DATA_NOT_FOUND));
}

class MalformedScript : public Registrar, public testing::WithParamInterface<const wchar_t*> {};

TEST_P(MalformedScript, IsRefusedBeforeAnythingIsWritten) {
    EXPECT_EQ(Register(std::wstring(L"Written = s 'x'\n") + GetParam()), DISP_E_EXCEPTION);
    EXPECT_EQ(Dump(), L"");
}

INSTANTIATE_TEST_SUITE_P(Registrar, MalformedScript,
                         testing::Values(L"A {", L"A }  }", L"= s 'x'", L"A =", L"A = x 'y'", L"A = s", L"val B",
                                         L"val B s 'x'", L"ForceRemove val B = s 'x'", L"Delete val B = s 'x'",
                                         L"A = d", L"A = d 12x", L"A = d -1", L"A = d 4294967296", L"A = b 123",
                                         L"A = b 0g", L"A = s '%UNKNOWN%'", L"A = s '%'", L"A = s 'open", L"''",
                                         L"} } } HKNONE { A", L"} } } HKCU A {", L"} } } HKCU { val A = s 'x'"));

class RegistrarSwitch : public testing::Test {
protected:
    RegistrarSwitch() { Clear_(); }
    ~RegistrarSwitch() override {
        ATL::AtlSetPerUserRegistration(false);
        Clear_();
    }

    const CRegObject registrar_;
    const std::wstring script_ = L"HKCR { RegistrarTest.Switch = s 'x' { NoRemove Kept Gone } }";
    const std::wstring perUser_ = L"Software\\Classes\\RegistrarTest.Switch";

private:
    void Clear_() const {
        RemoveRegistryKey(HKEY_CURRENT_USER, perUser_);
        RemoveRegistryKey(HKEY_LOCAL_MACHINE, perUser_);
    }
};

TEST_F(RegistrarSwitch, IsOffAtFirst) {
    EXPECT_FALSE(ATL::AtlGetPerUserRegistration());
}

TEST_F(RegistrarSwitch, WhenOffClassesGoToTheMachine) {
    EXPECT_EQ(registrar_.StringRegister(script_), S_OK);
    EXPECT_EQ(DumpRegistry(HKEY_LOCAL_MACHINE, perUser_), L"[]\n@ = s x\n[Gone]\n[Kept]\n");
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, perUser_), L"");
}

TEST_F(RegistrarSwitch, WhenOnClassesGoToTheUserAndComeBackFromThere) {
    ATL::AtlSetPerUserRegistration(true);
    EXPECT_EQ(registrar_.StringRegister(script_), S_OK);
    EXPECT_EQ(DumpRegistry(HKEY_LOCAL_MACHINE, perUser_), L"");
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, perUser_), L"[]\n@ = s x\n[Gone]\n[Kept]\n");
    EXPECT_EQ(registrar_.StringUnregister(script_), S_OK);
    EXPECT_EQ(DumpRegistry(HKEY_CURRENT_USER, perUser_), L"[]\n[Kept]\n");
}

TEST_F(RegistrarSwitch, WhenOnOtherRootsStayAsWritten) {
    ATL::AtlSetPerUserRegistration(true);
    EXPECT_EQ(registrar_.StringRegister(L"HKLM { NoRemove Software { NoRemove Classes { RegistrarTest.Switch } } }"),
              S_OK);
    EXPECT_EQ(DumpRegistry(HKEY_LOCAL_MACHINE, perUser_), L"[]\n");
}

} // namespace
