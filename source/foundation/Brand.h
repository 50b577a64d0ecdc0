#pragma once
#include <string_view>

namespace vorlek {

/// The names under which the program is sold.
enum class BrandString { Product, Trademark };

/// The name in the product's own spelling.
const wchar_t* GetBrandString(BrandString which);
/// Whether a text is the product's name, in any letter case.
bool IsProductName(std::wstring_view text);
/// Whether a text is any of the names, in any letter case.
bool IsBrandName(std::wstring_view text);

} // namespace vorlek
