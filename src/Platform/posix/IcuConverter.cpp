#include "Platform/posix/IcuConverter.h"

#include <unicode/ucnv_err.h>

#include <array>

namespace tarn::platform {
namespace {

constexpr int32_t kMost = 8;  // units or bytes of one character, and more than are taken

}  // namespace

IcuConverter::IcuConverter(const char* name, bool oneWayMappings) noexcept {
  UErrorCode error = U_ZERO_ERROR;
  converter_ = ucnv_open(name, &error);
  if (converter_ == nullptr) return;
  ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
  ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
  ucnv_setFallback(converter_, oneWayMappings);
  if (U_FAILURE(error)) {
    ucnv_close(converter_);
    converter_ = nullptr;
  }
}

IcuConverter::~IcuConverter() {
  if (converter_ != nullptr) ucnv_close(converter_);
}

std::optional<char16_t> IcuConverter::Decode(std::span<const uint8_t> bytes) noexcept {
  std::array<UChar, kMost> units{};
  UErrorCode error = U_ZERO_ERROR;
  const int32_t count =
      ucnv_toUChars(converter_, units.data(), kMost, reinterpret_cast<const char*>(bytes.data()),
                    static_cast<int32_t>(bytes.size()), &error);
  if (U_FAILURE(error) || count != 1) return std::nullopt;
  return units[0];
}

std::optional<uint16_t> IcuConverter::Encode(char16_t unit) noexcept {
  std::array<char, kMost> bytes{};
  UErrorCode error = U_ZERO_ERROR;
  const int32_t count = ucnv_fromUChars(converter_, bytes.data(), kMost, &unit, 1, &error);
  // Characters that are ignorable by default fail silently: nothing is written.
  if (U_FAILURE(error) || count < 1 || count > 2) return std::nullopt;
  const auto first = static_cast<uint8_t>(bytes[0]);
  if (count == 1) return first;
  return static_cast<uint16_t>((first << 8) | static_cast<uint8_t>(bytes[1]));
}

}  // namespace tarn::platform
