// GlyphCoverage.cpp - asks Uniscribe through a font that is selected into a device context.
#include "Platform/GlyphCoverage.h"

#include <windows.h>

#include <usp10.h>

#include <climits>

#include "Platform/win32/WideText.h"

namespace tarn::platform {
namespace {

// Selects a font into a context, and at the end the one that was there before. Owns neither.
class FontSelection {
 public:
  FontSelection(HDC context, HGDIOBJ font) noexcept
      : context_(context), before_(SelectObject(context, font)) {}
  FontSelection(const FontSelection&) = delete;
  FontSelection& operator=(const FontSelection&) = delete;
  ~FontSelection() {
    if (IsMade()) SelectObject(context_, before_);
  }

  bool IsMade() const noexcept { return before_ != nullptr && before_ != HGDI_ERROR; }

 private:
  HDC context_;
  HGDIOBJ before_;
};

// All caches share Uniscribe's one list of fonts, which Wine (8.0) walks without a lock.
SRWLOCK uniscribe = SRWLOCK_INIT;

// What Uniscribe keeps of a font from call to call. One at a time.
class ScriptCache {
 public:
  ScriptCache() { AcquireSRWLockExclusive(&uniscribe); }
  ScriptCache(const ScriptCache&) = delete;
  ScriptCache& operator=(const ScriptCache&) = delete;
  ~ScriptCache() {
    ScriptFreeCache(&cache_);
    ReleaseSRWLockExclusive(&uniscribe);
  }

  SCRIPT_CACHE* Get() noexcept { return &cache_; }

 private:
  SCRIPT_CACHE cache_ = nullptr;
};

}  // namespace

bool FontHasGlyphs(const GlyphQuery& query) noexcept {
  if (query.context == nullptr || query.font == nullptr || query.glyphs == nullptr ||
      query.text.size() > INT_MAX) {
    return false;
  }
  const auto context = static_cast<HDC>(query.context);
  const FontSelection selection(context, static_cast<HGDIOBJ>(query.font));
  if (!selection.IsMade()) return false;
  if (query.text.empty()) return true;  // what the system makes of no units is said nowhere
  ScriptCache cache;
  // S_FALSE says that a glyph is missing.
  return ScriptGetCMap(context, cache.Get(), AsWide(query.text.data()),
                       static_cast<int>(query.text.size()), 0, query.glyphs) == S_OK;
}

}  // namespace tarn::platform
