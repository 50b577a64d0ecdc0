#include "agent/apps/outlook/EmbeddedStart.h"

#include <algorithm>
#include <cwctype>
#include <memory>

#include "platform/Windows.h"

#include <shellapi.h>

namespace vorlek {
namespace {

std::wstring Lower_(std::wstring text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](wchar_t character) { return static_cast<wchar_t>(std::towlower(character)); });
    return text;
}

bool IsEmbeddingSwitch_(const std::wstring& argument) {
    const std::wstring lower = Lower_(argument);
    return lower == L"-embedding" || lower == L"embedding";
}

} // namespace

bool IsEmbeddedStart(const std::vector<std::wstring>& arguments) {
    if (arguments.empty()) {
        return false;
    }
    const std::wstring& path = arguments.front();
    if (Lower_(path.substr(path.find_last_of(L'\\') + 1)) != L"outlook.exe") { // npos + 1 is 0: the whole of it
        return true;
    }
    return std::any_of(arguments.begin() + 1, arguments.end(), IsEmbeddingSwitch_);
}

std::vector<std::wstring> GetProcessArguments() {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> arguments(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                    &LocalFree);
    return arguments ? std::vector<std::wstring>(arguments.get(), arguments.get() + count)
                     : std::vector<std::wstring>();
}

} // namespace vorlek
