#include "DynamicLibrary.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "console/Failure.h"
#include "console/posix/ProgramDirectory.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

// Beside the program, as built; or where an installation has its libraries.
fs::path Find(const std::string& fileName) {
  const fs::path beside = ProgramDirectory() / fileName;
  const fs::path installed = ProgramDirectory() / TARN_LIBRARIES_FROM_PROGRAM / fileName;
  std::error_code ignored;
  return !fs::exists(beside, ignored) && fs::exists(installed, ignored) ? installed : beside;
}

std::string LastError() {
  const char* const text = dlerror();
  return text == nullptr ? "unknown error" : text;
}

}  // namespace

DynamicLibrary::DynamicLibrary(const std::string& name) : fileName_("lib" + name + ".so") {
  library_ = dlopen(Find(fileName_).c_str(), RTLD_NOW | RTLD_LOCAL);
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
