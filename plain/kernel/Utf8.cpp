#include "Utf8.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "Platform/Utf8.h"

namespace tarn::kernel {
namespace {

template <typename Unit>
constexpr bool IsAscii(Unit unit) {
  return static_cast<std::make_unsigned_t<Unit>>(unit) < 0x80;
}

// Copies the ASCII run at the front, as far as both sides reach. The units copied.
template <typename From, typename To>
size_t CopyAsciiRun(std::basic_string_view<From> source, std::span<To> destination) {
  constexpr size_t kStride = 16;  // at a time; compilers vectorise them
  const size_t most = std::min(source.size(), destination.size());
  size_t done = 0;
  for (; most - done >= kStride; done += kStride) {
    std::array<From, kStride> units;
    std::copy_n(source.data() + done, kStride, units.data());
    unsigned seen = 0;
    for (const From unit : units) seen |= static_cast<std::make_unsigned_t<From>>(unit);
    if (seen >= 0x80) break;
    for (size_t i = 0; i < kStride; ++i) destination[done + i] = static_cast<To>(units[i]);
  }
  for (; done < most && IsAscii(source[done]); ++done) {
    destination[done] = static_cast<To>(source[done]);
  }
  return done;
}

// What is malformed fails, or becomes U+FFFD.
template <typename From, typename To>
size_t Convert(std::basic_string_view<From> source, std::span<To> destination, bool mayReplace) {
  if (source.empty()) return 0;
  size_t written = 0;
  while (!source.empty()) {
    const size_t ascii = CopyAsciiRun(source, destination.subspan(written));
    source.remove_prefix(ascii);
    written += ascii;
    while (!source.empty() && !IsAscii(source.front())) {
      const platform::Character character = platform::FirstCharacter(source);
      if (!character.isWellFormed && !mayReplace) return 0;
      source.remove_prefix(character.size);
      const size_t units =
          platform::WriteCharacter(character.codePoint, destination.subspan(written));
      if (units == 0) return 0;
      written += units;
    }
    if (written == destination.size() && !source.empty()) return 0;
  }
  if (written < destination.size()) destination[written] = To{};
  return written;
}

}  // namespace

size_t EncodeUtf8(std::u16string_view source, std::span<char> destination) {
  return Convert(source, destination, true);
}

size_t DecodeUtf8(std::string_view source, std::span<char16_t> destination) {
  return Convert(source, destination, false);
}

std::string ToUtf8(std::u16string_view text) {
  if (!platform::IsWellFormed(text)) return {};
  std::string result(text.size() * 3, '\0');
  result.resize(EncodeUtf8(text, result));
  return result;
}

std::u16string ToWide(std::string_view text) {
  std::u16string result(text.size(), u'\0');
  result.resize(DecodeUtf8(text, result));
  return result;
}

}  // namespace tarn::kernel
