#include "Arguments.h"

#include <windows.h>
// Behind windows.h, which it needs.
#include <shellapi.h>

#include <memory>
#include <new>

#include "Failure.h"
#include "Text.h"
#include "WideText.h"

namespace tarn::host {
namespace {

bool IsUtf16(std::u16string_view text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const bool isHigh = text[i] >= 0xD800 && text[i] <= 0xDBFF;
    const bool isLow = text[i] >= 0xDC00 && text[i] <= 0xDFFF;
    const bool isPair =
        isHigh && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
    if (isLow || (isHigh && !isPair)) return false;
    if (isPair) ++i;
  }
  return true;
}

}  // namespace

std::vector<std::string> CommandLineWords(int, char**) {
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> words(
      CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
  if (!words) throw std::bad_alloc();
  std::vector<std::string> texts;
  for (int i = 1; i < count; ++i) {
    const std::u16string_view word = AsUtf16(words.get()[i]);
    if (!IsUtf16(word)) {
      throw Failure(ExitStatus::Usage, Utf8FromWide(word), "the argument is not UTF-16 text");
    }
    texts.push_back(Utf8FromWide(word));
  }
  return texts;
}

}  // namespace tarn::host
