#include "rtf/GraphicsProbe.h"

#include <dlfcn.h>

#include <cstring>

#include "Tarnbase/Kernel.h"

namespace tarn::test {
namespace {

GraphicsProbe* g_probe = nullptr;

// The kernel's own function of that name.
template <typename Function>
Function* NextOf(Function*, const char* name) {
  void* const address = dlsym(RTLD_NEXT, name);
  Function* function = nullptr;
  static_assert(sizeof(function) == sizeof(address));
  std::memcpy(&function, &address, sizeof(address));
  return function;
}

}  // namespace

GraphicsProbe::GraphicsProbe() { g_probe = this; }
GraphicsProbe::~GraphicsProbe() { g_probe = nullptr; }

std::vector<std::u16string> GraphicsProbe::faceNames() const {
  std::vector<std::u16string> names;
  for (const LogFontBytes& record : fonts) {
    std::array<char16_t, 33> name{};
    std::memcpy(name.data(), record.data() + 28, 64);
    names.emplace_back(name.data());
  }
  return names;
}

}  // namespace tarn::test

using tarn::test::g_probe;

void* KernelCreateDC(int32_t reserved, int32_t line, const char16_t* file) {
  if (g_probe != nullptr) {
    ++g_probe->contexts;
    if (g_probe->refusesContexts) return nullptr;
  }
  return tarn::test::NextOf(&KernelCreateDC, "KernelCreateDC")(reserved, line, file);
}

void* KernelCreateFont(const void* logFont, int32_t line, const char16_t* file) {
  if (g_probe != nullptr) {
    tarn::test::LogFontBytes record{};
    std::memcpy(record.data(), logFont, record.size());
    g_probe->fonts.push_back(record);
    if (g_probe->fonts.size() == g_probe->refusedFont) return nullptr;
  }
  return tarn::test::NextOf(&KernelCreateFont, "KernelCreateFont")(logFont, line, file);
}
