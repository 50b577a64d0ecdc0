#include "stand-ins/outlook/Death.h"

#include "platform/Windows.h"

namespace stand_ins {
namespace {

constexpr UINT kDied = 86;

} // namespace

void Die() {
    TerminateProcess(GetCurrentProcess(), kDied);
}

} // namespace stand_ins
