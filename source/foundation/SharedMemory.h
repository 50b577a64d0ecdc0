#pragma once
#include <cstdint>
#include <string>

#include "foundation/AutoHandle.h"
#include "foundation/LoggerHolder.h"

/// A named section of memory, mapped as a whole. It lives while anybody holds it.
class SharedMemory {
public:
    /// Creates the section, zero-filled. size: in bytes. securityKind: see SecUtils::GenSA.
    /// Raises Exception, also where the name exists already: its creator is always the first.
    SharedMemory(const std::wstring& name, std::uint64_t size, std::uint32_t securityKind, bool readOnly);
    /// Opens a section that another made. Raises Exception.
    SharedMemory(const std::wstring& name, bool readOnly);
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;
    virtual ~SharedMemory() = default;

    BYTE* GetData() const { return view_.Get(); }
    bool IsMapped() const { return view_.Get() != nullptr; }

private:
    void Init();
    void Open_(DWORD access);
    void Create_();
    void Map_(DWORD access);

    std::wstring name_;
    std::uint64_t size_ = 0;
    std::uint32_t securityKind_ = 0;
    bool readOnly_;
    bool openExisting_;
    vorlek::FileHandle mapping_;
    vorlek::ViewHandle view_;

    static vorlek::LoggerHolder logger_;
};
