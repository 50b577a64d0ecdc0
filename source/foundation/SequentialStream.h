#pragma once
#include <iosfwd>

#include "platform/Windows.h"

#include <objidl.h>

namespace vorlek {

/// An ISequentialStream over a wide stream that the caller owns and keeps alive longer than every
/// reference to this object. Bytes are UTF-16 units of the stream, two each.
class SequentialStream final : public ISequentialStream {
public:
    /// Makes one with a reference count of 1. Returns S_OK, or E_FAIL when it cannot be allocated.
    static HRESULT CreateStream(std::wiostream& stream, ISequentialStream** created);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    /// Always S_OK: the end of the stream, and its failures, show in the count only.
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG byteCount, ULONG* bytesRead) override;
    /// Always S_OK, and always byteCount: a failure of the stream shows in the stream only.
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG byteCount, ULONG* bytesWritten) override;

private:
    explicit SequentialStream(std::wiostream& stream) : stream_(&stream) {}
    virtual ~SequentialStream() = default;

    LONG references_ = 1;
    std::wiostream* stream_;
};

} // namespace vorlek
