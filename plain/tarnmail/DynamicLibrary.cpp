#include "DynamicLibrary.h"

#include <dlfcn.h>

#include <filesystem>

#include "Failure.h"

namespace tarn::host {
namespace {

std::filesystem::path ProgramDirectory() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::string LastError() {
  const char* const text = dlerror();
  return text == nullptr ? "unknown error" : text;
}

}  // namespace

DynamicLibrary::DynamicLibrary(const std::string& name) : fileName_("lib" + name + ".so") {
  library_ = dlopen((ProgramDirectory() / fileName_).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library_ == nullptr) {
    throw Failure(ExitStatus::Broken, fileName_, "cannot be loaded: " + LastError());
  }
}

void* DynamicLibrary::function(const char* name) const {
  void* const address = dlsym(library_, name);
  if (address == nullptr) {
    throw Failure(ExitStatus::Broken, fileName_, std::string("does not export ") + name);
  }
  return address;
}

}  // namespace tarn::host
