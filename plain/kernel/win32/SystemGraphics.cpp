// Contexts and fonts of GDI, whose handles are the kernel's pointers.
#include "SystemGraphics.h"

#include <windows.h>

#include <cstring>

namespace tarn::kernel {

static_assert(sizeof(LOGFONTW) == 92);

void* MakeContext() { return ::CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr); }

void DestroyContext(void* context) { ::DeleteDC(static_cast<HDC>(context)); }

void* MakeFont(const void* logFont) {
  LOGFONTW record;
  std::memcpy(&record, logFont, sizeof record);
  return ::CreateFontIndirectW(&record);
}

void DestroyFont(void* font) { ::DeleteObject(static_cast<HGDIOBJ>(font)); }

}  // namespace tarn::kernel
