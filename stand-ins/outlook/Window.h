#pragma once
#include <functional>
#include <string>

#include "platform/Windows.h"

namespace stand_ins {

/// One of Outlook's windows, a real one of the constructing thread and of the class by which they are known.
class Window {
public:
    /// closed: called when its user closes it, in place of its end; it may destroy this object.
    /// Failure: std::runtime_error.
    Window(const std::wstring& title, std::function<void()> closed);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND Handle() const { return window_; }

private:
    static LRESULT CALLBACK Procedure_(HWND window, UINT message, WPARAM first, LPARAM second);

    std::function<void()> closed_;
    HWND window_;
};

} // namespace stand_ins
