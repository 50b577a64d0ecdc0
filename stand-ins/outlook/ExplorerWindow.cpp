#include "stand-ins/outlook/ExplorerWindow.h"

#include <stdexcept>

namespace stand_ins {
namespace {

// The class by which Outlook's explorer windows are known.
constexpr const wchar_t* kClassName = L"rctrl_renwnd32";

} // namespace

ExplorerWindow::ExplorerWindow(const std::wstring& caption, bool enabled) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = DefWindowProcW;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kClassName;
    RegisterClassW(&windowClass); // a second time it is there already
    window_ = CreateWindowExW(0, kClassName, caption.c_str(), WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 600, nullptr,
                              nullptr, windowClass.hInstance, nullptr);
    if (window_ == nullptr) {
        throw std::runtime_error("the explorer window cannot be created: error " + std::to_string(GetLastError()));
    }
    EnableWindow(window_, enabled);
}

ExplorerWindow::~ExplorerWindow() {
    DestroyWindow(window_);
}

} // namespace stand_ins
