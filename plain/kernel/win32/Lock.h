// Lock.h - a lock that is ready before any constructor has run and after every destructor: the
// host may call the kernel while the process starts and ends. The runtime's std::mutex is neither,
// and allocates when it is first taken.
#ifndef TARN_KERNEL_LOCK_H
#define TARN_KERNEL_LOCK_H

namespace tarn::kernel {

// Not recursive. For std::lock_guard and std::unique_lock.
class Lock {
 public:
  constexpr Lock() noexcept = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  void lock() noexcept;
  bool try_lock() noexcept;
  void unlock() noexcept;

 private:
  void* state_ = nullptr;  // an SRWLOCK; null is its initial value
};

}  // namespace tarn::kernel

#endif
