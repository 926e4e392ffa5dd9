#include "Platform/Utf8CodePage.h"

#include <cstdint>

#include "Platform/Utf8Text.h"

namespace tarn::platform {
namespace {

// An empty destination counts.
template <typename From, typename To>
Conversion Convert(std::basic_string_view<From> source, std::span<To> destination) noexcept {
  const Conversion conversion =
      destination.empty() ? MeasureText<To>(source) : ConvertText(source, destination);
  return conversion.fits && conversion.size <= INT32_MAX ? conversion : Conversion{};
}

}  // namespace

size_t Utf8ToUtf16(std::string_view source, std::span<char16_t> destination) noexcept {
  return Convert(source, destination).size;
}

EncodedBytes Utf16ToUtf8(std::u16string_view source, std::span<char> destination) noexcept {
  const Conversion conversion = Convert(source, destination);
  return {conversion.size, !conversion.isWellFormed};
}

}  // namespace tarn::platform
