// KernelImports.h - sits between the kernel and the system: a function of a test's own in the
// place of one that the loaded kernel imports.
#ifndef TARN_TESTS_KERNEL_WIN32_KERNELIMPORTS_H
#define TARN_TESTS_KERNEL_WIN32_KERNELIMPORTS_H

#include <cstdint>
#include <string_view>

namespace tarn::test {

// While it lives, the kernel's calls of the function reach the stand-in; those of everybody else,
// the stand-in's own among them, reach the system. Fails the test when the kernel does not import
// the function by name.
class ImportStandIn {
 public:
  template <typename Function>
  ImportStandIn(std::string_view function, Function* standIn)
      : place_(PlaceOf(function)), before_(place_ != nullptr ? *place_ : 0) {
    Put(reinterpret_cast<uint64_t>(standIn));
  }
  ImportStandIn(const ImportStandIn&) = delete;
  ImportStandIn& operator=(const ImportStandIn&) = delete;
  ~ImportStandIn() { Put(before_); }

 private:
  // Where the kernel keeps the address of the function; null when it imports no such function.
  static uint64_t* PlaceOf(std::string_view function);
  void Put(uint64_t address) const;

  uint64_t* place_;
  uint64_t before_;
};

}  // namespace tarn::test

#endif
