#include "archive/tnef/TnefAttributes.h"

#include <algorithm>
#include <cstddef>

#include "Common/LittleEndian.h"
#include "archive/mapi/RawBytes.h"

namespace tarn::archive::tnef {
namespace {

constexpr uint32_t kSignature = 0x223E9F78;
constexpr size_t kHeaderSize = 6;
constexpr size_t kAttributeHeaderSize = 9;
constexpr size_t kChecksumSize = 2;

uint16_t ChecksumOf(std::string_view bytes) {
  uint32_t sum = 0;
  for (const char byte : bytes) sum += static_cast<unsigned char>(byte);
  return static_cast<uint16_t>(sum);
}

}  // namespace

bool AttributeWalk::IsTnef(std::string_view bytes) {
  return bytes.size() >= kHeaderSize &&
         LoadLittleEndian<uint32_t>(mapi::RawBytes(bytes)) == kSignature;
}

AttributeWalk::AttributeWalk(std::string_view bytes) : rest_(bytes.substr(kHeaderSize)) {}

std::optional<Attribute> AttributeWalk::next() {
  if (rest_.size() < kAttributeHeaderSize) return std::nullopt;
  const unsigned char* const header = mapi::RawBytes(rest_);
  if (header[0] != 1 && header[0] != 2) return std::nullopt;
  Attribute attribute;
  attribute.level = static_cast<Level>(header[0]);
  attribute.id = LoadLittleEndian<uint16_t>(header + 1);
  attribute.type = LoadLittleEndian<uint16_t>(header + 3);
  const uint32_t length = LoadLittleEndian<uint32_t>(header + 5);
  rest_.remove_prefix(kAttributeHeaderSize);
  attribute.bytes = rest_.substr(0, length);
  attribute.isCutOff = attribute.bytes.size() < length;
  rest_.remove_prefix(attribute.bytes.size());
  if (rest_.size() >= kChecksumSize) {
    attribute.isChecked =
        LoadLittleEndian<uint16_t>(mapi::RawBytes(rest_)) == ChecksumOf(attribute.bytes);
  }
  rest_.remove_prefix(std::min(rest_.size(), kChecksumSize));
  return attribute;
}

bool AttributeWalk::endsInOtherBytes() const {
  return rest_.find_first_not_of(std::string_view("\0\r\n \x1A", 5)) != rest_.npos;
}

}  // namespace tarn::archive::tnef
