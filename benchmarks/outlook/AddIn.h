#pragma once
#include "platform/Windows.h" // before <comdef.h>, which would bring an older Winsock

#include <comdef.h>

#include "platform/outlook/Extensibility.h"

namespace outlook_benchmarks {

/// The DLL, loaded and connected as Outlook does it, until the end of the object.
class AddIn {
public:
    explicit AddIn(IDispatch* application);
    ~AddIn();
    AddIn(const AddIn&) = delete;
    AddIn& operator=(const AddIn&) = delete;

    /// Whether the DLL is in this process: a worker keeps it for a moment longer than its owner.
    static bool IsLoaded();

private:
    HMODULE module_;
    _com_ptr_t<_com_IIID<_IDTExtensibility2, &IID__IDTExtensibility2>> addIn_;
};

} // namespace outlook_benchmarks
