// StackLimit.h - runs something on a thread with a small stack, on which what recurses deeply
// faults.
#ifndef TARN_TESTS_SUPPORT_STACKLIMIT_H
#define TARN_TESTS_SUPPORT_STACKLIMIT_H

#include <cstddef>
#include <functional>

namespace tarn::test {

// Calls `work` on a new thread with a stack of that many bytes, a multiple of 64 KiB, and waits for
// its end. `work` must not throw. Returns how many bytes of the stack it has used, with what the
// thread itself needs; 0 on a system that does not tell. Throws std::runtime_error when the system
// gives no such thread.
size_t RunOnStackOf(size_t bytes, const std::function<void()>& work);

}  // namespace tarn::test

#endif
