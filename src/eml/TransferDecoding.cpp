// Base64 is filtered and decoded in one pass. Four table lookups turn a group of four characters
// into three bytes, and the same lookups tell whether all four are plain characters of the
// alphabet; only a group that is not (line ends, "=", anything foreign) is collected byte by byte.
//
// Quoted-printable is copied in words of eight bytes up to the next byte that means something.
//
// A part may be most of its file, so the length of its text is counted before the block is made.
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

consteval GroupTable MakeGroupTable(unsigned shift) {
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

  // Three bytes and a zero after them, which later bytes overwrite. The caller has read four
  // bytes for them, so that they are before what is still to be read.
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

// Decodes into a destination with room for three bytes for each group of four that are kept, and
// for one more.
uint64_t DecodeGroups(std::string_view source, char* destination, uint64_t capacity) {
  Base64Output output(destination, capacity);
  char group[4];
  uint64_t collected = 0;
  for (uint64_t i = 0; i < source.size();) {
    if (collected == 0) {
      for (; source.size() - i >= 4; i += 4) {
        const uint32_t plain = PlainGroup(source.data() + i);
        if (plain >= kNotPlain) break;
        output.putPlainGroup(plain);
      }
      if (i == source.size()) break;
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
  return output.written();
}

// How many bytes of the source DecodeGroups keeps.
uint64_t CountKept(std::string_view source) {
  uint64_t count = 0;
  for (uint64_t i = 0; i < source.size(); ++i) {
    for (; source.size() - i >= 4 && PlainGroup(source.data() + i) < kNotPlain; i += 4) count += 4;
    if (i < source.size() && IsKept(source[i])) ++count;
  }
  return count;
}

// Quoted-printable ------------------------------------------------------------------------------

// What a byte after "=" is worth: a hexadecimal digit its value, any other byte itself.
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

// What an "=" and the two bytes after it are: how many bytes of the source, and the byte they give.
struct Escape {
  uint64_t length;
  bool hasByte;
  char byte;
};

// One digit is enough, and a byte from 0x80 up passes for one. An LF does, too: a line end that is
// no CR LF is not a soft one.
Escape ReadEscape(char first, char second) {
  if (first == '\r' && second == '\n') return {3, false, '\0'};
  const int8_t high = kHexValues[static_cast<unsigned char>(first)];
  const int8_t low = kHexValues[static_cast<unsigned char>(second)];
  if (high > kHighestDigit && low > kHighestDigit) return {1, true, '\0'};
  return {3, true, static_cast<char>(high * 16 + low)};
}

// How many bytes the quoted-printable source gives, zeros coming after its end.
uint64_t CountQuotedPrintable(std::string_view source) {
  uint64_t count = 0;
  for (uint64_t i = 0; i < source.size();) {
    const size_t next = std::min(source.find('=', i), source.size());
    count += next - i;
    i = next;
    if (i == source.size()) break;
    const uint64_t left = source.size() - i;
    const Escape escape =
        ReadEscape(left > 1 ? source[i + 1] : '\0', left > 2 ? source[i + 2] : '\0');
    if (escape.hasByte) ++count;
    i += escape.length;
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

TransferEncoding ClassifyTransferEncoding(std::string_view value) {
  if (StartsWithIgnoringCase(value, "quoted-printable")) return TransferQuotedPrintable;
  if (StartsWithIgnoringCase(value, "base64")) return TransferBase64;
  if (StartsWithIgnoringCase(value, "8bit")) return TransferRaw;
  if (StartsWithIgnoringCase(value, "7bit")) return Transfer7Bit;
  return TransferRaw;
}

Status DecodeBase64(std::string_view source, char* destination, uint64_t& capacity) {
  if (source.data() == nullptr || destination == nullptr || capacity < source.size()) {
    return StatusBadArgument;
  }
  if (source.empty()) return StatusOutOfMemory;

  capacity = DecodeGroups(source, destination, capacity);
  return StatusOk;
}

uint64_t DecodeQuotedPrintable(std::string_view source, char* destination, bool underscoreIsBlank,
                               std::string_view after) {
  const auto byteAt = [source, after](uint64_t i) {
    if (i < source.size()) return source[i];
    return i - source.size() < after.size() ? after[i - source.size()] : '\0';
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
    const Escape escape = ReadEscape(byteAt(i + 1), byteAt(i + 2));
    if (escape.hasByte) destination[o++] = escape.byte;
    i += escape.length;
  }
  // What the copying of whole words left after the text.
  std::fill_n(destination + o, std::min<uint64_t>(source.size() - o, 8), '\0');
  return o;
}

namespace {

constexpr std::string_view k7BitMark = "+/v";  // before 7-bit content of every type, to stay there

// Bytes that the content decodes to, or a few more than that.
uint64_t RoomForDecoded(const EmlPart& part) {
  switch (part.encoding) {
    case TransferQuotedPrintable:
      // Whole words are copied, and what they leave after the text is cleared.
      return CountQuotedPrintable(part.raw) + 8;
    case TransferBase64:
      return (CountKept(part.raw) + 3) / 4 * 3;
    case Transfer7Bit:
      return part.raw.size() + k7BitMark.size();
    case TransferRaw:
      break;
  }
  return part.raw.size();
}

uint64_t DecodeInto(const EmlPart& part, char* decoded, uint64_t room) {
  switch (part.encoding) {
    case TransferQuotedPrintable:
      return DecodeQuotedPrintable(part.raw, decoded, false, {});
    case TransferBase64:
      return DecodeGroups(part.raw, decoded, room);
    case Transfer7Bit:
      decoded += k7BitMark.copy(decoded, k7BitMark.size());
      return k7BitMark.size() + part.raw.copy(decoded, part.raw.size());
    case TransferRaw:
      break;
  }
  return part.raw.copy(decoded, part.raw.size());
}

}  // namespace

Status DecodePartContent(EmlPart& part) {
  constexpr uint64_t kSlack = 32;
  if (part.raw.data() == nullptr) return StatusBadArgument;
  part.decoded.release();
  const uint64_t room = RoomForDecoded(part);
  const auto decode = [&](char* block) {
    const uint64_t length = DecodeInto(part, block, room);
    block[length] = '\0';
    return length;
  };
  if (!part.decoded.overwrite(room + 1, decode)) return StatusOutOfMemory;

  // Only base64 of many misplaced "=" has so much to spare. One byte is the NUL's, and the block
  // may stay as it is.
  if (room - part.decoded.length() >= kSlack) part.decoded.fitBlock(1);
  const bool fails = part.encoding == TransferBase64 && part.raw.empty();
  return fails ? StatusOutOfMemory : StatusOk;
}

Status EnsureDecoded(EmlPart& part) {
  if (part.decoded.hasBlock()) return StatusOk;
  if (part.raw.data() == nullptr) return StatusNullArgument;
  const Status status = DecodePartContent(part);
  return part.decoded.hasBlock() ? StatusOk : status;
}

}  // namespace tarn
