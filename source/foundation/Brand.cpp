#include "foundation/Brand.h"

#include <algorithm>

#include "platform/Windows.h"

namespace vorlek {
namespace {

constexpr const wchar_t* kNames[] = {L"Vorlek", L"MOLTREX"};

bool SameName_(std::wstring_view left, std::wstring_view right) {
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) == CSTR_EQUAL;
}

} // namespace

const wchar_t* GetBrandString(BrandString which) {
    return kNames[static_cast<std::size_t>(which)];
}

bool IsProductName(std::wstring_view text) {
    return SameName_(text, GetBrandString(BrandString::Product));
}

bool IsBrandName(std::wstring_view text) {
    return std::ranges::any_of(kNames, [text](std::wstring_view name) { return SameName_(text, name); });
}

} // namespace vorlek
