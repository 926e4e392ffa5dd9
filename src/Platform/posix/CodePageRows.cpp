#include "Platform/posix/CodePageRows.h"

#include <atomic>
#include <memory>
#include <new>
#include <numeric>
#include <optional>

#include "Platform/posix/CodePageSpecs.h"
#include "Platform/posix/IcuConverter.h"
#include "Platform/posix/Johab.h"

namespace tarn::platform {
namespace {

using RowSlots = std::array<std::atomic<const CodePageRow*>, 256>;

struct PageSlots {
  RowSlots decoding;
  RowSlots encoding;
};

// Never freed: other threads may convert until the process ends.
constinit std::array<PageSlots, kCodePageCount> pages{};

constexpr uint16_t kDefaultByte = '?';

const CodePageSpec& SpecOf(size_t page) noexcept { return AllCodePageSpecs()[page]; }

size_t WansungPage() noexcept { return FindCodePageSpec(949); }

constexpr std::array<uint8_t, 256> kAllBytes = [] {
  std::array<uint8_t, 256> bytes{};
  std::iota(bytes.begin(), bytes.end(), uint8_t{0});
  return bytes;
}();

constexpr char16_t UnitAt(uint8_t highByte, uint8_t low) {
  return static_cast<char16_t>((highByte << 8) | low);
}

std::optional<uint8_t> OverlaidByteOf(const CodePageSpec& spec, char16_t unit) noexcept {
  for (const Overlay& overlay : spec.overlays) {
    if (overlay.holdsUnit(unit)) return overlay.byteOf(unit);
  }
  return std::nullopt;
}

bool FillSingleBytes(const CodePageSpec& spec, CodePageRow& row) noexcept {
  IcuConverter converter(spec.converter, spec.bestFit);
  if (!converter.IsOpen()) return false;
  for (const uint8_t byte : kAllBytes) {
    uint16_t& cell = row.cells[byte];
    if (const Overlay* overlay = FindOverlay(spec, byte)) {
      cell = overlay->unitOf(byte);
    } else if (IsLeadByte(spec, byte)) {
      cell = spec.defaultUnit;
    } else {
      cell = converter.Decode({&byte, 1}).value_or(spec.defaultUnit);
    }
  }
  return true;
}

bool FillPairs(const CodePageSpec& spec, uint8_t lead, CodePageRow& row) noexcept {
  IcuConverter converter(spec.converter, spec.bestFit);
  if (!converter.IsOpen()) return false;
  for (const uint8_t trail : kAllBytes) {
    const std::array<uint8_t, 2> pair = {lead, trail};
    row.cells[trail] = converter.Decode(pair).value_or(spec.defaultUnit);
  }
  return true;
}

bool FillJohabPairs(const CodePageSpec& spec, uint8_t lead, CodePageRow& row) noexcept {
  for (const uint8_t trail : kAllBytes) {
    const JohabMeaning meaning = ReadJohabPair(lead, trail);
    uint16_t& cell = row.cells[trail];
    cell = meaning.unit != 0 ? meaning.unit : spec.defaultUnit;
    if (meaning.wansungPair == 0) continue;
    const CodePageRow* wansung = DecodingRow(WansungPage(), HighByte(meaning.wansungPair));
    if (wansung == nullptr) return false;
    cell = wansung->cells[LowByte(meaning.wansungPair)];
  }
  return true;
}

// What the converter says, unless an overlay took that byte from it; then what an overlay says.
uint16_t EncodeUnit(const CodePageSpec& spec, IcuConverter& converter, char16_t unit) noexcept {
  const std::optional<uint16_t> code = converter.Encode(unit);
  if (code) {
    const Overlay* overlay = *code <= 0xFF ? FindOverlay(spec, LowByte(*code)) : nullptr;
    if (overlay == nullptr || overlay->formerUnitStillFits) return *code;
  }
  const std::optional<uint8_t> byte = OverlaidByteOf(spec, unit);
  return byte ? *byte : kDefaultByte;
}

bool FillCodes(const CodePageSpec& spec, uint8_t highByte, CodePageRow& row) noexcept {
  IcuConverter converter(spec.converter, spec.bestFit);
  if (!converter.IsOpen()) return false;
  for (const uint8_t low : kAllBytes) {
    row.cells[low] = EncodeUnit(spec, converter, UnitAt(highByte, low));
  }
  return true;
}

bool FillJohabCodes(const CodePageSpec& spec, uint8_t highByte, CodePageRow& row) noexcept {
  IcuConverter wansung(spec.converter, spec.bestFit);
  if (!wansung.IsOpen()) return false;
  for (const uint8_t low : kAllBytes) {
    const char16_t unit = UnitAt(highByte, low);
    std::optional<uint16_t> code = unit < 0x80 ? unit : JohabPairOfUnit(unit);
    if (!code) code = OverlaidByteOf(spec, unit);
    if (!code) {
      if (const auto pair = wansung.Encode(unit)) code = JohabPairOfWansung(*pair);
    }
    row.cells[low] = code.value_or(kDefaultByte);
  }
  return true;
}

// The row of the slot, made by fill if nobody has made it yet.
template <typename Fill>
const CodePageRow* RowOf(std::atomic<const CodePageRow*>& slot, Fill fill) noexcept {
  const CodePageRow* present = slot.load(std::memory_order_acquire);
  if (present != nullptr) return present;
  std::unique_ptr<CodePageRow> made(new (std::nothrow) CodePageRow);
  if (made == nullptr || !fill(*made)) return nullptr;
  if (slot.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel)) {
    return made.release();
  }
  return present;
}

}  // namespace

const CodePageRow* DecodingRow(size_t page, uint8_t lead) noexcept {
  return RowOf(pages[page].decoding[lead], [page, lead](CodePageRow& row) {
    const CodePageSpec& spec = SpecOf(page);
    if (lead == 0) return FillSingleBytes(spec, row);
    if (spec.number == kCodePageJohab) return FillJohabPairs(spec, lead, row);
    return FillPairs(spec, lead, row);
  });
}

const CodePageRow* EncodingRow(size_t page, uint8_t highByte) noexcept {
  return RowOf(pages[page].encoding[highByte], [page, highByte](CodePageRow& row) {
    const CodePageSpec& spec = SpecOf(page);
    if (spec.number == kCodePageJohab) return FillJohabCodes(spec, highByte, row);
    return FillCodes(spec, highByte, row);
  });
}

}  // namespace tarn::platform
