#include "tests/support/MessageBox.h"

#include <atomic>
#include <future>

#include "platform/Windows.h"

namespace test_support {
namespace {

constexpr int kTextOfBox = 65535; // the static control that a message box shows its text in
constexpr DWORD kAnswerMs = 5000;

std::wstring TextOf(HWND window) {
    wchar_t text[1024] = L"";
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text), SMTO_NORMAL, kAnswerMs,
                        &length);
    return text;
}

} // namespace

std::optional<ShownBox> AnswerMessageBox(const std::wstring& caption, const std::function<bool()>& stop) {
    while (!stop()) {
        const HWND box = FindWindowW(L"#32770", caption.c_str());
        const HWND text = box == nullptr ? nullptr : GetDlgItem(box, kTextOfBox);
        if (text == nullptr || !IsWindowVisible(box)) {
            continue;
        }
        ShownBox shown{TextOf(box), TextOf(text), GetWindowLongW(box, GWL_STYLE)};
        PostMessageW(box, WM_COMMAND, IDOK, 0);
        while (IsWindow(box) && !stop()) {
        }
        return shown;
    }
    return std::nullopt;
}

std::vector<std::wstring> BoxesDuring(const std::wstring& caption, const std::function<void()>& body) {
    std::atomic<bool> over = false;
    auto texts = std::async(std::launch::async, [&] {
        std::vector<std::wstring> seen;
        while (const auto box = AnswerMessageBox(caption, [&] { return over.load(); })) {
            seen.push_back(box->text);
        }
        return seen;
    });
    body();
    over = true;
    return texts.get();
}

} // namespace test_support
