#include "rtf/RtfHexRun.h"

#include <algorithm>
#include <array>

#include "Platform/CodePages.h"
#include "rtf/ConversionCapacity.h"

namespace tarn {
namespace {

constexpr uint64_t kEscapeSize = 4;  // \'hh
constexpr uint64_t kShortRun = 64;   // converted without a block of its own

constexpr std::array<uint8_t, 256> kHexValues = [] {
  std::array<uint8_t, 256> values = {};
  for (size_t byte = 0; byte < values.size(); ++byte) {
    size_t value = byte;
    if (byte >= '0' && byte <= '9') value = byte - '0';
    if (byte >= 'A' && byte <= 'Z') value = byte - 'A' + 10;
    if (byte >= 'a' && byte <= 'z') value = byte - 'a' + 10;
    values[byte] = static_cast<uint8_t>(value);
  }
  return values;
}();

unsigned HexValueAt(const char* at, const char* end) {
  return at < end ? kHexValues[static_cast<unsigned char>(*at)] : 0;
}

// Writes the bytes of the run. An escape that the end cuts off belongs to a run only as its first.
bool WriteRunBytes(const char*& cursor, const char* end, RtfScanOutput& output) {
  while (true) {
    const unsigned value = HexValueAt(cursor + 2, end) * 16 + HexValueAt(cursor + 3, end);
    if (!output.putRaw(static_cast<char>(value & 0xFF))) return false;
    const auto left = static_cast<uint64_t>(end - cursor);
    cursor += std::min(left, kEscapeSize);
    if (left < 2 * kEscapeSize || cursor[0] != '\\' || cursor[1] != '\'') return true;
  }
}

void WriteUnit(RtfScanOutput& output, unsigned unit) {
  if (unit < 128) {
    output.put(static_cast<char>(unit));
    return;
  }
  constexpr char kDigits[] = "0123456789ABCDEF";
  output.write("&#x");
  if (unit >= 0x1000) output.put(kDigits[unit >> 12]);
  if (unit >= 0x100) output.put(kDigits[unit >> 8 & 15]);
  output.put(kDigits[unit >> 4 & 15]);
  output.put(kDigits[unit & 15]);
  output.put(';');
}

}  // namespace

int32_t DecodeRtfHexRun(const char*& cursor, const char* end, RtfScanOutput& output,
                        uint32_t codePage) {
  const uint64_t offset = output.length();
  if (!WriteRunBytes(cursor, end, output)) return 0;

  const std::string_view bytes = output.from(offset);
  const uint64_t room = 2 * bytes.size() + 2;
  std::array<char16_t, 2 * kShortRun + 2> shortRun;
  KernelBlock<char16_t> longRun;
  if (room > shortRun.size()) {
    longRun = AllocateZeroBlock<char16_t>(room, TARN_HERE);
    if (!longRun) return 1;
  }
  char16_t* const units = longRun ? longRun.get() : shortRun.data();
  // 0 stands for the code page of the system.
  const uint32_t page = codePage == 0 ? platform::AnsiCodePage() : codePage;
  const int32_t converted = platform::BytesToUtf16(page, bytes, units, ConversionCapacity(room));
  if (converted <= 0) return 1;

  const auto count = static_cast<uint64_t>(converted);
  if (!output.makeRoomForUnits(offset, bytes.size(), count)) return 0;
  output.rewind(offset);
  for (uint64_t i = 0; i < count; ++i) WriteUnit(output, units[i]);
  return 1;
}

}  // namespace tarn
