#include "archive/mapi/PropertyValues.h"

#include <algorithm>
#include <bit>
#include <span>
#include <utility>

#include "Platform/CodePages.h"
#include "Platform/Utf8Text.h"
#include "archive/mapi/CodePageNames.h"
#include "archive/mapi/Tags.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mapi {
namespace {

void DropFinalNuls(std::string& text) {
  while (!text.empty() && text.back() == '\0') text.pop_back();
}

// The platform converts what programs of Windows have 8-bit texts in; libraries the rest.
bool IsReadable(uint32_t codePage) {
  return platform::IsCodePageSupported(codePage) || !CharsetOfCodePage(codePage).empty();
}

bool IsWide(uint32_t codePage) {
  return codePage == 1200 || codePage == 1201 || codePage == 12000 || codePage == 12001;
}

std::string Utf8OfUnits(std::u16string_view units) {
  const platform::Conversion needed = platform::MeasureText<char>(units);
  std::string text(needed.size, '\0');
  platform::ConvertText(units, std::span<char>(text));
  return text;
}

bool IsUtf8(std::string_view bytes) { return platform::MeasureText<char16_t>(bytes).isWellFormed; }

uint64_t LittleEndian(std::string_view bytes) {
  uint64_t number = 0;
  for (size_t at = bytes.size(); at-- != 0;)
    number = (number << 8) | static_cast<uint8_t>(bytes[at]);
  return number;
}

}  // namespace

std::optional<uint32_t> TextCodePage(PropertySet& message) {
  PropertyValues values(message, std::nullopt);
  for (const uint16_t id : {kTagMessageCodepage, kTagInternetCodepage}) {
    const std::optional<int64_t> told = values.integer(id);
    // UTF-16 says how the program keeps its texts, and nothing of those that are 8-bit.
    if (!told || *told <= 0 || *told > UINT16_MAX) continue;
    const auto codePage = static_cast<uint32_t>(*told);
    if (IsReadable(codePage) && !IsWide(codePage)) return codePage;
  }
  return std::nullopt;
}

std::string Utf8OfText8(std::string_view bytes, std::optional<uint32_t> codePage) {
  while (!bytes.empty() && bytes.back() == '\0') bytes.remove_suffix(1);
  if (bytes.empty()) return {};
  if (!codePage) codePage = IsUtf8(bytes) ? platform::kCodePageUtf8 : 1252;
  if (!platform::IsCodePageSupported(*codePage)) {
    std::string text = Utf8Of(bytes, CharsetOfCodePage(*codePage));
    DropFinalNuls(text);
    return text;
  }
  std::u16string units(platform::BytesToUtf16(*codePage, bytes, {}), u'\0');
  platform::BytesToUtf16(*codePage, bytes, units);
  return Utf8OfUnits(units);
}

std::string Utf8OfText16(std::string_view bytes) {
  std::u16string units(bytes.size() / 2, u'\0');
  for (size_t at = 0; at < units.size(); ++at) {
    units[at] = static_cast<char16_t>(LittleEndian(bytes.substr(2 * at, 2)));
  }
  while (!units.empty() && units.back() == u'\0') units.pop_back();
  return Utf8OfUnits(units);
}

std::optional<std::string> PropertyValues::bytesOf(uint16_t id,
                                                   std::initializer_list<uint16_t> types,
                                                   size_t limit) {
  const std::optional<uint16_t> type = set_.typeOf(id);
  if (!type || std::find(types.begin(), types.end(), *type) == types.end()) return std::nullopt;
  Outcome<std::string> bytes = set_.bytes(id, limit);
  if (bytes) return std::move(*bytes);
  if (troubles_ != nullptr) {
    const Trouble& trouble = bytes.trouble();
    troubles_->push_back(
        {trouble.kind, "the property " + DescribeTag(id) + " cannot be read: " + trouble.reason});
  }
  return std::nullopt;
}

std::optional<std::string> PropertyValues::fixed(uint16_t id, uint16_t type, size_t width) {
  std::optional<std::string> bytes = bytesOf(id, {type}, kLargestText);
  if (bytes && bytes->size() < width) return std::nullopt;
  if (bytes) bytes->resize(width);
  return bytes;
}

std::optional<std::string> PropertyValues::text(uint16_t id, size_t limit) {
  const std::optional<std::string> bytes = bytesOf(id, {kTypeString, kTypeString8}, limit);
  if (!bytes) return std::nullopt;
  return set_.typeOf(id) == kTypeString ? Utf8OfText16(*bytes) : Utf8OfText8(*bytes, codePage_);
}

std::string PropertyValues::firstText(std::initializer_list<uint16_t> ids) {
  for (const uint16_t id : ids) {
    std::optional<std::string> found = text(id);
    if (found && !found->empty()) return std::move(*found);
  }
  return {};
}

std::optional<int64_t> PropertyValues::integer(uint16_t id) {
  if (const auto bytes = fixed(id, kTypeInteger32, 4)) {
    return static_cast<int32_t>(static_cast<uint32_t>(LittleEndian(*bytes)));
  }
  if (const auto bytes = fixed(id, kTypeInteger16, 2)) {
    return static_cast<int16_t>(static_cast<uint16_t>(LittleEndian(*bytes)));
  }
  if (const auto bytes = fixed(id, kTypeInteger64, 8)) {
    return static_cast<int64_t>(LittleEndian(*bytes));
  }
  return std::nullopt;
}

std::optional<double> PropertyValues::real(uint16_t id) {
  if (const auto bytes = fixed(id, kTypeFloat64, 8))
    return std::bit_cast<double>(LittleEndian(*bytes));
  if (const auto bytes = fixed(id, kTypeFloat32, 4)) {
    return std::bit_cast<float>(static_cast<uint32_t>(LittleEndian(*bytes)));
  }
  return std::nullopt;
}

std::optional<bool> PropertyValues::boolean(uint16_t id) {
  const auto bytes = fixed(id, kTypeBoolean, 1);
  if (!bytes) return std::nullopt;
  return (*bytes)[0] != 0;
}

std::optional<Moment> PropertyValues::time(uint16_t id) {
  const auto bytes = fixed(id, kTypeTime, 8);
  return bytes ? MomentOfFileTime(LittleEndian(*bytes)) : std::nullopt;
}

std::optional<std::array<uint8_t, 16>> PropertyValues::guid(uint16_t id) {
  const auto bytes = fixed(id, kTypeGuid, 16);
  if (!bytes) return std::nullopt;
  std::array<uint8_t, 16> value{};
  std::copy(bytes->begin(), bytes->end(), value.begin());
  return value;
}

std::optional<std::string> PropertyValues::binary(uint16_t id, size_t limit) {
  return bytesOf(id, {kTypeBinary}, limit);
}

}  // namespace tarn::archive::mapi
