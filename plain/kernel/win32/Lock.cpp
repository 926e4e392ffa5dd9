#include "Lock.h"

#include <windows.h>

namespace tarn::kernel {
namespace {

static_assert(sizeof(SRWLOCK) == sizeof(void*) && alignof(SRWLOCK) == alignof(void*));

SRWLOCK* Native(void*& state) { return reinterpret_cast<SRWLOCK*>(&state); }

}  // namespace

void Lock::lock() noexcept { ::AcquireSRWLockExclusive(Native(state_)); }

bool Lock::try_lock() noexcept { return ::TryAcquireSRWLockExclusive(Native(state_)) != 0; }

void Lock::unlock() noexcept { ::ReleaseSRWLockExclusive(Native(state_)); }

}  // namespace tarn::kernel
