#include "Arguments.h"

#include <windows.h>
// After windows.h, which it needs.
#include <shellapi.h>

#include <memory>
#include <new>

#include "Failure.h"
#include "Platform/Utf8.h"
#include "Platform/win32/WideText.h"
#include "Text.h"

namespace tarn::host {

std::vector<std::string> CommandLineWords(int, char**) {
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> words(
      CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
  if (!words) throw std::bad_alloc();
  std::vector<std::string> texts;
  for (int i = 1; i < count; ++i) {
    const std::u16string_view word = platform::AsUtf16(words.get()[i]);
    if (!platform::IsWellFormed(word)) {
      throw Failure(ExitStatus::Usage, Utf8FromWide(word), "the argument is not UTF-16 text");
    }
    texts.push_back(Utf8FromWide(word));
  }
  return texts;
}

}  // namespace tarn::host
