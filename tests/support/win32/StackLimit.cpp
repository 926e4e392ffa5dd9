#include "support/StackLimit.h"

#include <windows.h>

#include <process.h>

#include <limits>
#include <stdexcept>

namespace tarn::test {
namespace {

unsigned __stdcall CallWork(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return 0;
}

}  // namespace

// Without the flag the size is what the stack begins with, and it grows to what the program's
// header says.
size_t RunOnStackOf(size_t bytes, const std::function<void()>& work) {
  if (bytes > std::numeric_limits<unsigned>::max()) throw std::runtime_error("no such stack");
  std::function<void()> call = work;
  const auto thread =
      reinterpret_cast<HANDLE>(_beginthreadex(nullptr, static_cast<unsigned>(bytes), &CallWork,
                                              &call, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
  if (thread == nullptr) throw std::runtime_error("no thread with such a stack");
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  return 0;
}

}  // namespace tarn::test
