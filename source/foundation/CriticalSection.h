#pragma once
#include "foundation/Lockable.h"
#include "platform/Windows.h"

namespace vorlek {

/// A lock among the threads of this process; its owner may take it again.
class CriticalSection : public Lockable {
public:
    CriticalSection();
    ~CriticalSection() override;
    void Lock() override;
    void Unlock() override;

private:
    CRITICAL_SECTION section_;
};

} // namespace vorlek
