#include "foundation/SequentialStream.h"

#include <istream>
#include <new>

namespace vorlek {

HRESULT SequentialStream::CreateStream(std::wiostream& stream, ISequentialStream** created) {
    *created = new (std::nothrow) SequentialStream(stream);
    return *created != nullptr ? S_OK : E_FAIL;
}

HRESULT SequentialStream::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_INVALIDARG;
    }
    if (iid != __uuidof(IUnknown) && iid != __uuidof(ISequentialStream)) {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    *object = static_cast<ISequentialStream*>(this);
    AddRef();
    return S_OK;
}

ULONG SequentialStream::AddRef() {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
}

ULONG SequentialStream::Release() {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
        delete this;
    }
    return static_cast<ULONG>(left);
}

HRESULT SequentialStream::Read(void* buffer, ULONG byteCount, ULONG* bytesRead) {
    stream_->read(static_cast<wchar_t*>(buffer), byteCount / sizeof(wchar_t));
    if (bytesRead != nullptr) {
        *bytesRead = static_cast<ULONG>(static_cast<std::size_t>(stream_->gcount()) * sizeof(wchar_t));
    }
    return S_OK;
}

HRESULT SequentialStream::Write(const void* buffer, ULONG byteCount, ULONG* bytesWritten) {
    stream_->write(static_cast<const wchar_t*>(buffer), byteCount / sizeof(wchar_t));
    if (bytesWritten != nullptr) {
        *bytesWritten = byteCount;
    }
    return S_OK;
}

} // namespace vorlek
