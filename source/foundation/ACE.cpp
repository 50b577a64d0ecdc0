#include "foundation/ACE.h"

#include "foundation/Throw.h"

namespace {

constexpr const wchar_t* kTypes[] = {L"A", L"D", L"ML"};
constexpr const wchar_t* kRights[] = {L"GA", L"GR", L"GW", L"GX", L"GRGWGX", L"NW"};
constexpr const wchar_t* kSubjects[] = {L"AU", L"BU", L"BA", L"SY", L"WD", L"RC", L"LW"};

template <class Number, std::size_t Size>
const wchar_t* Text_(const wchar_t* const (&texts)[Size], Number number, const wchar_t* complaint) {
    const auto index = static_cast<std::uint32_t>(number);
    if (index >= Size) {
        vorlek::Throw(L"ACE::ToString", complaint, index);
    }
    return texts[index];
}

} // namespace

ACE::ACE(ACEType type, ACERights rights, ACESubject subject) : type_(type), rights_(rights), subject_(subject) {}

std::wstring ACE::ToString() const {
    std::wstring text = L"(";
    text += Text_(kTypes, type_, L"Unsupported ACE type: ");
    text += L";OICI;";
    text += Text_(kRights, rights_, L"Unsupported access right: ");
    text += L";;;";
    text += Text_(kSubjects, subject_, L"Unsupported subject: ");
    return text + L")";
}
