#include "Platform/Utf8CodePage.h"

#include "Platform/Output.h"
#include "Platform/Utf8.h"

namespace tarn::platform {

int32_t Utf8ToUtf16(std::string_view source, char16_t* destination, int32_t capacity) noexcept {
  Output<char16_t> output(destination, capacity);
  while (!source.empty()) {
    const Character character = FirstCharacter(source);
    source.remove_prefix(character.size);
    if (!output.PutCharacter(character.codePoint)) return 0;
  }
  return output.Size();
}

int32_t Utf16ToUtf8(std::u16string_view source, char* destination, int32_t capacity,
                    bool& usedDefault) noexcept {
  Output<char> output(destination, capacity);
  while (!source.empty()) {
    const Character character = FirstCharacter(source);
    source.remove_prefix(character.size);
    if (!character.isWellFormed) usedDefault = true;
    if (!output.PutCharacter(character.codePoint)) return 0;
  }
  return output.Size();
}

}  // namespace tarn::platform
