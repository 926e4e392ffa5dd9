// Lock.h - a lock that is ready before any constructor has run and after every destructor: the
// host may call the kernel while the process starts and ends.
#ifndef TARN_KERNEL_LOCK_H
#define TARN_KERNEL_LOCK_H

#include <mutex>

namespace tarn::kernel {

using Lock = std::mutex;

}  // namespace tarn::kernel

#endif
