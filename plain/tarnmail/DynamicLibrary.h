// DynamicLibrary.h - a shared library that lies beside the running program or, installed, in the
// library directory that belongs to the program's; loaded at run time. One folder a system
// implements it.
#ifndef TARN_TARNMAIL_DYNAMICLIBRARY_H
#define TARN_TARNMAIL_DYNAMICLIBRARY_H

#include <string>

namespace tarn::host {

// The library stays loaded until the process ends: exceptions and leak reports may refer to its
// code and constants.
class DynamicLibrary {
 public:
  // `name` is the bare name ("TarnPst" for libTarnPst.so and TarnPst.dll). Throws Failure (Broken).
  explicit DynamicLibrary(const std::string& name);

  // The address of an exported function. Throws Failure (Broken) when there is none.
  void* function(const char* name) const;

 private:
  std::string fileName_;
  void* library_ = nullptr;
};

}  // namespace tarn::host

#endif
