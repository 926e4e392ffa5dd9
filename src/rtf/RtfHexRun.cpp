#include "rtf/RtfHexRun.h"

#include <algorithm>
#include <array>

#include "Platform/CodePages.h"

namespace tarn {
namespace {

constexpr size_t kEscapeSize = 4;  // \'hh
constexpr size_t kShortRun = 64;   // converted without a block of its own

consteval std::array<uint8_t, 256> MakeHexValues() {
  std::array<uint8_t, 256> values = {};
  for (size_t byte = 0; byte < values.size(); ++byte) {
    size_t value = byte;
    if (byte >= '0' && byte <= '9') value = byte - '0';
    if (byte >= 'A' && byte <= 'Z') value = byte - 'A' + 10;
    if (byte >= 'a' && byte <= 'z') value = byte - 'a' + 10;
    values[byte] = static_cast<uint8_t>(value);
  }
  return values;
}

constexpr std::array<uint8_t, 256> kHexValues = MakeHexValues();

unsigned HexValueAt(std::string_view text, size_t at) {
  return at < text.size() ? kHexValues[static_cast<unsigned char>(text[at])] : 0;
}

// Writes the bytes of the run. An escape that the end cuts off belongs to a run only as its first.
bool WriteRunBytes(std::string_view& text, RtfScanOutput& output) {
  while (true) {
    const unsigned value = HexValueAt(text, 2) * 16 + HexValueAt(text, 3);
    if (!output.putRaw(static_cast<char>(value & 0xFF))) return false;
    const bool isLast = text.size() < 2 * kEscapeSize;
    text.remove_prefix(std::min(text.size(), kEscapeSize));
    if (isLast || text[0] != '\\' || text[1] != '\'') return true;
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

bool DecodeRtfHexRun(std::string_view& text, RtfScanOutput& output, uint32_t codePage) {
  const size_t offset = output.length();
  if (!WriteRunBytes(text, output)) return false;

  const std::string_view bytes = output.from(offset);
  const size_t room = 2 * bytes.size() + 2;
  std::array<char16_t, 2 * kShortRun + 2> shortRun;
  KernelBlock<char16_t> longRun;
  if (room > shortRun.size()) {
    longRun = AllocateZeroBlock<char16_t>(room, TARN_HERE);
    if (!longRun) return true;
  }
  char16_t* const units = longRun ? longRun.get() : shortRun.data();
  // 0 is the code page of the system.
  const uint32_t page = codePage == 0 ? platform::AnsiCodePage() : codePage;
  const std::u16string_view decoded(units, platform::BytesToUtf16(page, bytes, {units, room}));
  if (decoded.empty()) return true;
  if (!output.makeRoomForUnits(offset, bytes.size(), decoded.size())) return false;
  output.rewind(offset);
  for (const char16_t unit : decoded) WriteUnit(output, unit);
  return true;
}

}  // namespace tarn
