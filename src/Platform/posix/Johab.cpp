#include "Platform/posix/Johab.h"

#include <array>
#include <cstddef>

namespace tarn::platform {
namespace {

constexpr uint8_t kNone = 0xFF;  // no letter has this code
constexpr uint8_t kFill = 0xFE;

// The letters of the 32 codes, counted in the order of Unicode.
using LetterOfCode = std::array<uint8_t, 32>;

consteval LetterOfCode MakeInitials() {
  LetterOfCode letters{};
  letters.fill(kNone);
  letters[1] = kFill;
  for (uint8_t code = 2; code <= 20; ++code) letters[code] = static_cast<uint8_t>(code - 2);
  return letters;
}

// The codes of the vowels come in four runs of up to six, each aligned to 8.
consteval LetterOfCode MakeMedials() {
  LetterOfCode letters{};
  letters.fill(kNone);
  letters[2] = kFill;
  uint8_t letter = 0;
  for (uint8_t code = 3; code <= 29; ++code) {
    if (code % 8 >= 2) letters[code] = letter++;
  }
  return letters;
}

// Finals are counted from 1; 18 is left out of their codes.
consteval LetterOfCode MakeFinals() {
  LetterOfCode letters{};
  letters.fill(kNone);
  letters[1] = kFill;
  for (uint8_t code = 2; code <= 17; ++code) letters[code] = static_cast<uint8_t>(code - 1);
  for (uint8_t code = 19; code <= 29; ++code) letters[code] = static_cast<uint8_t>(code - 2);
  return letters;
}

constexpr LetterOfCode kInitials = MakeInitials();
constexpr LetterOfCode kMedials = MakeMedials();
constexpr LetterOfCode kFinals = MakeFinals();
constexpr uint32_t kVowels = 21;
constexpr uint32_t kFinalsAndNone = 28;

constexpr uint32_t CodeOf(const LetterOfCode& letters, uint32_t letter) {
  uint32_t code = 0;
  while (letters[code] != letter) ++code;
  return code;
}

constexpr uint16_t JoinCodes(uint32_t initial, uint32_t medial, uint32_t final) {
  return static_cast<uint16_t>(0x8000u | (initial << 10) | (medial << 5) | final);
}

constexpr char16_t kFirstSyllable = 0xAC00;
constexpr char16_t kLastSyllable = 0xD7A3;
constexpr char16_t kFirstInitial = 0x1100;
constexpr char16_t kFirstMedial = 0x1161;
constexpr char16_t kBeforeFinals = 0x11A7;
constexpr char16_t kFirstUserUnit = 0xE000;
constexpr uint32_t kCellsOfLead = 188;

// The old letters, at 0xDAD4 to 0xDAFE. Page 949 has them as compatibility letters.
constexpr uint16_t kOldLettersPair = 0xDAD4;
constexpr std::array<char16_t, 43> kOldLetters = {
    0x115F, 0x1114, 0x1115, 0x11C7, 0x11C8, 0x11CC, 0x11CE, 0x11D3, 0x11D7, 0x11D9, 0x111C,
    0x11DD, 0x11DF, 0x111D, 0x111E, 0x1120, 0x1122, 0x1123, 0x1127, 0x1128, 0x112B, 0x112C,
    0x112D, 0x112E, 0x112F, 0x1132, 0x1136, 0x1140, 0x1147, 0x114C, 0x1145, 0x1146, 0x1157,
    0x1158, 0x1159, 0x1184, 0x1185, 0x1188, 0x1191, 0x1192, 0x1194, 0x119E, 0x11A1};
constexpr uint32_t kLettersRow = 0x24;  // the row of KS X 1001 that Johab does not carry

char16_t UnitOfSyllableBlock(uint32_t pair) noexcept {
  const uint32_t initial = kInitials[(pair >> 10) & 31];
  const uint32_t medial = kMedials[(pair >> 5) & 31];
  const uint32_t final = kFinals[pair & 31];
  if (initial == kNone || medial == kNone || final == kNone) return 0;
  const uint32_t finalOrNone = final == kFill ? 0 : final;
  if (initial != kFill && medial != kFill) {
    return static_cast<char16_t>(kFirstSyllable + (initial * kVowels + medial) * kFinalsAndNone +
                                 finalOrNone);
  }
  if (initial != kFill) {
    return final == kFill ? static_cast<char16_t>(kFirstInitial + initial) : char16_t{0};
  }
  if (medial != kFill) {
    return final == kFill ? static_cast<char16_t>(kFirstMedial + medial) : char16_t{0};
  }
  return final == kFill ? char16_t{0} : static_cast<char16_t>(kBeforeFinals + final);
}

// Trail bytes are 0x31 to 0x7E and 0x91 to 0xFE, 188 cells.
std::optional<uint32_t> CellOfTrail(uint8_t trail) noexcept {
  if (trail >= 0x31 && trail <= 0x7E) return trail - 0x31u;
  if (trail >= 0x91 && trail <= 0xFE) return trail - 0x91u + 78;
  return std::nullopt;
}

constexpr uint16_t PairOfCell(uint32_t lead, uint32_t cell) {
  return static_cast<uint16_t>((lead << 8) | (cell < 78 ? cell + 0x31 : cell - 78 + 0x91));
}

}  // namespace

JohabMeaning ReadJohabPair(uint8_t lead, uint8_t trail) noexcept {
  const uint32_t pair = (static_cast<uint32_t>(lead) << 8) | trail;
  if (lead < 0xD8) return {.unit = UnitOfSyllableBlock(pair)};
  const std::optional<uint32_t> cell = CellOfTrail(trail);
  if (!cell) return {};
  if (lead == 0xD8) return {.unit = static_cast<char16_t>(kFirstUserUnit + *cell)};
  if (pair >= kOldLettersPair && pair < kOldLettersPair + kOldLetters.size()) {
    return {.unit = kOldLetters[pair - kOldLettersPair]};
  }
  const uint32_t firstRow = lead < 0xE0 ? 0x21 + 2 * (lead - 0xD9u) : 0x4A + 2 * (lead - 0xE0u);
  const uint32_t row = firstRow + *cell / 94;
  if (row == kLettersRow) return {};
  return {.wansungPair = static_cast<uint16_t>(((row + 0x80) << 8) | (*cell % 94 + 0xA1))};
}

std::optional<uint16_t> JohabPairOfUnit(char16_t unit) noexcept {
  if (unit >= kFirstSyllable && unit <= kLastSyllable) {
    const uint32_t syllable = unit - kFirstSyllable;
    const uint32_t final = syllable % kFinalsAndNone;
    const uint32_t medial = syllable / kFinalsAndNone % kVowels;
    const uint32_t initial = syllable / kFinalsAndNone / kVowels;
    return JoinCodes(CodeOf(kInitials, initial), CodeOf(kMedials, medial),
                     CodeOf(kFinals, final == 0 ? kFill : final));
  }
  const uint32_t noInitial = CodeOf(kInitials, kFill);
  const uint32_t noMedial = CodeOf(kMedials, kFill);
  const uint32_t noFinal = CodeOf(kFinals, kFill);
  if (unit >= kFirstInitial && unit < kFirstInitial + 19) {
    return JoinCodes(CodeOf(kInitials, unit - kFirstInitial), noMedial, noFinal);
  }
  if (unit >= kFirstMedial && unit < kFirstMedial + kVowels) {
    return JoinCodes(noInitial, CodeOf(kMedials, unit - kFirstMedial), noFinal);
  }
  if (unit > kBeforeFinals && unit < kBeforeFinals + kFinalsAndNone) {
    return JoinCodes(noInitial, noMedial, CodeOf(kFinals, unit - kBeforeFinals));
  }
  if (unit >= kFirstUserUnit && unit < kFirstUserUnit + kCellsOfLead) {
    return PairOfCell(0xD8, unit - kFirstUserUnit);
  }
  for (size_t at = 0; at < kOldLetters.size(); ++at) {
    if (kOldLetters[at] == unit) return static_cast<uint16_t>(kOldLettersPair + at);
  }
  return std::nullopt;
}

std::optional<uint16_t> JohabPairOfWansung(uint16_t wansungPair) noexcept {
  const uint32_t row = (wansungPair >> 8) - 0x80u;
  const uint32_t cell = (wansungPair & 0xFFu) - 0xA1u;
  if (cell >= 94 || row == kLettersRow) return std::nullopt;
  if (row >= 0x21 && row <= 0x2C) {
    return PairOfCell(0xD9 + (row - 0x21) / 2, (row - 0x21) % 2 * 94 + cell);
  }
  if (row >= 0x4A && row <= 0x7D) {
    return PairOfCell(0xE0 + (row - 0x4A) / 2, (row - 0x4A) % 2 * 94 + cell);
  }
  return std::nullopt;
}

}  // namespace tarn::platform
