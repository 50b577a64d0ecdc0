#include "stand-ins/outlook/Window.h"

#include <stdexcept>
#include <utility>

namespace stand_ins {

Window::Window(const std::wstring& title, std::function<void()> closed, const wchar_t* className)
    : closed_(std::move(closed)) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = Procedure_;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass); // a second time it is there already
    window_ = CreateWindowExW(0, className, title.c_str(), WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 600, nullptr,
                              nullptr, windowClass.hInstance, nullptr);
    if (window_ == nullptr) {
        throw std::runtime_error("a window cannot be created: error " + std::to_string(GetLastError()));
    }
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

Window::~Window() {
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

LRESULT CALLBACK Window::Procedure_(HWND window, UINT message, WPARAM first, LPARAM second) {
    const auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_CLOSE && self != nullptr) {
        const auto closed = self->closed_; // a copy: the object may end in it
        closed();
        return 0;
    }
    return DefWindowProcW(window, message, first, second);
}

} // namespace stand_ins
