#include "stand-ins/outlook/Reader.h"

#include <iterator>
#include <utility>

namespace stand_ins {
namespace {

constexpr const wchar_t* kBoxClass = L"#32770";
constexpr int kText = 65535; // the static control that a message box shows its text in
constexpr DWORD kGlanceMs = 20;
constexpr UINT kAnswerMs = 5000;

// The next box of this process behind another window.
HWND NextBox(HWND behind) {
    HWND box = behind;
    DWORD process = 0;
    do {
        box = FindWindowExW(nullptr, box, kBoxClass, nullptr);
        GetWindowThreadProcessId(box, &process);
    } while (box != nullptr && (process != GetCurrentProcessId() || !IsWindowVisible(box)));
    return box;
}

std::wstring TextOf(HWND box) {
    wchar_t text[1024] = L"";
    DWORD_PTR length = 0;
    SendMessageTimeoutW(GetDlgItem(box, kText), WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text),
                        SMTO_NORMAL, kAnswerMs, &length);
    return text;
}

} // namespace

Reader::Reader(std::function<void(const std::wstring&)> read)
    : read_(std::move(read)),
      over_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      thread_(CreateThread(nullptr, 0, Run_, this, 0, nullptr)) {}

Reader::~Reader() {
    SetEvent(over_);
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
    CloseHandle(over_);
}

DWORD WINAPI Reader::Run_(void* self) {
    const auto& reader = *static_cast<Reader*>(self);
    while (WaitForSingleObject(reader.over_, kGlanceMs) == WAIT_TIMEOUT) {
        if (const HWND box = NextBox(nullptr)) {
            const std::wstring text = TextOf(box);
            if (!text.empty()) { // otherwise it is not there yet
                reader.read_(text);
                SendMessageTimeoutW(box, WM_COMMAND, IDOK, 0, SMTO_NORMAL, kAnswerMs, nullptr);
                while (IsWindow(box) && WaitForSingleObject(reader.over_, kGlanceMs) == WAIT_TIMEOUT) {
                }
            }
        }
    }
    return 0;
}

} // namespace stand_ins
