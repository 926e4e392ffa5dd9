#include "rtf/GraphicsProbe.h"

#include <cstring>

#include "Tarnbase/Kernel.h"

namespace tarn::test {
namespace {

GraphicsProbe* g_probe = nullptr;

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

extern "C" {

void* __real_KernelCreateDC(int32_t reserved, int32_t line, const char16_t* file);
void* __real_KernelCreateFont(const void* logFont, int32_t line, const char16_t* file);

void* __wrap_KernelCreateDC(int32_t reserved, int32_t line, const char16_t* file) {
  if (g_probe != nullptr) {
    ++g_probe->contexts;
    if (g_probe->refusesContexts) return nullptr;
  }
  return __real_KernelCreateDC(reserved, line, file);
}

void* __wrap_KernelCreateFont(const void* logFont, int32_t line, const char16_t* file) {
  if (g_probe != nullptr) {
    tarn::test::LogFontBytes record{};
    std::memcpy(record.data(), logFont, record.size());
    g_probe->fonts.push_back(record);
    if (g_probe->fonts.size() == g_probe->refusedFont) return nullptr;
  }
  return __real_KernelCreateFont(logFont, line, file);
}

}  // extern "C"
