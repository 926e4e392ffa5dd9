#include "Utf8.h"

#include "Platform/Utf8Text.h"

namespace tarn::kernel {
namespace {

template <typename From, typename To>
size_t Convert(std::basic_string_view<From> source, std::span<To> destination, bool mayReplace) {
  if (source.empty()) return 0;
  const platform::Conversion made = platform::ConvertText(source, destination);
  if (!made.fits || (!made.isWellFormed && !mayReplace)) return 0;
  if (made.size < destination.size()) destination[made.size] = To{};
  return made.size;
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
