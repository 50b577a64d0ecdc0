#include "fuzz/driver/FaultNote.h"

#include <csignal>
#include <cstdio>
#include <cstring>

#include "platform/Windows.h"

namespace fuzz {
namespace {

constexpr std::uintptr_t kPreferredBase = 0x140000000;

Board* board = nullptr;

const char* Name_(DWORD code) {
    switch (code) {
    case EXCEPTION_ACCESS_VIOLATION:
        return "access violation";
    case EXCEPTION_ILLEGAL_INSTRUCTION:
        return "trap";
    default:
        return "exception";
    }
}

/// Where code lies: for this program the address that its debug information knows.
void DescribePlace_(DWORD64 address, char* text, std::size_t size) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(address), &module);
    const DWORD64 offset = address - reinterpret_cast<DWORD64>(module);
    if (module == GetModuleHandleW(nullptr)) {
        std::snprintf(text, size, "0x%llx", kPreferredBase + offset);
        return;
    }
    char path[MAX_PATH] = "";
    GetModuleFileNameA(module, path, MAX_PATH);
    const char* name = std::strrchr(path, '\\');
    std::snprintf(text, size, "%s+0x%llx", name != nullptr ? name + 1 : path, offset);
}

/// The places from the context's own outwards, as far as the program's own tables tell them.
void DescribeFrames_(CONTEXT context, char* text, std::size_t size) {
    constexpr std::size_t room = 40;
    for (std::size_t length = 0; context.Rip != 0 && length + room < size; length = std::strlen(text)) {
        if (length != 0) {
            text[length++] = ' ';
        }
        DescribePlace_(context.Rip, text + length, room);
        DWORD64 base = 0;
        PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        if (function == nullptr) {
            return;
        }
        void* handler = nullptr;
        DWORD64 establisher = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handler, &establisher, nullptr);
    }
}

/// At once, since no room is left for the search for a handler. The place means little.
LONG WINAPI NoteStackOverflow_(EXCEPTION_POINTERS* crash) {
    if (crash->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW) {
        std::strcpy(board->fault, "stack overflow");
        TerminateProcess(GetCurrentProcess(), kFault);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

LONG WINAPI NoteCrash_(EXCEPTION_POINTERS* crash) {
    const DWORD code = crash->ExceptionRecord->ExceptionCode;
    char place[80];
    DescribePlace_(reinterpret_cast<DWORD64>(crash->ExceptionRecord->ExceptionAddress), place, sizeof(place));
    char fault[sizeof(Board::fault)];
    std::snprintf(fault, sizeof(fault), "%s (0x%lx) at %s", Name_(code), code, place);
    char frames[sizeof(Board::detail)] = "";
    DescribeFrames_(*crash->ContextRecord, frames, sizeof(frames));
    EndWithFault(fault, frames);
}

/// An assertion of the standard library, or an exception that nothing may catch.
void NoteAbort_(int) {
    CONTEXT context = {};
    RtlCaptureContext(&context);
    char frames[sizeof(Board::detail)] = "";
    DescribeFrames_(context, frames, sizeof(frames));
    EndWithFault("abort", frames);
}

} // namespace

void NoteFaultsOn(Board& place) {
    board = &place;
    AddVectoredExceptionHandler(TRUE, NoteStackOverflow_);
    SetUnhandledExceptionFilter(NoteCrash_);
    std::signal(SIGABRT, NoteAbort_);
}

void EndWithFault(const char* fault, const char* detail) {
    std::snprintf(board->fault, sizeof(board->fault), "%s", fault);
    std::snprintf(board->detail, sizeof(board->detail), "%s", detail);
    TerminateProcess(GetCurrentProcess(), kFault);
    std::_Exit(static_cast<int>(kFault));
}

} // namespace fuzz
