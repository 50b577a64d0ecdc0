#include "foundation/CriticalSection.h"

namespace vorlek {

CriticalSection::CriticalSection() {
    InitializeCriticalSection(&section_);
}

CriticalSection::~CriticalSection() {
    DeleteCriticalSection(&section_);
}

void CriticalSection::Lock() {
    EnterCriticalSection(&section_);
}

void CriticalSection::Unlock() {
    LeaveCriticalSection(&section_);
}

} // namespace vorlek
