#pragma once
#include <string>

#include "platform/Windows.h"

namespace stand_ins {

/// Outlook's main window, a real one of the constructing thread.
class ExplorerWindow {
public:
    /// Failure: std::runtime_error.
    ExplorerWindow(const std::wstring& caption, bool enabled);
    ~ExplorerWindow();
    ExplorerWindow(const ExplorerWindow&) = delete;
    ExplorerWindow& operator=(const ExplorerWindow&) = delete;

    HWND Handle() const { return window_; }

private:
    HWND window_;
};

} // namespace stand_ins
