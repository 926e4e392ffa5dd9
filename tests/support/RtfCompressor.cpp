#include "support/RtfCompressor.h"

#include <algorithm>
#include <array>
#include <vector>

namespace tarn::test {
namespace {

constexpr size_t kStart = 207;
constexpr size_t kWindow = 4095;  // a distance of 4096 is the end marker's
constexpr size_t kLongest = 17;
constexpr int kDepth = 64;  // places that a search looks at

void PutLittle(std::string& out, uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) out += static_cast<char>((value >> shift) & 0xFF);
}

// The places of every pair of bytes so far, newest first.
class Places {
 public:
  explicit Places(std::string_view text) : text_(text), older_(text.size(), -1) {
    newest_.fill(-1);
  }

  struct Match {
    size_t distance = 0;
    size_t length = 0;
  };

  // The longest earlier stretch that is the text at `at`, the nearest of several.
  Match find(size_t at) const {
    Match best;
    const size_t most = std::min(kLongest, text_.size() - at);
    if (most < 2) return best;
    int64_t place = newest_[pair(at)];
    for (int i = 0; i < kDepth && place >= 0; ++i) {
      const auto from = static_cast<size_t>(place);
      if (at - from > kWindow) break;
      size_t length = 2;
      while (length < most && text_[from + length] == text_[at + length]) ++length;
      if (length > best.length) best = {at - from, length};
      if (best.length == most) break;
      place = older_[from];
    }
    return best;
  }

  void add(size_t at) {
    if (at + 1 >= text_.size()) return;
    older_[at] = newest_[pair(at)];
    newest_[pair(at)] = static_cast<int64_t>(at);
  }

 private:
  size_t pair(size_t at) const {
    return static_cast<size_t>(static_cast<unsigned char>(text_[at])) << 8 |
           static_cast<unsigned char>(text_[at + 1]);
  }

  std::string_view text_;
  std::array<int64_t, 65536> newest_;
  std::vector<int64_t> older_;
};

}  // namespace

std::string_view LzfuStartText() {
  return R"({\rtf1\ansi\mac\deff0\deftab720{\fonttbl;}{\f0\fnil \froman \fswiss \fmodern \fscript )"
         R"(\fdecor MS Sans SerifSymbolArialTimes New RomanCourier{\colortbl\red0\green0\blue0)"
         "\x0A\x0D"
         R"(\par \pard\plain\f0\fs20\b\i\u\tab\tx)";
}

uint32_t LzfuChecksum(std::string_view bytes) {
  uint32_t checksum = 0;
  for (const char byte : bytes) {
    checksum ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) {
      checksum = (checksum >> 1) ^ ((checksum & 1) != 0 ? 0xEDB88320u : 0u);
    }
  }
  return checksum;
}

void LzfuTokens::begin(bool isReference) {
  if (tokens_ % 8 == 0) {
    control_ = bytes_.size();
    bytes_ += '\0';
  }
  const int bit = isReference ? 1 << (tokens_ % 8) : 0;
  bytes_[control_] = static_cast<char>(static_cast<unsigned char>(bytes_[control_]) | bit);
  ++tokens_;
}

LzfuTokens& LzfuTokens::literals(std::string_view bytes) {
  for (const char byte : bytes) {
    begin(false);
    bytes_ += byte;
    ++position_;
  }
  return *this;
}

LzfuTokens& LzfuTokens::reference(uint32_t offset, uint32_t length) {
  begin(true);
  bytes_ += static_cast<char>(offset >> 4);
  bytes_ += static_cast<char>((offset & 15) << 4 | (length - 2));
  position_ += length;
  return *this;
}

LzfuTokens& LzfuTokens::back(uint32_t distance, uint32_t length) {
  return reference((position_ - distance) & 0xFFF, length);
}

LzfuTokens& LzfuTokens::endMarker() { return reference(position_ & 0xFFF, 2); }

std::string WriteCompressedRtf(const CompressedRtfFields& fields, std::string_view contents) {
  std::string out;
  PutLittle(out, fields.compressedSize.value_or(static_cast<uint32_t>(contents.size()) + 12));
  PutLittle(out, fields.rawSize);
  PutLittle(out, fields.magic);
  PutLittle(out, fields.crc.value_or(LzfuChecksum(contents)));
  out += contents;
  return out;
}

std::string PackRtf(std::string_view text) {
  std::string all(LzfuStartText());
  all += text;
  Places places(all);
  for (size_t at = 0; at < kStart; ++at) places.add(at);

  LzfuTokens tokens;
  for (size_t at = kStart; at < all.size();) {
    const Places::Match match = places.find(at);
    const size_t length = match.length != 0 ? match.length : 1;
    if (match.length != 0) {
      tokens.back(static_cast<uint32_t>(match.distance), static_cast<uint32_t>(length));
    } else {
      tokens.literals(std::string_view(all).substr(at, 1));
    }
    for (size_t i = 0; i < length; ++i) places.add(at++);
  }
  tokens.endMarker();

  CompressedRtfFields fields;
  fields.rawSize = static_cast<uint32_t>(text.size());
  return WriteCompressedRtf(fields, tokens.bytes());
}

std::string StoreRtf(std::string_view text, StoredCrc crc) {
  CompressedRtfFields fields;
  fields.rawSize = static_cast<uint32_t>(text.size());
  fields.magic = kMelaMagic;
  if (crc == StoredCrc::Zero) fields.crc = 0;
  return WriteCompressedRtf(fields, text);
}

}  // namespace tarn::test
