#include "support/StackLimit.h"

#include <pthread.h>

#include <stdexcept>

namespace tarn::test {
namespace {

void* CallWork(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return nullptr;
}

}  // namespace

void RunOnStackOf(size_t bytes, const std::function<void()>& work) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) throw std::runtime_error("no thread attributes");
  pthread_t thread;
  std::function<void()> call = work;
  const bool started = pthread_attr_setstacksize(&attributes, bytes) == 0 &&
                       pthread_create(&thread, &attributes, &CallWork, &call) == 0;
  pthread_attr_destroy(&attributes);
  if (!started) throw std::runtime_error("no thread with such a stack");
  pthread_join(thread, nullptr);
}

}  // namespace tarn::test
