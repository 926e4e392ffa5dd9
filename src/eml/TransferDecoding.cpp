// Base64 is filtered and decoded in one pass. Four table lookups turn a group of four characters
// into three bytes, and the same lookups tell whether all four are plain characters of the
// alphabet; only a group that is not (line ends, "=", anything foreign) is collected byte by byte.
//
// Quoted-printable is copied in words of eight bytes up to the next byte that means something.
#include "eml/TransferDecoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

// Base64 --------------------------------------------------------------------------------------

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint32_t kSlashValue = 63;

// Values of four characters, each shifted to its place in the group's 24 bits.
constexpr uint32_t kNotPlain = 1U << 24;
using GroupTable = std::array<uint32_t, 256>;

constexpr GroupTable MakeGroupTable(unsigned shift) {
  GroupTable table = {};
  for (uint32_t& entry : table) entry = kNotPlain;
  for (uint32_t value = 0; value < kAlphabet.size(); ++value) {
    table[static_cast<unsigned char>(kAlphabet[value])] = value << shift;
  }
  return table;
}

constexpr std::array<GroupTable, 4> kGroupTables = {MakeGroupTable(18), MakeGroupTable(12),
                                                    MakeGroupTable(6), MakeGroupTable(0)};

uint32_t PlainGroup(const char* source) {
  uint32_t group = 0;
  for (size_t i = 0; i < 4; ++i) group |= kGroupTables[i][static_cast<unsigned char>(source[i])];
  return group;
}

bool IsKept(char character) {
  return character == '=' || kGroupTables[3][static_cast<unsigned char>(character)] != kNotPlain;
}

// "=" counts as "/" does: callers rely on the bytes that a misplaced "=" gives.
uint32_t ValueOf(char character) {
  return character == '=' ? kSlashValue : kGroupTables[3][static_cast<unsigned char>(character)];
}

class Base64Output {
 public:
  Base64Output(char* destination, uint64_t capacity)
      : destination_(destination), capacity_(capacity) {}

  uint64_t written() const { return written_; }

  // Three bytes and a zero behind them, which later bytes overwrite. The caller has read four
  // bytes for them, so that they are in front of what is still to be read and within its length.
  void putPlainGroup(uint32_t group) {
    const uint32_t bytes = group << 8;
    const char four[4] = {static_cast<char>(bytes >> 24), static_cast<char>(bytes >> 16),
                          static_cast<char>(bytes >> 8), 0};
    std::memcpy(destination_ + written_, four, sizeof four);
    written_ += 3;
  }

  void putGroup(const char (&group)[4]) {
    const uint32_t a = ValueOf(group[0]);
    const uint32_t b = ValueOf(group[1]);
    const uint32_t c = ValueOf(group[2]);
    const uint32_t d = ValueOf(group[3]);
    put(a << 2 | b >> 4);
    if (group[2] != '=') put(b << 4 | c >> 2);
    if (group[3] != '=') put(c << 6 | d);
  }

 private:
  void put(uint32_t byte) {
    if (written_ < capacity_) destination_[written_++] = static_cast<char>(byte);
  }

  char* destination_;
  uint64_t capacity_;
  uint64_t written_ = 0;
};

// Quoted-printable ------------------------------------------------------------------------------

// What a byte behind "=" is worth: a hexadecimal digit its value, any other byte itself.
constexpr std::array<int8_t, 256> kHexValues = [] {
  std::array<int8_t, 256> table = {};
  for (size_t i = 0; i < 256; ++i) table[i] = static_cast<int8_t>(i);
  for (size_t i = 0; i < 10; ++i) table[size_t{'0'} + i] = static_cast<int8_t>(i);
  for (size_t i = 0; i < 6; ++i) {
    table[size_t{'A'} + i] = static_cast<int8_t>(10 + i);
    table[size_t{'a'} + i] = static_cast<int8_t>(10 + i);
  }
  return table;
}();

constexpr int8_t kHighestDigit = 15;

// The same for digits alone; 0xFF for any other byte.
constexpr std::array<unsigned char, 256> kDigits = [] {
  std::array<unsigned char, 256> table = {};
  table.fill(0xFF);
  for (const char digit : std::string_view("0123456789ABCDEFabcdef")) {
    const auto place = static_cast<unsigned char>(digit);
    table[place] = static_cast<unsigned char>(kHexValues[place]);
  }
  return table;
}();

// Marks in each byte whether that byte of the word is `byte`; exact up to the first one.
uint64_t MarkBytes(uint64_t word, char byte) {
  constexpr uint64_t kOnes = 0x0101010101010101U;
  const uint64_t differences = word ^ (kOnes * static_cast<unsigned char>(byte));
  return (differences - kOnes) & ~differences & (kOnes << 7);
}

// Decodes the escapes "=XX" of two digits that the source begins with, and returns their number.
uint64_t DecodePlainEscapes(std::string_view source, char* destination) {
  uint64_t count = 0;
  for (const char* p = source.data(); source.size() - 3 * count >= 3 && *p == '='; p += 3) {
    const unsigned high = kDigits[static_cast<unsigned char>(p[1])];
    const unsigned low = kDigits[static_cast<unsigned char>(p[2])];
    if ((high | low) > 15) break;
    destination[count++] = static_cast<char>(high << 4 | low);
  }
  return count;
}

// Copies the bytes of the source up to the first "=" or `other`, and returns their number. May
// write up to eight bytes more, but no more than the source has.
uint64_t CopyPlainRun(std::string_view source, char* destination, char other) {
  uint64_t i = 0;
  for (; source.size() - i >= 8; i += 8) {
    uint64_t word;
    std::memcpy(&word, source.data() + i, sizeof word);
    std::memcpy(destination + i, &word, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    const uint64_t marks = MarkBytes(word, '=') | MarkBytes(word, other);
    if (marks != 0) return i + static_cast<uint64_t>(std::countr_zero(marks)) / 8;
  }
  for (; i < source.size() && source[i] != '=' && source[i] != other; ++i) {
    destination[i] = source[i];
  }
  return i;
}

}  // namespace

TransferEncoding ClassifyTransferEncoding(const char* start, const char* end) {
  if (StartsWithIgnoringCase(start, end, "quoted-printable")) return TransferQuotedPrintable;
  if (StartsWithIgnoringCase(start, end, "base64")) return TransferBase64;
  if (StartsWithIgnoringCase(start, end, "8bit")) return TransferRaw;
  if (StartsWithIgnoringCase(start, end, "7bit")) return Transfer7Bit;
  return TransferRaw;
}

int32_t DecodeBase64(const char* source, uint64_t length, char* destination, uint64_t& capacity) {
  if (source == nullptr || destination == nullptr || capacity < length) return StatusBadArgument;
  if (length == 0) return StatusOutOfMemory;

  Base64Output output(destination, capacity);
  char group[4];
  uint64_t collected = 0;
  for (uint64_t i = 0; i < length;) {
    if (collected == 0) {
      for (; length - i >= 4; i += 4) {
        const uint32_t plain = PlainGroup(source + i);
        if (plain >= kNotPlain) break;
        output.putPlainGroup(plain);
      }
      if (i == length) break;
    }
    const char character = source[i++];
    if (!IsKept(character)) continue;
    group[collected++] = character;
    if (collected == 4) {
      output.putGroup(group);
      collected = 0;
    }
  }
  if (collected != 0) {
    std::fill(group + collected, group + 4, 'A');
    output.putGroup(group);
  }
  capacity = output.written();
  return StatusOk;
}

uint64_t DecodeQuotedPrintable(std::string_view source, char* destination, bool underscoreIsBlank,
                               std::string_view behind) {
  const auto byteAt = [source, behind](uint64_t i) {
    if (i < source.size()) return source[i];
    return i - source.size() < behind.size() ? behind[i - source.size()] : '\0';
  };

  const char blank = underscoreIsBlank ? '_' : '=';
  uint64_t i = 0;
  uint64_t o = 0;
  while (i < source.size()) {
    if (source[i] != '=') {
      if (source[i] == blank) {
        destination[o++] = ' ';
        ++i;
      } else {
        const uint64_t run = CopyPlainRun(source.substr(i), destination + o, blank);
        i += run;
        o += run;
      }
      continue;
    }
    const uint64_t escapes = DecodePlainEscapes(source.substr(i), destination + o);
    if (escapes != 0) {
      i += 3 * escapes;
      o += escapes;
      continue;
    }
    const char first = byteAt(i + 1);
    const char second = byteAt(i + 2);
    // One digit is enough, and a byte from 0x80 up passes for one. An LF does, too: a line end that
    // is no CR LF is not a soft one.
    const int8_t high = kHexValues[static_cast<unsigned char>(first)];
    const int8_t low = kHexValues[static_cast<unsigned char>(second)];
    if (first == '\r' && second == '\n') {
      i += 3;
    } else if (high <= kHighestDigit || low <= kHighestDigit) {
      destination[o++] = static_cast<char>(high * 16 + low);
      i += 3;
    } else {
      destination[o++] = '\0';
      ++i;
    }
  }
  // What the copying of whole words left behind the text.
  std::fill_n(destination + o, std::min<uint64_t>(source.size() - o, 8), '\0');
  return o;
}

int32_t DecodePartContent(EmlPart& part, uint64_t length) {
  // Stands in front of 7-bit content of every type and stays in the document.
  constexpr std::string_view k7BitMark = "+/v";
  // A last group of one or two characters gives up to two bytes more than it has.
  constexpr uint64_t kBase64Surplus = 2;

  if (!part.raw) return StatusBadArgument;
  uint64_t room = length;
  if (part.encoding == Transfer7Bit) room += k7BitMark.size();
  if (part.encoding == TransferBase64) room += kBase64Surplus;
  part.decodedLength = 0;
  part.decoded = AllocateZeroBlock<char>(room + 1, TARN_HERE);
  if (!part.decoded) return StatusOutOfMemory;

  const char* const raw = part.raw.get();
  char* const decoded = part.decoded.get();
  switch (part.encoding) {
    case TransferQuotedPrintable:
      part.decodedLength = DecodeQuotedPrintable({raw, length}, decoded, false, {});
      return StatusOk;
    case TransferBase64: {
      const int32_t status = DecodeBase64(raw, length, decoded, room);
      if (status == StatusOk) part.decodedLength = room;
      return status;
    }
    case Transfer7Bit:
      std::memcpy(decoded, k7BitMark.data(), k7BitMark.size());
      std::memcpy(decoded + k7BitMark.size(), raw, length);
      part.decodedLength = length + k7BitMark.size();
      return StatusOk;
    case TransferRaw:
      break;
  }
  std::memcpy(decoded, raw, length);
  part.decodedLength = length;
  return StatusOk;
}

}  // namespace tarn
