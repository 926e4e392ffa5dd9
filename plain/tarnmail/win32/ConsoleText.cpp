#include "ConsoleText.h"

#include <windows.h>

namespace tarn::host {
namespace {

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// How many bytes in front, at most `most`, end between two characters.
size_t WholeCharacters(std::string_view bytes, size_t most) {
  if (bytes.size() <= most) return bytes.size();
  constexpr size_t kLongestTail = 3;
  for (size_t length = most; length >= most - kLongestTail; --length) {
    if (!IsContinuation(bytes[length])) return length;
  }
  return most;  // no character: these are continuation bytes alone
}

}  // namespace

std::wstring TakeConsoleText(std::string_view& bytes) {
  const std::string_view part = bytes.substr(0, WholeCharacters(bytes, kMostConsoleBytes));
  bytes.remove_prefix(part.size());
  std::wstring text(part.size(), L'\0');
  const int units = MultiByteToWideChar(CP_UTF8, 0, part.data(), static_cast<int>(part.size()),
                                        text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<size_t>(units));
  return text;
}

}  // namespace tarn::host
