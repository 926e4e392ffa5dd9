// MsgStreamNames.h - the names in MSG files (MS-OXMSG 2.1 and 2.2).
#ifndef TARN_ARCHIVE_MSGSTREAMNAMES_H
#define TARN_ARCHIVE_MSGSTREAMNAMES_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "archive/mapi/MapiMessage.h"

namespace tarn::archive::msg {

inline constexpr std::string_view kPropertiesName = "__properties_version1.0";
inline constexpr std::string_view kNamesName = "__nameid_version1.0";
inline constexpr std::string_view kStreamPrefix = "__substg1.0_";
inline constexpr std::string_view kRecipientPrefix = "__recip_version1.0_#";
inline constexpr std::string_view kAttachmentPrefix = "__attach_version1.0_#";

// A number of exactly these digits, of either case.
inline std::optional<uint32_t> ParseHexadecimal(std::string_view digits, size_t count) {
  if (digits.size() != count) return std::nullopt;
  uint32_t number = 0;
  for (const char digit : digits) {
    const bool isDecimal = digit >= '0' && digit <= '9';
    const char lower = static_cast<char>(digit | 0x20);
    if (!isDecimal && (lower < 'a' || lower > 'f')) return std::nullopt;
    number = (number << 4) | static_cast<uint32_t>(isDecimal ? digit - '0' : lower - 'a' + 10);
  }
  return number;
}

struct StreamName {
  mapi::PropertyTag tag;
  std::optional<uint32_t> place;  // of one of several values
};

// "__substg1.0_0037001F", "__substg1.0_8001101F-00000002".
inline std::optional<StreamName> ParseStreamName(std::string_view name) {
  constexpr size_t kTagDigits = 8;
  if (name.substr(0, kStreamPrefix.size()) != kStreamPrefix) return std::nullopt;
  name.remove_prefix(kStreamPrefix.size());
  const std::optional<uint32_t> tag = ParseHexadecimal(name.substr(0, kTagDigits), kTagDigits);
  if (!tag) return std::nullopt;
  StreamName parsed{{static_cast<uint16_t>(*tag >> 16), static_cast<uint16_t>(*tag)}, {}};
  if (name.size() == kTagDigits) return parsed;
  if (name[kTagDigits] != '-') return std::nullopt;
  parsed.place = ParseHexadecimal(name.substr(kTagDigits + 1), 8);
  if (!parsed.place) return std::nullopt;
  return parsed;
}

}  // namespace tarn::archive::msg

#endif
