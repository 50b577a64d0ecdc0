#pragma once
#include <string>

#include "foundation/Lockable.h"
#include "platform/Windows.h"

namespace vorlek {

/// A lock among processes. Its owner may take it again.
class NamedMutex : public Lockable {
public:
    /// Creates the mutex, or joins the one that has the name already, even where the other user who
    /// made it grants no more than waiting. An empty name makes a mutex that nobody else can reach.
    /// global: one for all sessions of the machine instead of one for this session.
    /// Raises Exception.
    NamedMutex(const std::wstring& name, bool global);
    ~NamedMutex() override;

    /// A mutex that its owner left behind when it died counts as taken. Raises Exception.
    void Lock() override;
    /// Raises Exception where the calling thread is not the owner.
    void Unlock() override;
    /// The object name that the system knows.
    virtual std::wstring GetMutexName(const std::wstring& name, bool global) const;

private:
    HANDLE mutex_;
};

} // namespace vorlek
