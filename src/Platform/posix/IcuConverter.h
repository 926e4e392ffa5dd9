// IcuConverter.h - one ICU converter, asked for single characters.
//
// Owns the converter. An object that could not be opened maps nothing and says so by IsOpen.
#ifndef TARN_PLATFORM_POSIX_ICU_CONVERTER_H
#define TARN_PLATFORM_POSIX_ICU_CONVERTER_H

#define U_SHOW_CPLUSPLUS_API 0
#include <unicode/ucnv.h>

#include <cstdint>
#include <optional>
#include <span>

namespace tarn::platform {

class IcuConverter {
 public:
  IcuConverter(const char* name, bool oneWayMappings) noexcept;
  ~IcuConverter();
  IcuConverter(const IcuConverter&) = delete;
  IcuConverter& operator=(const IcuConverter&) = delete;

  bool IsOpen() const noexcept { return converter_ != nullptr; }

  // The unit for exactly these bytes; none when they are not one character of one unit.
  std::optional<char16_t> Decode(std::span<const uint8_t> bytes) noexcept;

  // The byte, or the pair with the lead byte in the high half; none when the unit is not mapped.
  std::optional<uint16_t> Encode(char16_t unit) noexcept;

 private:
  UConverter* converter_ = nullptr;
};

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_POSIX_ICU_CONVERTER_H
