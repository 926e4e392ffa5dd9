#include "support/StackLimit.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace tarn::test {
namespace {

// Stacks are painted with this before the thread begins.
constexpr unsigned char kPaint = 0xA5;

void* CallWork(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return nullptr;
}

// The memory of a stack, with a page before it that nothing may touch.
class PaintedStack {
 public:
  explicit PaintedStack(size_t bytes) : guard_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {
    size_ = bytes + guard_;
    memory_ = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK,
                   -1, 0);
    if (memory_ == MAP_FAILED) throw std::runtime_error("no memory for a stack");
    mprotect(memory_, guard_, PROT_NONE);
    std::fill(begin(), end(), kPaint);
  }
  PaintedStack(const PaintedStack&) = delete;
  PaintedStack& operator=(const PaintedStack&) = delete;
  ~PaintedStack() { munmap(memory_, size_); }

  unsigned char* begin() const { return static_cast<unsigned char*>(memory_) + guard_; }
  unsigned char* end() const { return static_cast<unsigned char*>(memory_) + size_; }
  // From the deepest byte that was written up to the stack's beginning.
  size_t used() const {
    const auto deepest = std::find_if(begin(), end(), [](unsigned char c) { return c != kPaint; });
    return static_cast<size_t>(end() - deepest);
  }

 private:
  size_t guard_;
  size_t size_ = 0;
  void* memory_ = nullptr;
};

}  // namespace

size_t RunOnStackOf(size_t bytes, const std::function<void()>& work) {
  const PaintedStack stack(bytes);
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) throw std::runtime_error("no thread attributes");
  pthread_t thread;
  std::function<void()> call = work;
  const bool started = pthread_attr_setstack(&attributes, stack.begin(), bytes) == 0 &&
                       pthread_create(&thread, &attributes, &CallWork, &call) == 0;
  pthread_attr_destroy(&attributes);
  if (!started) throw std::runtime_error("no thread with such a stack");
  pthread_join(thread, nullptr);
  return stack.used();
}

}  // namespace tarn::test
