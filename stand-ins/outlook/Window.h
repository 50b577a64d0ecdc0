#pragma once
#include <functional>
#include <string>

#include "platform/Windows.h"

namespace stand_ins {

/// One of Outlook's windows, a real one of the constructing thread and of the class by which they are known.
class Window {
public:
    static constexpr const wchar_t* kOutlookClass = L"rctrl_renwnd32";
    static constexpr const wchar_t* kWordClass = L"OpusApp";

    /// closed: called when its user closes it, in place of its end; it may destroy this object.
    /// Failure: std::runtime_error.
    Window(const std::wstring& title, std::function<void()> closed, const wchar_t* className = kOutlookClass);
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
