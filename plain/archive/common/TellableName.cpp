#include "archive/common/TellableName.h"

#include "Platform/Utf8.h"

namespace tarn::archive {
namespace {

bool IsDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

// "\xFF"
bool BeginsWithEscape(std::string_view text) {
  return text.size() >= 4 && text.starts_with("\\x") && IsDigit(text[2]) && IsDigit(text[3]);
}

void AppendEscape(std::string& text, char byte) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  text += "\\x";
  text += kDigits[value >> 4];
  text += kDigits[value & 0xF];
}

}  // namespace

std::string TellableName(std::string_view path) {
  std::string name;
  while (!path.empty()) {
    const platform::Character character = platform::FirstCharacter(path);
    const std::string_view bytes = path.substr(0, character.size);
    if (character.isWellFormed && !BeginsWithEscape(path)) {
      name += bytes;
    } else {
      for (const char byte : bytes) AppendEscape(name, byte);
    }
    path.remove_prefix(character.size);
  }
  return name;
}

}  // namespace tarn::archive
