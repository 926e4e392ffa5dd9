#include "ConsoleText.h"

#include <array>
#include <span>

#include "Platform/Utf8.h"

namespace tarn::host {

std::wstring TakeConsoleText(std::string_view& bytes) {
  std::wstring text;
  size_t taken = 0;
  while (taken < bytes.size()) {
    const platform::Character character = platform::FirstCharacter(bytes.substr(taken));
    if (character.size > kMostConsoleBytes - taken) break;
    std::array<char16_t, 2> units;
    const size_t count = platform::WriteCharacter(character.codePoint, std::span<char16_t>(units));
    text.append(units.data(), units.data() + count);
    taken += character.size;
  }
  bytes.remove_prefix(taken);
  return text;
}

}  // namespace tarn::host
