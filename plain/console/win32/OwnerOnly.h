// OwnerOnly.h - who may enter what a program makes.
#ifndef TARN_CONSOLE_WIN32_OWNERONLY_H
#define TARN_CONSOLE_WIN32_OWNERONLY_H

#include <windows.h>

#include <memory>

namespace tarn::host {

// A security descriptor that lets in the user whom this process works for and the system itself,
// and nobody else, whatever the directory that it is for lies in; so, too, for all that is made in
// it.
class OwnerOnly {
 public:
  OwnerOnly();

  // Null where the system tells of no user: then `error()` says why.
  SECURITY_ATTRIBUTES* attributes() { return descriptor_ ? &attributes_ : nullptr; }
  DWORD error() const { return error_; }

 private:
  struct Free {
    void operator()(void* block) const { LocalFree(block); }
  };

  std::unique_ptr<void, Free> descriptor_;
  SECURITY_ATTRIBUTES attributes_ = {};
  DWORD error_ = ERROR_SUCCESS;
};

}  // namespace tarn::host

#endif
