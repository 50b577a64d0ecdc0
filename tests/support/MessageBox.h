#pragma once
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace test_support {

/// A message box as its reader sees it.
struct ShownBox {
    std::wstring caption;
    std::wstring text;
    long style; ///< of the dialog window
};

/// Waits for a message box with the caption, reads it and presses its OK button. Nothing when `stop`, asked now and
/// then, says that none will come.
std::optional<ShownBox> AnswerMessageBox(const std::wstring& caption, const std::function<bool()>& stop);

/// Answers the boxes with the caption while the body runs: the texts that they showed.
std::vector<std::wstring> BoxesDuring(const std::wstring& caption, const std::function<void()>& body);

} // namespace test_support
