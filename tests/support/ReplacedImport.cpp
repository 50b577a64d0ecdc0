#include "tests/support/ReplacedImport.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace test_support {
namespace {

template <class Part>
Part* At_(DWORD offset) {
    return reinterpret_cast<Part*>(reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr)) + offset);
}

/// The program's own pointer to the function.
void** FindSlot_(const char* name) {
    const auto* headers = At_<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At_<IMAGE_DOS_HEADER>(0)->e_lfanew));
    const DWORD table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* library = At_<IMAGE_IMPORT_DESCRIPTOR>(table); library->Name != 0; ++library) {
        const auto* names = At_<IMAGE_THUNK_DATA64>(library->OriginalFirstThunk);
        for (std::size_t i = 0; names[i].u1.AddressOfData != 0; ++i) {
            if (!IMAGE_SNAP_BY_ORDINAL64(names[i].u1.Ordinal) &&
                std::strcmp(At_<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(names[i].u1.AddressOfData))->Name, name) ==
                    0) {
                return At_<void*>(library->FirstThunk) + i;
            }
        }
    }
    throw std::runtime_error(std::string("the program does not import ") + name);
}

} // namespace

void* ExchangeFunction(void** slot, void* function) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
    return std::exchange(*slot, function);
}

void* ExchangeImport(const char* name, void* function) {
    return ExchangeFunction(FindSlot_(name), function);
}

} // namespace test_support
